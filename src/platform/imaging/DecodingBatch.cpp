#include "platform/imaging/DecodingBatch.h"

#include "frame/file_calls.h"
#include "platform/imaging/picture_file.h"

#include <QThreadPool>

#include <condition_variable>
#include <mutex>
#include <new>
#include <vector>

namespace {
QImage ReadOrNull(const PictureSource& source, const picturefile::Wish& wish)
{
    try {
        return source.path.isEmpty() ? picturefile::ReadContent(source.content, wish).picture
                                     : picturefile::Read(source.path, wish).picture;
    } catch (const std::bad_alloc&) {
        return {};
    }
}
} // namespace

struct DecodingBatch::Work
{
    struct Entry
    {
        PictureSource source;
        QImage picture;
        bool ready = false;
    };

    picturefile::Wish wish;
    size_t lookAhead = 1;
    mutable std::mutex mutex;
    std::condition_variable ready;
    std::vector<Entry> entries;
    size_t next = 0;                ///< First entry that no thread has begun.
    size_t end = 0;                 ///< First entry that must wait for one to be taken.
    DecodingBatch* batch = nullptr; ///< Null once the batch has gone.
};

DecodingBatch::DecodingBatch(const QList<PictureSource>& sources, const picturefile::Wish& wish, int lookAhead,
                             std::shared_ptr<QThreadPool> pool)
    : m_work(std::make_shared<Work>()), m_pool(std::move(pool))
{
    m_work->wish = wish;
    m_work->lookAhead = static_cast<size_t>(lookAhead);
    m_work->batch = this;
    for (const PictureSource& source : sources)
        m_work->entries.push_back({source, {}, false});
    m_work->end = qMin(m_work->lookAhead, m_work->entries.size());
    StartWorkers();
}

DecodingBatch::~DecodingBatch()
{
    const std::lock_guard lock(m_work->mutex);
    m_work->batch = nullptr;
}

bool DecodingBatch::IsReady(int index) const
{
    const std::lock_guard lock(m_work->mutex);
    const auto place = static_cast<size_t>(index);
    return place < m_work->entries.size() && m_work->entries[place].ready;
}

QImage DecodingBatch::Take(int index)
{
    const auto place = static_cast<size_t>(index);
    std::unique_lock lock(m_work->mutex);
    if (place >= m_work->entries.size())
        return {};
    const size_t end = qMin(m_work->entries.size(), place + 1 + m_work->lookAhead);
    if (end > m_work->end) {
        m_work->end = end;
        lock.unlock();
        StartWorkers();
        lock.lock();
    }
    if (!m_work->entries[place].ready) {
        lock.unlock();
        filecalls::Await([work = m_work, place] {
            std::unique_lock waiting(work->mutex);
            work->ready.wait(waiting, [&] { return work->entries[place].ready; });
        });
        lock.lock();
    }
    return std::exchange(m_work->entries[place].picture, QImage());
}

void DecodingBatch::StartWorkers()
{
    // One task for each thread would do; a task that finds nothing left ends at once.
    for (int thread = 0; thread < m_pool->maxThreadCount(); ++thread)
        m_pool->start([work = m_work] { DecodeNext(work); });
}

void DecodingBatch::DecodeNext(const std::shared_ptr<Work>& work)
{
    std::unique_lock lock(work->mutex);
    while (work->batch != nullptr && work->next < work->end) {
        const size_t place = work->next++;
        const PictureSource source = work->entries[place].source;
        lock.unlock();
        QImage picture = ReadOrNull(source, work->wish);
        lock.lock();
        work->entries[place].picture = std::move(picture);
        work->entries[place].ready = true;
        work->ready.notify_all();
        if (work->batch != nullptr)
            QMetaObject::invokeMethod(work->batch, &PictureBatch::Ready, Qt::QueuedConnection);
    }
}
