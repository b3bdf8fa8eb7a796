#include "capture/frmCapture.h"
#include "contracts/VideoCap.h"
#include "contracts/VideoOptions.h"
#include "frame/components.h"
#include "frame/guard.h"
#include "frame/services.h"
#include "movies/works.h"
#include "platform/gstreamer/register_video.h"
#include "platform/gstreamer/testpicture/TestPictureHooks.h"
#include "session/VisitContext.h"
#include "station/figures.h"
#include "support/MovieReader.h"
#include "support/StationInABox.h"

#include <QAction>
#include <QEventLoop>
#include <QTimer>
#include <QToolButton>

#include <cmath>
#include <sys/resource.h>

using namespace Qt::StringLiterals;

namespace {
constexpr int PicturesOnDisk = 50;
constexpr double DeviceRate = 60;
constexpr double MovieRate = 18;
constexpr int ShareSeconds = 10;

double ProcessSeconds()
{
    rusage usage = {};
    getrusage(RUSAGE_SELF, &usage);
    const auto seconds = [](const timeval& time) { return double(time.tv_sec) + double(time.tv_usec) / 1e6; };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

/// Share of one core that the process takes while events are served for so long.
double ShareWhileServing(int seconds)
{
    const double start = NowMs();
    const double before = ProcessSeconds();
    QEventLoop loop;
    QTimer::singleShot(seconds * 1000, Qt::PreciseTimer, &loop, &QEventLoop::quit);
    loop.exec();
    return (ProcessSeconds() - before) / (NowMs() - start) * 1000;
}

struct Steps
{
    int frames = 0;
    int unreadable = 0;
    int broken = 0;
    int repeated = 0;
    int tooLarge = 0;
    quint32 largest = 0;
};

/// How the numbers of the frames rise over the files of the visit's movie.
Steps ReadMovie(quint32 largestExplained)
{
    Steps steps;
    const QString stem = CurrentVisit().MovieStem();
    quint32 last = 0;
    for (int segment = 1; FileExists(MoviePath(stem, segment)); ++segment) {
        const MovieReader movie(NativePath(MoviePath(stem, segment)));
        steps.broken += movie.fault.isEmpty() ? 0 : 1;
        for (const QByteArray& jpeg : movie.frames) {
            ++steps.frames;
            // The wide picture stands between black bars, which would read as the number 0.
            const QImage frame = QImage::fromData(jpeg, "JPEG");
            const int height = frame.width() * 9 / 16;
            const auto shown = ReadFrameNumber(frame.copy(0, (frame.height() - height) / 2, frame.width(), height));
            if (shown.value_or(0) == 0) {
                ++steps.unreadable;
                continue;
            }
            if (last > 0) {
                const quint32 step = *shown > last ? *shown - last : 0;
                steps.repeated += step == 0 ? 1 : 0;
                steps.tooLarge += step > largestExplained ? 1 : 0;
                steps.largest = qMax(steps.largest, step);
            }
            last = *shown;
        }
    }
    return steps;
}
} // namespace

int BenchLiveRecording(int seconds)
{
    StationInABox box;
    RegisterVideo();
    UseService<VideoOptions>().OfferTestPicture(true);
    for (int number = 1; number <= PicturesOnDisk; ++number) {
        box.AddPicture(VisitContext.Ymd, VisitContext.Etc, number);
        WriteWholeFile(box.PicturePath(VisitContext.Ymd, VisitContext.Etc, number),
                       StationInABox::Jpeg({1920, 1080}, Qt::darkRed));
    }
    frmCapture& screen = Form<frmCapture>();
    screen.Show();
    screen.findChild<QToolButton*>(u"연결"_s)->click();
    if (!box.Desk().ServeUntil(
            {.done = [&] { return screen.capCapture().HoldFrame() != nullptr; }, .patienceMs = 5000})) {
        std::fputs("no live picture\n", stderr);
        return 1;
    }
    ShareWhileServing(1);
    const double live = ShareWhileServing(ShareSeconds);
    screen.findChild<QAction*>(u"동영상저장시작"_s)->trigger();
    ShareWhileServing(1);
    const double recording = ShareWhileServing(ShareSeconds);

    int fills = 0;
    QTimer thumbnails;
    QObject::connect(&thumbnails, &QTimer::timeout, &screen, [&screen, &fills] {
        Guarded([&screen] { screen.ShowStored(); });
        ++fills;
    });
    thumbnails.start(0);
    ShareWhileServing(qMax(1, seconds - ShareSeconds - 1));
    thumbnails.stop();
    screen.findChild<QAction*>(u"동영상저장종료"_s)->trigger();

    const auto explained = quint32(std::ceil(DeviceRate / MovieRate));
    const Steps steps = ReadMovie(explained);
    PrintFigure(u"recording beside the live picture, processor"_s, u"%1 of a core"_s.arg(recording - live, 0, 'f', 3),
                u"%1 times the live picture's %2"_s.arg((recording - live) / live, 0, 'f', 2).arg(live, 0, 'f', 3));
    PrintFigure(u"movie of %1 s while thumbnails load"_s.arg(seconds), u"%1 frames"_s.arg(steps.frames),
                u"%1 due; %2 fills of %3 thumbnails"_s.arg(seconds * MovieRate).arg(fills).arg(PicturesOnDisk));
    PrintFigure(
        u"  largest step of the device's frames"_s, u"%1"_s.arg(steps.largest),
        u"%1 explained by the rates; %2 larger, %3 repeated"_s.arg(explained).arg(steps.tooLarge).arg(steps.repeated));
    if (steps.broken + steps.unreadable > 0)
        PrintFigure(u"  files broken, frames unreadable"_s, u"%1, %2"_s.arg(steps.broken).arg(steps.unreadable), {});
    return steps.broken + steps.unreadable + steps.tooLarge == 0 ? 0 : 1;
}
