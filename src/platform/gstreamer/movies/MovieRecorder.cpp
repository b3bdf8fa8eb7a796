#include "platform/gstreamer/movies/MovieRecorder.h"

#include "contracts/PlatformError.h"
#include "frame/file_calls.h"
#include "frame/journal.h"
#include "frame/WorkThread.h"

#include <QFileInfo>
#include <QStorageInfo>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {
/// Pictures that wait for a slow disk: ten seconds, some 20 MB. What comes beyond repeats the one before.
constexpr std::size_t MostWaiting = 180;
/// Sound arrives in pieces of up to a fifth of a second.
constexpr auto SoundPatience = 500ms;
/// A pause in the stream as long as a lost signal is no part of the movie.
constexpr GstClockTime LongestGap = 500 * GST_MSECOND;
/// A write that takes longer ends the recording, so that the operator knows of it within three seconds.
constexpr auto WritePatience = 2s;
constexpr int WatchMs = 250;
/// The end of a movie takes far less; for it nothing else is worth while.
constexpr auto QuietEnd = 200ms;
} // namespace

qint64 MovieRecorder::FreeBytes(const QString& nativePath)
{
    return QStorageInfo(QFileInfo(nativePath).path()).bytesAvailable();
}

MovieRecorder::MovieRecorder(const AviFile::Format& format, std::unique_ptr<MovieSound> sound, FreeSpace freeSpace)
    : m_format(format), m_freeSpace(freeSpace ? std::move(freeSpace) : FreeBytes), m_sound(std::move(sound)),
      m_maker({format.width, format.height})
{
    m_worker.Post([this] { Work(); });
    connect(&m_watch, &QTimer::timeout, this, &MovieRecorder::WatchWriting);
    m_watch.start(WatchMs);
}

MovieRecorder::~MovieRecorder()
{
    Finish();
}

void MovieRecorder::ChangeFile(const QString& nativePath)
{
    auto file =
        filecalls::Ask([nativePath, format = m_format] { return std::make_shared<AviFile>(nativePath, format); });
    const std::lock_guard lock(m_mutex);
    if (m_hasEnded)
        throw PlatformError(m_reason);
    if (m_file)
        m_queue.push_back({m_file, {}, true});
    m_file = std::move(file);
    m_path = nativePath;
    m_frames = 0;
    ++m_fileNumber;
    m_changed.notify_all();
}

QString MovieRecorder::Finish()
{
    {
        const std::lock_guard lock(m_mutex);
        if (m_file && !m_hasEnded)
            m_queue.push_back({m_file, {}, true});
        m_file.reset();
        m_isFinishing = true;
        m_changed.notify_all();
    }
    {
        std::unique_lock lock(m_mutex);
        m_changed.wait_for(lock, QuietEnd, [this] { return m_hasWorkEnded || m_isHeld; });
    }
    try {
        if (!HasEndedWriting())
            filecalls::AwaitUntil([this] { return HasEndedWriting(); });
    } catch (const FilesAway& error) {
        const std::lock_guard lock(m_mutex);
        m_isHeld = !m_hasWorkEnded;
        m_reason = error.Text();
    }
    m_watch.stop();
    const bool isHeld = IsHeld();
    if (!isHeld)
        m_worker.End();
    const std::lock_guard lock(m_mutex);
    return m_reason;
}

bool MovieRecorder::HasEndedWriting() const
{
    const std::lock_guard lock(m_mutex);
    return m_hasWorkEnded || m_isHeld;
}

bool MovieRecorder::IsHeld() const
{
    const std::lock_guard lock(m_mutex);
    return m_isHeld && !m_hasWorkEnded;
}

void MovieRecorder::WatchWriting()
{
    QString reason;
    {
        const std::lock_guard lock(m_mutex);
        if (m_isHeld || !m_writingSince || std::chrono::steady_clock::now() - *m_writingSince < WritePatience)
            return;
        m_isHeld = true;
        if (!std::exchange(m_hasEnded, true))
            m_reason = u"이 컴퓨터의 디스크가 응답하지 않아 동영상 저장을 끝냈습니다.!!"_s;
        reason = m_reason;
        m_heldFiles = TakeUnfinished();
    }
    Q_EMIT Ended(reason);
}

/// Frames of the movie that a frame of that time stands for: none, one, or more after a slow one.
int MovieRecorder::FramesDue(GstClockTime time)
{
    const auto rate = guint64(m_format.framesPerSecond);
    if (!m_firstTime || time < m_lastTime || time - m_lastTime > LongestGap) {
        m_firstTime = time;
        m_framesSinceFirst = 0;
    }
    // The nearest frame in time, by the pace at which they come.
    const GstClockTime early = qMin<GstClockTime>(time - qMin(time, m_lastTime), GST_SECOND / rate) / 2;
    m_lastTime = time;
    const qint64 due = qint64(gst_util_uint64_scale(time - *m_firstTime + early, rate, GST_SECOND)) + 1;
    const qint64 count = due - m_framesSinceFirst;
    m_framesSinceFirst = due;
    return int(count);
}

void MovieRecorder::Accept(GstSample* sample)
{
    {
        const std::lock_guard lock(m_mutex);
        if (!m_file || m_hasEnded)
            return;
    }
    const GstClockTime time = GST_BUFFER_PTS(gst_sample_get_buffer(sample));
    const int count = FramesDue(GST_CLOCK_TIME_IS_VALID(time) ? time : gst_util_get_timestamp());
    if (count <= 0)
        return;
    QByteArray planes = m_maker.Shrink(sample);
    const std::lock_guard lock(m_mutex);
    if (!m_file || m_hasEnded)
        return;
    if (m_queue.size() >= MostWaiting)
        planes.clear();
    for (int i = 1; i < count; ++i)
        m_queue.push_back({m_file, {}, false});
    m_queue.push_back({m_file, std::move(planes), false});
    m_frames += count;
    m_allFrames += count;
    m_changed.notify_all();
}

void MovieRecorder::Work()
{
    while (true) {
        Item item;
        bool isFinishing = false;
        {
            std::unique_lock lock(m_mutex);
            m_writingSince.reset();
            m_changed.wait(lock, [this] { return !m_queue.empty() || m_isFinishing || m_isHeld; });
            if (m_isHeld) {
                lock.unlock();
                CompleteHeldFiles();
                lock.lock();
            }
            if (m_queue.empty()) {
                m_hasWorkEnded = true;
                m_changed.notify_all();
                PostToScreen([] {});
                return;
            }
            item = std::move(m_queue.front());
            m_queue.pop_front();
            isFinishing = m_isFinishing;
            m_writingSince = std::chrono::steady_clock::now();
        }
        try {
            if (item.isComplete)
                CompleteFile(*item.file);
            else
                WriteFrame(item, isFinishing);
        } catch (const PlatformError& error) {
            EndByItself(error.Text());
        }
    }
}

void MovieRecorder::WriteFrame(const Item& item, bool isFinishing)
{
    if (!item.planes.isEmpty())
        m_picture = m_maker.Encode(item.planes);
    // 18 frames a second part the samples of a second without a rest; other rates lose less than one a frame.
    const int samples = m_format.sound ? AviFile::SampleRate / m_format.framesPerSecond : 0;
    item.file->Append(m_picture, m_sound->Take(samples, isFinishing ? 0ms : SoundPatience));
    if (--m_framesToWatch <= 0) {
        m_framesToWatch = m_format.framesPerSecond;
        WatchSpace();
    }
}

/// The share answers again.
void MovieRecorder::CompleteHeldFiles()
{
    std::vector<std::shared_ptr<AviFile>> files;
    {
        const std::lock_guard lock(m_mutex);
        files = std::move(m_heldFiles);
    }
    for (const std::shared_ptr<AviFile>& file : files) {
        journal::NotingFaults([&] { CompleteFile(*file); });
    }
}

/// A full disk may have no room for the index: then the last seconds make it.
void MovieRecorder::CompleteFile(AviFile& file)
{
    constexpr int Tries = 4;
    for (int attempt = 1;; ++attempt) {
        try {
            file.Complete();
            return;
        } catch (const PlatformError&) {
            if (attempt == Tries)
                throw;
            file.DropTail(qMin(file.Frames() / 2, 3 * m_format.framesPerSecond));
        }
    }
}

void MovieRecorder::WatchSpace()
{
    const qint64 bytes = m_freeSpace(Path());
    {
        const std::lock_guard lock(m_mutex);
        m_isScarce = bytes >= 0 && bytes < ScarceBytes;
    }
    if (bytes >= 0 && bytes < LeastBytes)
        throw PlatformError(u"이 컴퓨터의 남은 공간이 부족하여 동영상 저장을 끝냈습니다.!!"_s);
}

std::vector<std::shared_ptr<AviFile>> MovieRecorder::TakeUnfinished()
{
    std::vector<std::shared_ptr<AviFile>> files;
    for (const Item& item : m_queue) {
        if (files.empty() || files.back() != item.file)
            files.push_back(item.file);
    }
    if (m_file && (files.empty() || files.back() != m_file))
        files.push_back(m_file);
    m_queue.clear();
    m_file.reset();
    return files;
}

void MovieRecorder::EndByItself(const QString& reason)
{
    // What was recorded before is to be whole all the same.
    std::vector<std::shared_ptr<AviFile>> files;
    {
        const std::lock_guard lock(m_mutex);
        if (m_hasEnded)
            return;
        m_hasEnded = true;
        m_reason = reason;
        files = TakeUnfinished();
    }
    for (const std::shared_ptr<AviFile>& file : files) {
        try {
            CompleteFile(*file);
        } catch (const PlatformError& error) {
            const std::lock_guard lock(m_mutex);
            m_reason = reason + u"\r\n"_s + error.Text();
        }
    }
    QMetaObject::invokeMethod(
        this, [this] { Q_EMIT Ended(m_reason); }, Qt::QueuedConnection);
}

QString MovieRecorder::Path() const
{
    const std::lock_guard lock(m_mutex);
    return m_path;
}

int MovieRecorder::Frames() const
{
    const std::lock_guard lock(m_mutex);
    return m_frames;
}

int MovieRecorder::FileNumber() const
{
    const std::lock_guard lock(m_mutex);
    return m_fileNumber;
}

qint64 MovieRecorder::ElapsedMs() const
{
    const std::lock_guard lock(m_mutex);
    return m_allFrames * 1000 / m_format.framesPerSecond;
}

bool MovieRecorder::IsSpaceScarce() const
{
    const std::lock_guard lock(m_mutex);
    return m_isScarce;
}

int MovieRecorder::Backlog() const
{
    const std::lock_guard lock(m_mutex);
    return int(m_queue.size());
}
