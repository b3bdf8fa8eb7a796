// The live picture of the test device at 1920x1080, 60 frames a second: which frames were painted, and what it costs
// beside the same source into a null sink. Arguments: seconds of each run, 60 unless told; then "full" for a picture
// that fills such a screen, "interlaced" for what deinterlacing 1080i costs, or "moments" for what it costs to keep the
// last seconds in memory: of the test device and of a camera that compresses.

#include "contracts/VideoCap.h"
#include "contracts/VideoOptions.h"
#include "frame/components.h"
#include "platform/gstreamer/live/LiveSession.h"
#include "platform/gstreamer/register_video.h"
#include "platform/gstreamer/testpicture/TestPictureHooks.h"
#include "platform/gstreamer/testpicture/TestPictureSource.h"
#include "platform/gstreamer/VideoControl.h"
#include "station/figures.h"

#include <gst/gst.h>
#include <linux/videodev2.h>

#include <QApplication>
#include <QElapsedTimer>
#include <QThread>
#include <QTimer>

#include <algorithm>
#include <ctime>
#include <sys/resource.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {
double ProcessSeconds()
{
    rusage usage = {};
    getrusage(RUSAGE_SELF, &usage);
    const auto seconds = [](const timeval& time) { return double(time.tv_sec) + double(time.tv_usec) / 1e6; };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

/// Share of one core that the process takes while the event loop runs for so long.
double ShareWhileRunning(int seconds)
{
    QElapsedTimer wall;
    wall.start();
    const double before = ProcessSeconds();
    QEventLoop loop;
    QTimer::singleShot(seconds * 1000, Qt::PreciseTimer, &loop, &QEventLoop::quit);
    loop.exec();
    return (ProcessSeconds() - before) / (double(wall.nsecsElapsed()) / 1e9);
}

double NullSinkShare(int seconds)
{
    PrepareMedia();
    GstElement* pipeline = gst_pipeline_new(nullptr);
    GstElement* source = NewTestPictureSource();
    GstElement* filter = gst_element_factory_make("capsfilter", nullptr);
    GstElement* sink = gst_element_factory_make("fakesink", nullptr);
    GstCaps* caps = gst_caps_from_string("video/x-raw, width=1920, height=1080, framerate=60/1");
    g_object_set(filter, "caps", caps, nullptr);
    gst_caps_unref(caps);
    gst_bin_add_many(GST_BIN(pipeline), source, filter, sink, nullptr);
    gst_element_link_many(source, filter, sink, nullptr);
    gst_element_set_state(pipeline, GST_STATE_PLAYING);
    ShareWhileRunning(1); // The scene is drawn in this second.
    const double share = ShareWhileRunning(seconds);
    gst_element_set_state(pipeline, GST_STATE_NULL);
    gst_object_unref(pipeline);
    return share;
}

QString ShareText(double share)
{
    return u"%1 %"_s.arg(share * 100, 0, 'f', 1);
}

struct LiveFigures
{
    QList<quint32> painted;
    QList<double> encodeMs;
    qsizetype fileBytes = 0;
    qint64 residentBytes = 0;
    double share = 0;
};

/// Share of one core of a stream from these elements, without a picture.
double StreamShare(const QByteArray& elements, bool deinterlaces, int seconds)
{
    LivePipeline pipeline(0);
    pipeline.Open({false, {}, {V4L2_PIX_FMT_YUYV, 1920, 1080, 25, 1}, elements, deinterlaces}, std::chrono::seconds(5));
    ShareWhileRunning(1);
    return ShareWhileRunning(seconds);
}

int BenchInterlaced(int seconds)
{
    PrepareMedia();
    const QByteArray source = "videotestsrc is-live=true pattern=smpte100 horizontal-speed=6 ! "
                              "video/x-raw,width=1920,height=1080,format=YUY2,framerate=";
    const QByteArray interlaced = source + "50/1 ! interlace field-pattern=1:1";
    const double progressive = StreamShare(source + "25/1", true, seconds);
    const double kept = StreamShare(interlaced, false, seconds);
    const double deinterlaced = StreamShare(interlaced, true, seconds);
    PrintFigure(u"1080p25, share of a core"_s, ShareText(progressive));
    PrintFigure(u"1080i25 as it comes, share of a core"_s, ShareText(kept));
    PrintFigure(u"1080i25 deinterlaced, share of a core"_s, ShareText(deinterlaced),
                u"%1 x 1080p25"_s.arg(deinterlaced / progressive, 0, 'f', 2));
    return 0;
}

qint64 ResidentBytes()
{
    long pages = 0;
    if (FILE* file = std::fopen("/proc/self/statm", "r")) {
        if (std::fscanf(file, "%*s %ld", &pages) != 1)
            pages = 0;
        std::fclose(file);
    }
    return pages * sysconf(_SC_PAGESIZE);
}

LiveFigures RunLive(int seconds, QSize size, int momentsBefore = 0)
{
    LiveFigures figures;
    const std::unique_ptr<VideoCap> control = CreateObject<VideoCap>(u"VIDEOCAPLib.VideoCap"_s);
    control->resize(size);
    control->show();
    control->setDevice(control->Devices().Count() - 1);
    QObject::connect(qobject_cast<VideoControl*>(control.get()), &VideoControl::Painted, control.get(),
                     [&figures](const QImage& picture, int) {
                         if (const auto number = ReadFrameNumber(picture))
                             figures.painted.append(*number);
                     });
    control->setMomentsBefore(momentsBefore);
    control->Start();
    ShareWhileRunning(1 + momentsBefore);
    figures.painted.clear();
    figures.share = ShareWhileRunning(seconds);
    const QList<quint32> painted = figures.painted;
    figures.residentBytes = ResidentBytes();

    for (int i = 0; i < 40; ++i) {
        ShareWhileRunning(0);
        const auto frame = control->HoldFrame();
        QElapsedTimer timer;
        timer.start();
        figures.fileBytes = frame->EncodeJPEG(90).size();
        figures.encodeMs.append(double(timer.nsecsElapsed()) / 1e6);
        QThread::msleep(20);
    }
    figures.painted = painted;
    control->Stop();
    std::sort(figures.encodeMs.begin(), figures.encodeMs.end());
    return figures;
}
qsizetype Skipped(const QList<quint32>& painted)
{
    return painted.isEmpty() ? 0 : qsizetype(painted.last() - painted.first()) + 1 - painted.size();
}

/// Share of one core, and the memory, of a camera that compresses.
std::pair<double, qint64> CompressedShare(int seconds, int momentsBefore)
{
    LiveSession session;
    session.Memory().SetSeconds(momentsBefore);
    session.Start([] {
        return LiveSource{false,
                          {},
                          {V4L2_PIX_FMT_MJPEG, 1920, 1080, 30, 1},
                          "videotestsrc is-live=true pattern=smpte100 horizontal-speed=6 ! "
                          "video/x-raw,width=1920,height=1080,format=Y42B,framerate=30/1 ! jpegenc"};
    });
    ShareWhileRunning(1 + momentsBefore);
    const double share = ShareWhileRunning(seconds);
    return {share, ResidentBytes()};
}

int BenchMoments(int seconds)
{
    constexpr int Before = 3;
    const LiveFigures without = RunLive(seconds, {560, 420});
    const LiveFigures with = RunLive(seconds, {560, 420}, Before);
    const auto skipped = Skipped(without.painted) + Skipped(with.painted);
    const auto resident = [](double bytes) { return u"%1 MB resident"_s.arg(bytes / 1e6, 0, 'f', 0); };
    PrintFigure(u"1080p60, share of a core"_s, ShareText(without.share), resident(double(without.residentBytes)));
    PrintFigure(u"  the last 3 s kept"_s, ShareText(with.share), resident(double(with.residentBytes)));
    PrintLimited(u"  frames skipped, moments"_s, double(skipped), u"frames"_s, 0);
    const auto plain = CompressedShare(seconds, 0);
    const auto kept = CompressedShare(seconds, Before);
    PrintFigure(u"MJPG 1080p30 made here, share of a core"_s, ShareText(plain.first), resident(double(plain.second)));
    PrintFigure(u"  MJPG, the last 3 s kept"_s, ShareText(kept.first), resident(double(kept.second)));
    return skipped == 0 ? 0 : 1;
}
} // namespace

int main(int argc, char** argv)
{
    ChoosePlatform();
    QApplication application(argc, argv);
    const int seconds = argc > 1 ? std::max(1, atoi(argv[1])) : 60;
    const QString what = argc > 2 ? QString::fromLatin1(argv[2]) : QString();
    if (what == u"interlaced"_s)
        return BenchInterlaced(seconds);
    RegisterVideo();
    UseService<VideoOptions>().OfferTestPicture(true);
    if (what == u"moments"_s)
        return BenchMoments(seconds);

    const double nullShare = NullSinkShare(seconds);
    const LiveFigures live = RunLive(seconds, what == u"full"_s ? QSize(1920, 1080) : QSize(560, 420));

    QStringList skipped;
    for (qsizetype i = 1; i < live.painted.size(); ++i)
        for (quint32 number = live.painted[i - 1] + 1; number < live.painted[i]; ++number)
            skipped.append(QString::number(number));
    PrintFigure(u"1080p60, frames painted in %1 s"_s.arg(seconds), QString::number(live.painted.size()));
    PrintLimited(u"  frames skipped"_s, double(skipped.size()), u"frames"_s, 0, skipped.mid(0, 50).join(u' '));
    const double ratio = live.share / nullShare;
    PrintFigure(u"live 1080p60, share of a core"_s, ShareText(live.share),
                u"%1 x null sink, %2 (at most 4.5)"_s.arg(ratio, 0, 'f', 2).arg(ShareText(nullShare)),
                Limit{ratio, 4.5, u"x"_s});
    PrintFigure(u"1080p JPEG encode, median"_s, u"%1 ms"_s.arg(live.encodeMs[live.encodeMs.size() / 2], 0, 'f', 2),
                u"slowest %1 ms, %2 bytes"_s.arg(live.encodeMs.last(), 0, 'f', 2).arg(live.fileBytes));
    return skipped.isEmpty() ? 0 : 1;
}
