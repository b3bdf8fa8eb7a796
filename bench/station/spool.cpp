#include "figures.h"

#include "capture/frmCapture.h"
#include "contracts/files.h"
#include "contracts/VideoCap.h"
#include "contracts/VideoOptions.h"
#include "frame/components.h"
#include "frame/guard.h"
#include "frame/services.h"
#include "platform/gstreamer/register_video.h"
#include "support/StationInABox.h"
#include "support/StoppableShare.h"

#include <QDir>
#include <QToolButton>

using namespace Qt::StringLiterals;

namespace {
constexpr int Stills = 40;
constexpr int LimitMs = 10000;
} // namespace

/// From the click to the whole file in the spool, while the share stands still; held against encoding and writing such
/// a file, timed between the clicks.
int BenchSpool()
{
    StationInABox box;
    const StoppableShare share(NativePath(box.Root()).chopped(1));
    RegisterVideo();
    UseService<VideoOptions>().OfferTestPicture(true);
    frmCapture& screen = Form<frmCapture>();
    screen.Show();
    Guarded([&] { screen.ShowStored(); });
    screen.findChild<QToolButton*>(u"연결"_s)->click();
    if (!ServeUntil([&] { return screen.capCapture().HoldFrame() != nullptr; }, LimitMs))
        return 1;
    const QString folder = box.Desk().ProgramFolder();
    const auto spooled = [&] { return QDir(folder).entryList({u"Spool-*"_s}).size(); };
    const QString beside = folder + u"\\beside"_s;
    Heartbeat heart;
    QList<double> clicks;
    QList<double> parts;
    double waited = 0;
    share.Stop();
    for (int still = 1; still <= Stills; ++still) {
        heart.Forget();
        double start = NowMs();
        screen.findChild<QToolButton*>(u"캡쳐"_s)->click();
        if (!ServeUntil([&] { return spooled() == still; }, LimitMs))
            return 1;
        clicks << NowMs() - start;
        waited = qMax(waited, heart.LongestMs());
        start = NowMs();
        Files().WritePrivateFile(beside, screen.capCapture().HoldFrame()->EncodeJPEG(90));
        parts << NowMs() - start;
        ServeUntil([] { return false; }, 30);
    }
    const double first = clicks.takeFirst();
    const double start = NowMs();
    share.Resume();
    const bool moved = ServeUntil([&] { return spooled() == 0 && screen.StillsAreAtRest(); }, LimitMs);
    PrintFigure(u"share stopped: click to spooled file, the first"_s, u"%1 ms"_s.arg(first, 0, 'f', 0),
                u"the share has a second"_s);
    PrintRatio(u"  spooled behind it (median)"_s, Median(clicks), u"encode + write"_s, Median(parts), 1.5);
    PrintFigure(u"  longest that an event waited"_s, u"%1 ms"_s.arg(waited, 0, 'f', 1));
    PrintFigure(u"  %1 stills moved when it answers"_s.arg(Stills), u"%1 ms"_s.arg(NowMs() - start, 0, 'f', 0));
    const int rows = box.Value(u"SELECT COUNT(*) AS v FROM cap"_s).toInt();
    screen.Unload();
    return moved && rows == Stills ? 0 : 1;
}
