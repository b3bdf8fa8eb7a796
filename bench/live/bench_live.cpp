// The live picture of the test device at 1920x1080, 60 frames a second: which frames were painted, and what it costs
// beside the same source into a null sink. Arguments: seconds of each run, 60 unless told; then "full" for a picture
// that fills such a screen, or "interlaced" for what deinterlacing 1080i costs.

#include "contracts/VideoCap.h"
#include "contracts/VideoOptions.h"
#include "frame/components.h"
#include "platform/gstreamer/live/LivePipeline.h"
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

LiveFigures RunLive(int seconds, QSize size)
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
    control->Start();
    ShareWhileRunning(1);
    figures.painted.clear();
    figures.share = ShareWhileRunning(seconds);
    const QList<quint32> painted = figures.painted;

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
