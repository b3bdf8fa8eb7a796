#include "capture/Moments.h"

#include "contracts/VideoCap.h"
#include "frame/guard.h"
#include "frame/journal.h"
#include "records/picture_sums.h"
#include "records/Statement.h"
#include "text/text_routines.h"

#include <QBuffer>
#include <QImageReader>
#include <QPointer>

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace {
constexpr int Quality = 90;
constexpr int LookMs = 100;
/// Sharpness is measured at the smallest whole fraction of the size that is as wide as this.
constexpr int MeasuredWidth = 640;

QImage Decoded(const QByteArray& content, bool isMeasured)
{
    QBuffer buffer;
    buffer.setData(content);
    QImageReader reader(&buffer, "jpeg");
    if (isMeasured) {
        int part = 1;
        while (part < 8 && reader.size().width() / (2 * part) >= MeasuredWidth)
            part *= 2;
        reader.setScaledSize(reader.size() / part);
    }
    return reader.read();
}

/// Variance of the Laplacian of the luma.
double Sharpness(const QImage& picture)
{
    const QImage luma = picture.convertToFormat(QImage::Format_Grayscale8);
    double sum = 0;
    double squares = 0;
    for (int y = 1; y + 1 < luma.height(); ++y) {
        const uchar* above = luma.constScanLine(y - 1);
        const uchar* row = luma.constScanLine(y);
        const uchar* below = luma.constScanLine(y + 1);
        int rowSum = 0;
        qint64 rowSquares = 0;
        for (int x = 1; x + 1 < luma.width(); ++x) {
            const int value = above[x] + below[x] + row[x - 1] + row[x + 1] - 4 * row[x];
            rowSum += value;
            rowSquares += value * value;
        }
        sum += rowSum;
        squares += double(rowSquares);
    }
    const double count = double(std::max(luma.width() - 2, 1)) * std::max(luma.height() - 2, 1);
    return squares / count - (sum / count) * (sum / count);
}
} // namespace

/// What the worker makes of the frames.
struct Moments::Made
{
    QList<Picture> pictures;
    QList<QByteArray> contents;
};

struct Moments::Kept
{
    QString id;
    Visit visit;
    int number = 0; ///< 0 until it has one.
    QDateTime pressedAt = QDateTime::currentDateTime();
    std::shared_ptr<const FrameMoments> frames; ///< Until the worker has done with them.
    bool isBeingMade = false;
    bool isReady = false;
    Made made = {};

    qint64 Bytes() const
    {
        qint64 bytes = frames != nullptr ? frames->Bytes() : 0;
        for (const QByteArray& content : made.contents)
            bytes += content.size();
        for (const Picture& picture : made.pictures)
            bytes += picture.small.sizeInBytes();
        return bytes;
    }
};

Moments::Moments(File file) : m_file(std::move(file))
{
    m_look.setInterval(LookMs);
    connect(&m_look, &QTimer::timeout, this, &Moments::MakeReady);
}

Moments::~Moments()
{
    End();
}

void Moments::End()
{
    m_look.stop();
    m_kept.clear();
    m_worker.End();
}

void Moments::Keep(const QString& id, const Visit& visit, const std::shared_ptr<const FrameMoments>& frames)
{
    if (frames == nullptr)
        return;
    m_kept.append(std::make_shared<Kept>(Kept{.id = id, .visit = visit, .frames = frames}));
    DropOldest();
    m_look.start();
}

Moments::KeptPointer Moments::At(const QString& id) const
{
    const auto found = std::ranges::find(m_kept, id, &Kept::id);
    return found != m_kept.end() ? *found : nullptr;
}

void Moments::MakeReady()
{
    bool isWaiting = false;
    for (const KeptPointer& kept : std::as_const(m_kept)) {
        if (kept->isReady || kept->isBeingMade)
            continue;
        if (!kept->frames->IsComplete()) {
            isWaiting = true;
            continue;
        }
        kept->isBeingMade = true;
        m_worker.Post([id = kept->id, frames = std::weak_ptr(kept->frames), self = QPointer(this)] {
            Made made;
            double best = -1;
            qsizetype sharpest = -1;
            // One that has been dropped meanwhile is nobody's work any more.
            const std::shared_ptr<const FrameMoments> held = frames.lock();
            for (const Moment& moment : held != nullptr ? held->Frames() : std::vector<Moment>()) {
                try {
                    const QByteArray content = moment.frame->EncodeJPEG(Quality);
                    const QImage picture = Decoded(content, true);
                    if (picture.isNull())
                        continue;
                    if (const double sharpness = Sharpness(picture); sharpness > best) {
                        best = sharpness;
                        sharpest = made.pictures.size();
                    }
                    made.contents.append(content);
                    made.pictures.append(
                        {.offsetMs = moment.offsetMs,
                         .small = picture.scaled(SmallSize, Qt::KeepAspectRatio, Qt::SmoothTransformation)});
                } catch (...) {
                    // The others are there all the same.
                    journal::NoteFault(guard::TextOf(std::current_exception()));
                }
            }
            if (sharpest >= 0)
                made.pictures[sharpest].isSharpest = true;
            PostToScreen([id, made, self] {
                if (self)
                    self->Take(id, made);
            });
        });
    }
    if (!isWaiting)
        m_look.stop();
}

void Moments::Take(const QString& id, const Made& made)
{
    const KeptPointer kept = At(id);
    if (kept == nullptr)
        return;
    kept->frames.reset();
    kept->made = made;
    kept->isReady = true;
    DropOldest();
    Q_EMIT Changed(id);
}

qint64 Moments::Bytes() const
{
    qint64 bytes = 0;
    for (const KeptPointer& kept : m_kept)
        bytes += kept->Bytes();
    return bytes;
}

void Moments::DropOldest()
{
    while (m_kept.size() > 1 && Bytes() > MostBytes)
        Forget(QString(m_kept.first()->id));
}

void Moments::setNumber(const QString& id, int number)
{
    if (const KeptPointer kept = At(id))
        kept->number = number;
}

void Moments::Forget(const QString& id)
{
    if (m_kept.removeIf([&id](const KeptPointer& kept) { return kept->id == id; }) > 0)
        Q_EMIT Changed(id);
}

void Moments::ForgetNumbers(const Visit& visit, const QList<int>& numbers)
{
    for (const KeptPointer& kept : QList(m_kept)) {
        if (kept->visit == visit && kept->number > 0 && numbers.contains(kept->number))
            Forget(kept->id);
    }
}

QString Moments::Find(const Visit& visit, int number, const QString& id) const
{
    const auto isMeant = [&](const KeptPointer& kept) {
        return id.isEmpty() ? number > 0 && kept->number == number && kept->visit == visit : kept->id == id;
    };
    // The latest of a number is the one that has it now.
    const auto found = std::find_if(m_kept.rbegin(), m_kept.rend(), isMeant);
    return found != m_kept.rend() ? (*found)->id : QString();
}

void Moments::Confirm(const QString& id, const std::function<void(bool isThere)>& answer)
{
    const KeptPointer kept = At(id);
    if (kept == nullptr || kept->number == 0) {
        answer(kept != nullptr);
        return;
    }
    const auto owner = std::make_shared<QString>();
    const auto ask = [visit = kept->visit, number = kept->number, owner] { *owner = PictureIdOf(visit, number); };
    QueueStatements(this, ask, [this, id, owner, answer](const std::exception_ptr& fault) {
        if (fault == nullptr && !owner->isEmpty() && *owner != id)
            Forget(id);
        answer(At(id) != nullptr);
    });
}

QList<Moments::Picture> Moments::PicturesAround(const QString& id) const
{
    const KeptPointer kept = At(id);
    return kept != nullptr ? kept->made.pictures : QList<Picture>();
}

bool Moments::IsReady(const QString& id) const
{
    const KeptPointer kept = At(id);
    return kept != nullptr && kept->isReady;
}

void Moments::Load(const QString& id, int at, const std::function<void(const QImage&)>& loaded)
{
    const KeptPointer kept = At(id);
    const QByteArray content = kept != nullptr ? kept->made.contents.value(at) : QByteArray();
    m_worker.Post([content, loaded, self = QPointer(this)] {
        const QImage picture = content.isEmpty() ? QImage() : Decoded(content, false);
        PostToScreen([self, picture, loaded] {
            if (self)
                loaded(picture);
        });
    });
}

void Moments::FileMoment(const QString& id, int at)
{
    const KeptPointer kept = At(id);
    if (kept == nullptr || at < 0 || at >= kept->made.pictures.size() || kept->made.pictures[at].isFiled)
        return;
    const auto mark = [self = QPointer(this), id, at](bool isFiled) {
        if (const KeptPointer marked = self ? self->At(id) : nullptr) {
            marked->made.pictures[at].isFiled = isFiled;
            Q_EMIT self->Changed(id);
        }
    };
    mark(true);
    const int offsetMs = kept->made.pictures[at].offsetMs;
    const QString of = kept->number > 0 ? u"%1번 그림의 앞뒤 장면"_s.arg(NumberText(kept->number))
                                        : u"번호를 기다리는 그림의 앞뒤 장면"_s;
    try {
        m_file({kept->visit, kept->made.contents[at], kept->pressedAt.addMSecs(offsetMs),
                of + u", %1%2초"_s.arg(offsetMs > 0 ? u"+"_s : QString()).arg(offsetMs / 1000.0, 0, 'f', 1), mark});
    } catch (...) {
        mark(false);
        throw;
    }
}
