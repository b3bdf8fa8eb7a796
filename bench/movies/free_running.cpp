#include "movies/works.h"
#include "platform/files/LocalFiles.h"
#include "platform/gstreamer/live/LivePipeline.h"
#include "platform/gstreamer/movies/MovieRecorder.h"
#include "platform/gstreamer/testpicture/TestPictureHooks.h"
#include "platform/gstreamer/testpicture/TestPicturePainter.h"
#include "station/figures.h"
#include "support/MovieReader.h"

#include <QImage>
#include <QTemporaryDir>
#include <QThread>

using namespace Qt::StringLiterals;

namespace {
constexpr int Files = 20;
constexpr guint64 FramesPerSecond = 18;
constexpr int SamplesPerFrame = 44100 / FramesPerSecond;
/// So many frames may wait for the writer, far fewer than it would take before it lets one go.
constexpr int MostWaiting = 60;

/// The frames of a camera that waits for nobody.
class FreeSource
{
public:
    FreeSource()
    {
        gst_video_info_set_format(&m_info, GST_VIDEO_FORMAT_I420, 640, 480);
        m_info.fps_n = int(FramesPerSecond);
        m_info.fps_d = 1;
        gst_video_colorimetry_from_string(&m_info.colorimetry, "1:4:0:0");
        m_painter.SetFormat(m_info);
        m_caps.reset(gst_video_info_to_caps(&m_info));
    }

    GstPointer<GstSample> Frame(quint32 number)
    {
        const GstPointer<GstBuffer> buffer(gst_buffer_new_allocate(nullptr, m_info.size, nullptr));
        {
            MappedFrame frame(m_info, buffer.get(), GST_MAP_WRITE);
            m_painter.Paint(*frame.Frame(), number);
        }
        GST_BUFFER_PTS(buffer.get()) = (number - 1) * GST_SECOND / FramesPerSecond;
        return GstPointer<GstSample>(gst_sample_new(buffer.get(), m_caps.get(), nullptr, nullptr));
    }

private:
    GstVideoInfo m_info = {};
    GstPointer<GstCaps> m_caps;
    TestPicturePainter m_painter;
};
} // namespace

int BenchFreeRunning(int framesPerFile)
{
    RegisterFiles();
    PrepareMedia();
    const QTemporaryDir folder;
    const auto path = [&folder](int file) { return folder.filePath(u"%1.avi"_s.arg(file, 3, 10, QChar(u'0'))); };
    FreeSource source;
    MovieRecorder recorder({}, NewTone());
    int file = 1;
    quint32 given = 0;
    const double start = NowMs();
    recorder.ChangeFile(path(file));
    while (file < Files || recorder.Frames() <= framesPerFile) {
        if (recorder.Frames() > framesPerFile)
            recorder.ChangeFile(path(++file));
        recorder.Accept(source.Frame(++given).get());
        while (recorder.Backlog() > MostWaiting)
            QThread::usleep(200);
    }
    const QString fault = recorder.Finish();
    const double seconds = (NowMs() - start) / 1000;

    int lost = 0;
    int twice = 0;
    int unreadable = 0;
    int broken = fault.isEmpty() ? 0 : 1;
    qint64 widest = 0;
    quint32 last = 0;
    for (int number = 1; number <= Files; ++number) {
        const MovieReader movie(path(number));
        broken += movie.fault.isEmpty() ? 0 : 1;
        widest = qMax(widest, qAbs(movie.sound.size() / 2 - movie.frames.size() * SamplesPerFrame));
        for (const QByteArray& jpeg : movie.frames) {
            const auto shown = ReadFrameNumber(QImage::fromData(jpeg, "JPEG"));
            if (!shown) {
                ++unreadable;
                continue;
            }
            twice += *shown <= last ? 1 : 0;
            lost += *shown > last + 1 ? int(*shown - last - 1) : 0;
            last = *shown;
        }
    }
    lost += int(given - last);
    PrintFigure(u"movie, %1 files of %2 frames: lost, twice"_s.arg(Files).arg(framesPerFile + 1),
                u"%1, %2"_s.arg(lost).arg(twice),
                u"%1 unreadable, %2 files broken (all none)"_s.arg(unreadable).arg(broken));
    PrintFigure(u"  sound beside picture, widest"_s, u"%1 samples"_s.arg(widest),
                u"%1 samples are a frame"_s.arg(SamplesPerFrame));
    PrintFigure(u"  recorded, of the time that it plays"_s,
                u"%1 times as fast"_s.arg(given / double(FramesPerSecond) / seconds, 0, 'f', 1),
                u"%1 frames in %2 s"_s.arg(given).arg(seconds, 0, 'f', 1));
    const bool isWhole = lost == 0 && twice == 0 && unreadable == 0 && broken == 0 && widest <= SamplesPerFrame;
    return isWhole ? 0 : 1;
}
