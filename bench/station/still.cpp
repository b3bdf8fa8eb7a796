#include "figures.h"

#include "capture/frmCapture.h"
#include "contracts/files.h"
#include "contracts/fpSpread.h"
#include "contracts/LocalDatabase.h"
#include "contracts/VideoCap.h"
#include "contracts/VideoOptions.h"
#include "frame/components.h"
#include "frame/guard.h"
#include "frame/services.h"
#include "platform/gstreamer/register_video.h"
#include "records/Statement.h"
#include "session/VisitContext.h"
#include "support/StationInABox.h"

#include <QCoreApplication>
#include <QToolButton>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {
constexpr int Stills = 48;
constexpr int StillLimitMs = 5000;
} // namespace

/// From the click to a file that is durable, rows that are committed and a thumbnail that is painted, while the 1080p
/// test picture runs; held against the sum of its parts, each timed between the clicks: encoding, the slower of the two
/// writes, the commits of the journal and those of the rows.
int BenchStill()
{
    StationInABox box(u"QMARIADB"_s);
    RegisterVideo();
    UseService<VideoOptions>().OfferTestPicture(true);
    frmCapture& screen = Form<frmCapture>();
    screen.Show();
    Guarded([&] { screen.ShowStored(); });
    auto* connect = screen.findChild<QToolButton*>(u"연결"_s);
    auto* capture = screen.findChild<QToolButton*>(u"캡쳐"_s);
    connect->click();
    const auto serveFor = [](int ms) { ServeUntil([] { return false; }, ms); };
    if (!ServeUntil([&] { return screen.capCapture().HoldFrame() != nullptr; }, 5000)) {
        std::fputs("no live picture\n", stderr);
        return 1;
    }
    serveFor(500);

    Heartbeat heart;
    Painted painted(screen.sprCap(1));
    QList<double> clicks;
    QList<double> handlers;
    QList<double> waits;
    QList<double> quiet;
    QList<double> encodes;
    QList<double> writes;
    QList<double> localWrites;
    QList<double> journalCommits;
    QList<double> commits;
    const QString folder = box.Desk().ProgramFolder() + u'\\';
    const auto journal = UseService<LocalDatabases>().Open(folder + u"Beside.journal"_s);
    journal->Run({u"CREATE TABLE picture ( id TEXT PRIMARY KEY, state TEXT )"_s});
    const QString beside = VisitContext.CaptureDir + u"위내시경\\beside"_s;
    for (int still = 0; still < Stills; ++still) {
        double start = NowMs();
        painted.seen = false;
        heart.Forget();
        capture->click();
        handlers << NowMs() - start;
        const bool came = ServeUntil([&] { return painted.seen; }, StillLimitMs);
        clicks << NowMs() - start;
        waits << heart.LongestMs();
        if (!came || !ServeUntil([&] { return screen.StillsAreAtRest(); }, StillLimitMs)) {
            std::fputs("a still doesn't come to its end\n", stderr);
            return 1;
        }
        heart.Forget();
        serveFor(30);
        quiet << heart.LongestMs();

        start = NowMs();
        const QByteArray jpeg = screen.capCapture().HoldFrame()->EncodeJPEG(90);
        encodes << NowMs() - start;

        start = NowMs();
        WriteWholeFile(beside, jpeg);
        writes << NowMs() - start;
        DeleteFile(beside);

        start = NowMs();
        Files().WritePrivateFile(folder + u"beside"_s, jpeg);
        localWrites << NowMs() - start;
        DeleteFile(folder + u"beside"_s);

        // Begun, filed, safe.
        start = NowMs();
        journal->Run({u"INSERT INTO picture VALUES ( '%1', 'taken' )"_s.arg(still)});
        journal->Run({u"UPDATE picture SET state = 'share' WHERE id = '%1'"_s.arg(still)});
        journal->Run({u"DELETE FROM picture WHERE id = '%1'"_s.arg(still)});
        journalCommits << NowMs() - start;

        start = NowMs();
        Execute(Statement(u"REPLACE INTO ca VALUES ('99999999','01','20261124','A','위내시경','note','')"));
        Execute(Statement(u"REPLACE INTO cap VALUES ('99999999','01','20261124','A','위내시경',")
                    .Then(u"", still + 1)
                    .Piece(u",'path')"));
        commits << NowMs() - start;
        serveFor(30);
    }
    if (box.Value(u"SELECT COUNT(*) AS v FROM cap WHERE cap_chart = '00001234'"_s).toInt() != Stills) {
        std::fputs("not every still was filed\n", stderr);
        return 1;
    }
    const double write = std::max(Median(writes), Median(localWrites));
    const double parts = Median(encodes) + write + Median(journalCommits) + Median(commits);
    PrintFigure(u"still, click to file, rows and thumbnail (median)"_s, u"%1 ms"_s.arg(Median(clicks), 0, 'f', 1),
                u"%1 x parts (at most 1.3)"_s.arg(Median(clicks) / parts, 0, 'f', 2));
    PrintFigure(u"  parts: encode + write + journal + rows"_s, u"%1 ms"_s.arg(parts, 0, 'f', 1),
                u"%1 + %2 + %3 + %4 ms"_s.arg(Median(encodes), 0, 'f', 1)
                    .arg(write, 0, 'f', 1)
                    .arg(Median(journalCommits), 0, 'f', 1)
                    .arg(Median(commits), 0, 'f', 1));
    const auto largest = [](const QList<double>& times) { return *std::max_element(times.begin(), times.end()); };
    PrintFigure(u"  longest that an event waited for another, worst still"_s, u"%1 ms"_s.arg(largest(waits), 0, 'f', 1),
                u"%1 ms between the stills (at most 8)"_s.arg(largest(quiet), 0, 'f', 1));
    PrintFigure(u"  the press's own handler (median)"_s, u"%1 ms"_s.arg(Median(handlers), 0, 'f', 2));
    return 0;
}
