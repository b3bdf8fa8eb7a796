#include "figures.h"

#include "capture/frmCapture.h"
#include "contracts/files.h"
#include "contracts/fpSpread.h"
#include "contracts/LocalDatabase.h"
#include "contracts/VideoCap.h"
#include "contracts/VideoOptions.h"
#include "filing/StillFiling.h"
#include "frame/components.h"
#include "frame/guard.h"
#include "frame/services.h"
#include "platform/gstreamer/register_video.h"
#include "records/ActJournal.h"
#include "records/Statement.h"
#include "session/VisitContext.h"
#include "support/StationInABox.h"

#include <QCoreApplication>
#include <QRandomGenerator>
#include <QToolButton>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {
constexpr int Stills = 48;
constexpr int StillLimitMs = 5000;
constexpr int RecordPatienceMs = 60'000;
/// With a sum and a record and without them, in turn, some at a time: giving the table another name takes longer than
/// they do.
constexpr int StillsOfEach = 200;
constexpr int StillsInTurn = 10;
/// Of a still of 1080p.
constexpr qsizetype StillBytes = 300'000;

/// A still whose sum is kept and whose filing is recorded beside one for which there are no tables, to its file and to
/// its rows.
bool BenchSum(StationInABox& box)
{
    QByteArray content(StillBytes, Qt::Uninitialized);
    QRandomGenerator(1).generate(content.begin(), content.end());
    QList<double> sums;
    for (int time = 0; time < StillsOfEach; ++time) {
        const double start = NowMs();
        SumOf(content);
        sums << NowMs() - start;
    }
    QList<double> files[2];
    QList<double> rows[2];
    Visit visit = CurrentVisit();
    StillFiling filing([](const Visit&) { return std::nullopt; });
    const auto endRecord = [] {
        if (ServiceSlot<ActJournal>() != nullptr)
            UseService<ActJournal>().End(RecordPatienceMs);
        InstallService<ActJournal>(nullptr);
    };
    for (int still = 0; still < 2 * StillsOfEach; ++still) {
        const int withSum = still / StillsInTurn % 2;
        if (still % StillsInTurn == 0) {
            box.Run(withSum != 0 ? u"ALTER TABLE ca_sum_away RENAME TO ca_sum;"_s
                                 : u"ALTER TABLE ca_sum RENAME TO ca_sum_away;"_s);
            endRecord();
            if (withSum != 0)
                InstallService<ActJournal>(std::make_unique<ActJournal>(ActSource{u"bench"_s, u"here"_s, u"bench"_s}));
        }
        ServeUntil([] { return false; }, 5);
        const double start = NowMs();
        double filed = 0;
        double safe = 0;
        const auto isSafe = QObject::connect(&filing, &StillFiling::Safe, &filing, [&] { safe = NowMs() - start; });
        filing.Stills().File({visit, PictureOrigin::Press, [&content] { return content; }, [](const QByteArray&) {},
                              [&](int, const std::exception_ptr&) { filed = NowMs() - start; }});
        const bool came = ServeUntil([&] { return safe > 0; }, StillLimitMs);
        QObject::disconnect(isSafe);
        if (!came) {
            std::fputs("a still doesn't come to its rows\n", stderr);
            return false;
        }
        // Its claim goes last, which no event tells of.
        while (!filing.IsAtRest())
            ServeUntil([] { return false; }, 1);
        files[withSum] << filed;
        rows[withSum] << safe;
    }
    if (box.Value(u"SELECT COUNT(*) AS v FROM ca_sum"_s).toInt() != StillsOfEach) {
        std::fputs("not every sum was kept\n", stderr);
        return false;
    }
    endRecord();
    if (const int recorded = box.Value(u"SELECT COUNT(*) AS v FROM ca_log"_s).toInt(); recorded != StillsOfEach) {
        std::fprintf(stderr, "%d of the stills are recorded\n", recorded);
        return false;
    }
    for (const auto& [what, times] : {std::pair(u"still with record and sum, press to file (median)"_s, files),
                                      std::pair(u"  press to rows (median)"_s, rows)})
        PrintFigure(what, u"%1 ms"_s.arg(Median(times[1]), 0, 'f', 2),
                    u"%1 x one without (at most 1.1)"_s.arg(Median(times[1]) / Median(times[0]), 0, 'f', 2));
    PrintFigure(u"  the sum itself, on the encoder's thread"_s, u"%1 ms"_s.arg(Median(sums), 0, 'f', 2));
    box.Run(u"DELETE FROM cap; DELETE FROM ca;"_s);
    for (const QString& name : box.Names(u"2026"_s, visit.etc))
        DeleteFile(visit.SectionFolder() + name);
    return true;
}
} // namespace

/// From the click to a file that is durable, rows that are committed and a thumbnail that is painted, while the 1080p
/// test picture runs; held against the sum of its parts, each timed between the clicks: encoding, the slower of the two
/// writes, the commits of the journal and those of the rows.
int BenchStill()
{
    StationInABox box(u"QMARIADB"_s);
    if (!BenchSum(box))
        return 1;
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
    PrintRatio(u"still, click to file, rows and thumbnail (median)"_s, Median(clicks), u"parts"_s, parts, 1.3);
    PrintFigure(u"  parts: encode + write + journal + rows"_s, u"%1 ms"_s.arg(parts, 0, 'f', 1),
                u"%1 + %2 + %3 + %4 ms"_s.arg(Median(encodes), 0, 'f', 1)
                    .arg(write, 0, 'f', 1)
                    .arg(Median(journalCommits), 0, 'f', 1)
                    .arg(Median(commits), 0, 'f', 1));
    const auto largest = [](const QList<double>& times) { return *std::max_element(times.begin(), times.end()); };
    PrintLimited(u"  longest that an event waited, worst still"_s, largest(waits), u"ms"_s, 8,
                 u"%1 ms between the stills"_s.arg(largest(quiet), 0, 'f', 1));
    PrintFigure(u"  the press's own handler (median)"_s, u"%1 ms"_s.arg(Median(handlers), 0, 'f', 2));
    return 0;
}
