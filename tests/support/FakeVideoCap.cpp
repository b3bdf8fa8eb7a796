#include "support/FakeVideoCap.h"

#include "contracts/files.h"
#include "contracts/PlatformError.h"
#include "contracts/VideoOptions.h"
#include "frame/components.h"
#include "frame/services.h"

#include <QBuffer>
#include <QImageReader>
#include <QPainter>
#include <QPointer>

using namespace Qt::StringLiterals;

namespace {

/// Bits of the frame number, from the left across the picture; each cell black or white, so that JPEG keeps them.
constexpr int NumberBits = 16;

QPointer<FakeVideoCap>& LastMade()
{
    static QPointer<FakeVideoCap> last;
    return last;
}

class NumberedFrame : public StillFrame
{
public:
    NumberedFrame(QSize size, int number, bool isSharp = false) : m_size(size), m_number(number), m_isSharp(isSharp) {}

    QByteArray EncodeJPEG(int quality) const override
    {
        QImage picture(m_size, QImage::Format_RGB32);
        picture.fill(Qt::darkRed);
        QPainter painter(&picture);
        const int width = m_size.width() / NumberBits;
        for (int bit = 0; bit < NumberBits; ++bit) {
            const bool set = (m_number >> (NumberBits - 1 - bit)) & 1;
            painter.fillRect(bit * width, 0, width, m_size.height() / 2, set ? Qt::white : Qt::black);
        }
        for (int x = 0; m_isSharp && x < m_size.width(); x += 4)
            painter.fillRect(x, m_size.height() * 3 / 4, 2, m_size.height() / 4, Qt::white);
        painter.end();
        QByteArray jpeg;
        QBuffer buffer(&jpeg);
        buffer.open(QIODevice::WriteOnly);
        picture.save(&buffer, "JPEG", quality);
        return jpeg;
    }

private:
    QSize m_size;
    int m_number;
    bool m_isSharp;
};

class FakeMoments : public FrameMoments
{
public:
    explicit FakeMoments(QSize size)
    {
        for (int i = 0; i < Most; ++i) {
            const int offsetMs = (i - (Most - 2)) * 300 + (i < Most - 2 ? 0 : 250);
            m_frames.push_back({std::make_shared<NumberedFrame>(size, 1001 + i, offsetMs == -600), offsetMs});
        }
    }
    std::vector<Moment> Frames() const override { return m_frames; }
    bool IsComplete() const override { return true; }
    qint64 Bytes() const override { return 0; }

private:
    std::vector<Moment> m_frames;
};

class NoOptions : public VideoOptions
{
public:
    void OfferTestPicture(bool) override {}
    void RepairMovies(const QString&) override {}
};

} // namespace

class FakeVideoCap::Awaited : public AwaitedFrame
{
public:
    std::shared_ptr<const StillFrame> Frame() const override { return frame; }
    bool IsOver() const override { return over; }

    std::shared_ptr<const StillFrame> frame;
    bool over = false;
};

FakeVideoCap::FakeVideoCap(QWidget* parent) : VideoCap(parent)
{
    LastMade() = this;
}

void FakeVideoCap::Register()
{
    InstallService<VideoOptions>(std::make_unique<NoOptions>());
    RegisterComponent<VideoCap>(u"VIDEOCAPLib.VideoCap"_s, [] { return std::make_unique<FakeVideoCap>(); });
}

FakeVideoCap* FakeVideoCap::Last()
{
    return LastMade();
}

void FakeVideoCap::Start()
{
    calls << u"Start"_s;
    live = true;
    if (!m_captureMode)
        return;
    WriteWholeFile(Partial(m_movie), m_movie.toUtf8());
    movies << m_movie;
    EndFile();
    m_open = m_movie;
}

void FakeVideoCap::setCaptureMode(bool on)
{
    m_captureMode = on;
    try {
        if (!on)
            EndFile();
    } catch (const PlatformError&) {
        // A partial file stays.
    }
}

QString FakeVideoCap::Partial(const QString& path)
{
    const qsizetype folder = path.lastIndexOf(u'\\') + 1;
    return path.left(folder) + u'.' + path.mid(folder) + u'.' + Files().ProcessMark() + u".part"_s;
}

void FakeVideoCap::EndFile()
{
    if (!m_open.isEmpty())
        Files().RenameFile(Partial(m_open), m_open);
    m_open.clear();
}

void FakeVideoCap::Stop()
{
    calls << u"Stop"_s;
    live = false;
}

std::shared_ptr<const StillFrame> FakeVideoCap::HoldFrame()
{
    if (!live || slow)
        return nullptr;
    return std::make_shared<NumberedFrame>(frameSize, ++frames);
}

std::shared_ptr<const AwaitedFrame> FakeVideoCap::AwaitFrame()
{
    if (!live)
        return nullptr;
    return m_awaited.emplace_back(std::make_shared<Awaited>());
}

void FakeVideoCap::AnswerAwaited(bool hasFrame)
{
    if (hasFrame)
        ++frames;
    for (const std::shared_ptr<Awaited>& awaited : m_awaited) {
        if (hasFrame)
            awaited->frame = std::make_shared<NumberedFrame>(frameSize, frames);
        awaited->over = true;
    }
    m_awaited.clear();
}

std::shared_ptr<const FrameMoments> FakeVideoCap::HoldMoments(const StillFrame&)
{
    return before > 0 ? std::make_shared<FakeMoments>(frameSize) : nullptr;
}

void FakeVideoCap::SnapShotJPEG(const QString& path, int quality)
{
    const auto frame = HoldFrame();
    if (frame == nullptr)
        throw PlatformError(u"캡쳐할 영상이 없습니다.!!"_s);
    WriteWholeFile(path, frame->EncodeJPEG(quality));
}

void FakeVideoCap::ShowDialog(const QString& call)
{
    if (!dialogFault.isEmpty())
        throw PlatformError(dialogFault);
    calls << call;
}

int FakeVideoCap::FrameNumber(const QString& path)
{
    QImageReader reader(NativePath(path));
    reader.setDecideFormatFromContent(true);
    const QImage picture = reader.read();
    if (picture.isNull())
        return -1;
    int number = 0;
    const int width = picture.width() / NumberBits;
    for (int bit = 0; bit < NumberBits; ++bit)
        number = number * 2 + (qGray(picture.pixel(bit * width + width / 2, picture.height() / 4)) > 127 ? 1 : 0);
    return number;
}
