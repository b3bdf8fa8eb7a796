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

#include <gst/gst.h>
#include <linux/videodev2.h>

#include <QApplication>
#include <QElapsedTimer>
#include <QThread>
#include <QTimer>

#include <algorithm>
#include <cstdio>
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
    std::printf("share of a core, 1080p25                   %.1f %%\n", progressive * 100);
    std::printf("share of a core, 1080i25 as it comes       %.1f %%\n", kept * 100);
    std::printf("share of a core, 1080i25 deinterlaced      %.1f %%\n", deinterlaced * 100);
    std::printf("deinterlacing, beside 1080p25              %.2f x\n",
                (deinterlaced - kept + progressive) / progressive);
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
    constexpr double Megabyte = 1e6;
    const LiveFigures without = RunLive(seconds, {560, 420});
    const LiveFigures with = RunLive(seconds, {560, 420}, Before);
    const auto skipped = Skipped(without.painted) + Skipped(with.painted);
    std::printf("1080p60, share of a core               %.1f %%, %.0f MB resident\n", without.share * 100,
                double(without.residentBytes) / Megabyte);
    std::printf("1080p60, last 3 s kept                 %.1f %%, %.0f MB resident\n", with.share * 100,
                double(with.residentBytes) / Megabyte);
    std::printf("frames skipped                         %lld, %lld\n", static_cast<long long>(Skipped(without.painted)),
                static_cast<long long>(Skipped(with.painted)));
    const auto plain = CompressedShare(seconds, 0);
    const auto kept = CompressedShare(seconds, Before);
    std::printf("MJPG 1080p30 made here, share          %.1f %%, %.0f MB resident\n", plain.first * 100,
                double(plain.second) / Megabyte);
    std::printf("MJPG 1080p30, last 3 s kept            %.1f %%, %.0f MB resident\n", kept.first * 100,
                double(kept.second) / Megabyte);
    return skipped == 0 ? 0 : 1;
}
} // namespace

int main(int argc, char** argv)
{
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
    std::printf("live run                      %d s\n", seconds);
    std::printf("frames painted                %lld\n", static_cast<long long>(live.painted.size()));
    std::printf("frames skipped                %lld%s%s\n", static_cast<long long>(skipped.size()),
                skipped.isEmpty() ? "" : ": ", qPrintable(skipped.mid(0, 50).join(u' ')));
    std::printf("share of a core, live         %.1f %%\n", live.share * 100);
    std::printf("share of a core, null sink    %.1f %%\n", nullShare * 100);
    std::printf("1080p JPEG encode, median     %.2f ms\n", live.encodeMs[live.encodeMs.size() / 2]);
    std::printf("1080p JPEG encode, slowest    %.2f ms\n", live.encodeMs.last());
    std::printf("1080p JPEG size               %lld bytes\n", static_cast<long long>(live.fileBytes));
    return skipped.isEmpty() ? 0 : 1;
}
