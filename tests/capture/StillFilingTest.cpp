#include "capture/StillFiling.h"
#include "capture/capture_rows.h"
#include "capture/NumberClaim.h"
#include "contracts/components.h"
#include "contracts/PlatformError.h"
#include "launch/context/VisitContext.h"
#include "platform/files/LocalFiles.h"
#include "support/StationInABox.h"

#include <QApplication>
#include <QFile>
#include <QProcess>
#include <QTest>

#include <fcntl.h>
#include <set>
#include <sys/stat.h>

using namespace Qt::StringLiterals;

namespace {

constexpr int Stations = 4;

/// Stills that each of the stations files at the same time; an examination day takes more than the test's own time.
int StillsEach()
{
    const int wanted = qEnvironmentVariableIntValue("STATION_RACE_STILLS");
    return wanted > 0 ? wanted : 60;
}

StillFiling MakeFiling()
{
    return StillFiling([](const CaptureVisit&) { return StillFiling::Note{}; }, [](const StillFiling::Safe&) {});
}

/// One station of the race: a process of its own that files its pictures one after the other.
int RunStation(const QStringList& arguments)
{
    ScriptedDesktop::Install();
    RegisterFiles();
    DatabaseSettings settings;
    settings.driver = u"QMARIADB"_s;
    settings.socket = arguments[2];
    settings.name = arguments[3];
    settings.user = arguments[4];
    Connection = OpenConnection(settings);
    const auto close = qScopeGuard([] { Connection.reset(); });
    CaptureVisit visit{u"00001234"_s, u"01"_s, u"11"_s, u"20261124"_s, u"위내시경"_s, arguments[5], u"jpg"_s, {}};
    StillFiling filing = MakeFiling();
    for (int still = 0; still < arguments[7].toInt(); ++still) {
        const QByteArray content = (arguments[6] + u'-' + QString::number(still)).toUtf8();
        const StillFiling::Filed filed = filing.File(visit, content);
        if (!filed.rowsFault.isEmpty()) {
            qWarning("%s", qPrintable(filed.rowsFault));
            return 1;
        }
    }
    return 0;
}

} // namespace

class StillFilingTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void FourStationsOnOneVisit()
    {
        StationInABox box(u"QMARIADB"_s);
        std::vector<std::unique_ptr<QProcess>> stations;
        for (int station = 0; station < Stations; ++station) {
            auto process = std::make_unique<QProcess>();
            process->setProcessChannelMode(QProcess::ForwardedChannels);
            const DatabaseSettings& database = box.Database().Settings();
            process->start(QCoreApplication::applicationFilePath(),
                           {u"station"_s, database.socket, database.name, database.user, VisitContext.CaptureDir,
                            QString::number(station), QString::number(StillsEach())});
            stations.push_back(std::move(process));
        }
        for (const auto& station : stations) {
            QVERIFY(station->waitForFinished(280000));
            QCOMPARE(station->exitCode(), 0);
        }
        const QStringList names = box.Names(u"2026"_s, u"위내시경"_s);
        QCOMPARE(names.size(), Stations * StillsEach());
        std::set<QByteArray> contents;
        for (const QString& name : names)
            contents.insert(Files().ReadFile(VisitContext.CaptureDir + u"위내시경\\"_s + name));
        QCOMPARE(int(contents.size()), Stations * StillsEach());
        QCOMPARE(box.Value(u"SELECT COUNT(*) AS v FROM cap"_s).toInt(), Stations * StillsEach());
        QCOMPARE(box.Value(u"SELECT COUNT(DISTINCT cap_no) AS v FROM cap"_s).toInt(), Stations * StillsEach());
    }

    void AClaimedNumberIsLeftToItsHolder()
    {
        StationInABox box;
        const CaptureVisit visit = CaptureVisit::Current();
        StillFiling filing = MakeFiling();
        const auto claim = NumberClaim::Take(ClaimOf(box, 1));
        QVERIFY(claim != nullptr);
        QVERIFY(NumberClaim::Take(ClaimOf(box, 1)) == nullptr);
        QCOMPARE(filing.File(visit, "x").number, 2);
    }

    void AClaimOfADeadStationIsTakenOver()
    {
        StationInABox box;
        QVERIFY(Files().CreateExclusively(ClaimOf(box, 1), "dead"));
        const timespec longAgo[2] = {{1700000000, 0}, {1700000000, 0}};
        QCOMPARE(utimensat(AT_FDCWD, QFile::encodeName(NativePath(ClaimOf(box, 1))), longAgo, 0), 0);
        StillFiling filing = MakeFiling();
        QCOMPARE(filing.File(CaptureVisit::Current(), "x").number, 1);
        QCOMPARE(box.Names(u"2026"_s, u"위내시경"_s), QStringList{u"0000123420261124001.jpg"_s});
    }

    void TheServerEndsAndComesBackBetweenStills()
    {
        StationInABox box(u"QMARIADB"_s);
        const CaptureVisit visit = CaptureVisit::Current();
        StillFiling filing = MakeFiling();
        QVERIFY(filing.File(visit, "1").rowsFault.isEmpty());
        StationInABox::Server().Stop();
        QVERIFY(!filing.File(visit, "2").rowsFault.isEmpty());
        QVERIFY(!filing.File(visit, "3").rowsFault.isEmpty());
        QVERIFY(StationInABox::Server().Start());
        QVERIFY(filing.File(visit, "4").rowsFault.isEmpty());
        QCOMPARE(box.Value(u"SELECT COUNT(*) AS v FROM cap"_s), u"4"_s);
        for (int number = 1; number <= 4; ++number)
            QCOMPARE(Files().ReadFile(box.PicturePath(visit.ymd, visit.etc, number)), QByteArray::number(number));
        StationInABox::Server().Stop();
        QVERIFY(StationInABox::Server().Start());
        QVERIFY(filing.File(visit, "5").rowsFault.isEmpty());
    }

    void AShareThatWentAwayGetsNoFolders()
    {
        StationInABox box;
        const CaptureVisit visit = CaptureVisit::Current();
        StillFiling filing = MakeFiling();
        Files().RenameFile(visit.captureDir, box.Root() + u"gone"_s);
        QVERIFY_EXCEPTION_THROWN(filing.File(visit, "x"), PlatformError);
        QVERIFY(!FolderExists(visit.captureDir));
        QVERIFY(filing.Pending().IsEmpty());
    }

    void PendingRowsKeepWhatWasTypedBesideWhatOthersStored()
    {
        StationInABox box;
        const CaptureVisit visit = CaptureVisit::Current();
        StillFiling::Note note{u"내가 쓴 글"_s, true};
        {
            StillFiling filing([&](const CaptureVisit&) { return note; }, [](const StillFiling::Safe&) {});
            box.Run(u"ALTER TABLE ca RENAME TO ca_gone;"_s);
            QVERIFY(!filing.File(visit, "x").rowsFault.isEmpty());
        }
        box.Run(u"ALTER TABLE ca_gone RENAME TO ca;"_s);
        // The next run knows nothing of the text but what the list holds.
        note = {u"남이 쓴 글"_s, false};
        StillFiling next([&](const CaptureVisit&) { return note; }, [](const StillFiling::Safe&) {});
        QVERIFY(next.Pending().Holds(visit, 1));
        next.WritePending();
        QCOMPARE(box.Value(u"SELECT ca_chamgo AS v FROM ca"_s), u"남이 쓴 글\n내가 쓴 글"_s);
        QVERIFY(next.Pending().IsEmpty());
    }

private:
    static QString ClaimOf(const StationInABox& box, int number)
    {
        QString path = box.PicturePath(QString::fromUtf16(StationInABox::Today), u"위내시경"_s, number);
        path.chop(4);
        return path;
    }
};

int main(int argc, char* argv[])
{
    QApplication application(argc, argv);
    const QStringList arguments = QApplication::arguments();
    if (arguments.value(1) == u"station"_s)
        return RunStation(arguments);
    StillFilingTest test;
    return QTest::qExec(&test, argc, argv);
}

#include "StillFilingTest.moc"
