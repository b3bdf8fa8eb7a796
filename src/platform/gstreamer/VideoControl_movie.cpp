#include "contracts/files.h"
#include "frame/file_calls.h"
#include "platform/gstreamer/devices/VideoDevices.h"
#include "platform/gstreamer/VideoControl_live.h"

#include <QPainter>

#include <vector>

using namespace Qt::StringLiterals;

namespace {
constexpr QRgb MarkBack = qRgba(0, 0, 0, 150);
constexpr QRgb RecordingDot = qRgb(0xe0, 0x3c, 0x31);
constexpr QRgb MarkText = qRgb(0xff, 0xff, 0xff);
constexpr QRgb AlarmText = qRgb(0xf2, 0xc1, 0x4e);
constexpr int DefaultFramesPerSecond = 18;
/// Of the control on the capture screen, in pixels: what is painted over the picture is measured for it.
constexpr double SmallHeight = 420;
/// Into a bar beside the picture it goes at so much of its size at least.
constexpr double LeastInBar = 0.7;
} // namespace

void VideoControl::setCaptureMode(bool on)
{
    m_movie.captureMode = on;
    if (!on)
        EndMovie();
}

bool VideoControl::HasRoomForMovie(const QString& path) const
{
    const qint64 bytes = filecalls::Ask([path = NativePath(path)] { return MovieRecorder::FreeBytes(path); });
    return bytes < 0 || bytes >= MovieRecorder::LeastBytes;
}

/// Frames of the movie file while there is one, otherwise of the live picture.
int VideoControl::FrameCount() const
{
    return m_live->recorder ? m_live->recorder->Frames() : m_live->session.FrameCount();
}

void VideoControl::Record()
{
    const QString path = NativePath(m_movie.fileName);
    if (m_live->recorder) {
        // A start that only applies other settings to the device must not begin the file anew.
        if (path == m_live->recorder->Path())
            return;
        m_live->toldFrames = 0;
        m_live->recorder->ChangeFile(path);
        return;
    }
    m_live->toldFrames = 0;
    AviFile::Format format;
    if (m_movie.useCustomFormat && m_movie.width > 0 && m_movie.height > 0) {
        format.width = m_movie.width;
        format.height = m_movie.height;
    }
    format.framesPerSecond = m_movie.framesPerSecond > 0 ? m_movie.framesPerSecond : DefaultFramesPerSecond;
    format.sound = m_movie.audio;
    const bool isTestPicture = m_devices->List().at(m_live->runningDevice).isTestPicture;
    std::unique_ptr<MovieSound> sound = !format.sound ? NewSilence() : (isTestPicture ? NewTone() : NewSoundInput());
    // The streaming thread may be the last to let go of it.
    const std::shared_ptr<MovieRecorder> recorder(new MovieRecorder(format, std::move(sound)),
                                                  [](MovieRecorder* gone) { gone->deleteLater(); });
    recorder->ChangeFile(path);
    connect(recorder.get(), &MovieRecorder::Ended, this, &VideoControl::AnswerMovieEnd);
    m_live->recorder = recorder;
    m_live->session.SetTap(recorder);
    DescribeState();
}

void VideoControl::EndMovie()
{
    if (!m_live->recorder)
        return;
    const std::shared_ptr<MovieRecorder> recorder = std::move(m_live->recorder);
    m_live->recorder.reset();
    m_live->session.SetTap(nullptr);
    m_live->toldFrames = 0;
    disconnect(recorder.get(), nullptr, this, nullptr);
    const QString reason = recorder->Finish();
    // What its thread is held with stays as long as the process.
    static auto& held = *new std::vector<std::shared_ptr<MovieRecorder>>;
    if (recorder->IsHeld())
        held.push_back(recorder);
    DescribeState();
    update();
    // Whoever ends the movie is not to be stopped by it.
    if (!reason.isEmpty())
        QMetaObject::invokeMethod(
            this, [this, reason] { Q_EMIT OnMovieFault(reason); }, Qt::QueuedConnection);
}

void VideoControl::AnswerMovieEnd(const QString&)
{
    setCaptureMode(false);
}

void VideoControl::PaintMovieMark(QPainter& painter) const
{
    if (!m_live->recorder)
        return;
    const qint64 seconds = m_live->recorder->ElapsedMs() / 1000;
    const QString time = u"%1:%2"_s.arg(seconds / 60, 2, 10, QChar(u'0')).arg(seconds % 60, 2, 10, QChar(u'0'));
    QStringList texts{time, u"%1번 파일"_s.arg(m_live->recorder->FileNumber())};
    const bool isScarce = m_live->recorder->IsSpaceScarce();
    if (isScarce)
        texts << u"남은 공간이 부족합니다"_s;
    // As large for the eye on a whole screen as in the small picture.
    double scale = qMax(1.0, height() / SmallHeight);
    const auto scaled = [&scale](int pixels) { return qRound(pixels * scale); };
    const auto widest = [&] {
        QFont font = painter.font();
        font.setPixelSize(scaled(14));
        painter.setFont(font);
        int width = 0;
        for (const QString& text : std::as_const(texts))
            width = qMax(width, painter.fontMetrics().horizontalAdvance(text));
        return width + scaled(10) + scaled(22);
    };
    // In the black bar beside the picture, in lines, where that has room for them.
    const QSize shape = PictureShape().scaled(PicturePlace().size(), Qt::KeepAspectRatio);
    const int bar = shape.isEmpty() ? 0 : (width() - shape.width()) / 2 - 2 * scaled(8);
    const int wanted = widest();
    if (wanted * LeastInBar > bar)
        texts = {texts.join(u"  "_s)};
    else if (wanted > bar)
        scale *= double(bar) / wanted;
    const int dot = scaled(10);
    const int line = scaled(24);
    const QRect back(scaled(8), scaled(8), widest(), line * static_cast<int>(texts.size()));
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor::fromRgba(MarkBack));
    painter.drawRoundedRect(back, scaled(4), scaled(4));
    painter.setBrush(QColor(RecordingDot));
    painter.drawEllipse(QRect(back.left() + scaled(7), back.top() + (line - dot) / 2, dot, dot));
    painter.setPen(QColor(isScarce ? AlarmText : MarkText));
    QRect place(back.left() + dot + scaled(14), back.top(), back.width() - dot - scaled(14), line);
    for (const QString& text : std::as_const(texts)) {
        painter.drawText(place, Qt::AlignVCenter | Qt::AlignLeft, text);
        place.translate(0, line);
    }
}
