#include "filing/capture_wastebasket.h"
#include "filing/NumberClaim.h"
#include "filing/PictureDeletion.h"
#include "filing/StationLease.h"
#include "platform/files/LocalFiles.h"
#include "platform/files/posix_files.h"
#include "platform/files/process_mark.h"
#include "platform/sql/register_sql.h"
#include "records/capture_index.h"
#include "records/picture_sums.h"
#include "support/CaptureScreen.h"

#include <csignal>
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

std::optional<TypedNote> NothingTyped(const Visit&)
{
    return std::nullopt;
}

/// What became of a picture once nothing more goes on with it.
struct Filed
{
    int number = 0;
    QString fault;
    bool waits = false; ///< Its rows aren't in.
};

void AwaitRest(const StillFiling& filing)
{
    if (!QTest::qWaitFor([&] { return filing.IsAtRest(); }, 30000))
        qFatal("a picture never came to its end");
}

Filed FileAndWait(StillFiling& filing, const Visit& visit, const QByteArray& content)
{
    Filed filed;
    filing.Stills().File({visit, PictureOrigin::Press, [content] { return content; }, [](const QByteArray&) {},
                          [&](int number, const std::exception_ptr& fault) {
                              filed.number = number;
                              try {
                                  if (fault != nullptr)
                                      std::rethrow_exception(fault);
                              } catch (const PlatformError& error) {
                                  filed.fault = error.Text();
                              }
                          }});
    AwaitRest(filing);
    filed.waits = filed.fault.isEmpty() && filing.Journal().HasAny(visit) &&
                  (filed.number == 0 || filing.Journal().Holds(visit, filed.number));
    return filed;
}

QList<int> NumbersOf(const StillFiling& filing, const Visit& visit)
{
    QList<int> numbers;
    for (const PictureRecord& picture : filing.Journal().Of(visit))
        numbers.append(picture.number);
    return numbers;
}

void WriteAndWait(StillFiling& filing)
{
    filing.WriteWaiting();
    AwaitRest(filing);
}

/// One station: a process of its own that files its pictures one after the other. With `dies` it is killed in the
/// moment in which the last one's file stands and its rows don't.
int RunStation(const QStringList& arguments)
{
    const bool dies = arguments.value(8) == u"dies"_s;
    ScriptedDesktop::Install().folder = arguments.value(9);
    RegisterFiles();
    RegisterSql();
    DatabaseSettings settings;
    settings.driver = arguments[2].isEmpty() ? u"QSQLITE"_s : u"QMARIADB"_s;
    settings.socket = arguments[2];
    settings.name = arguments[3];
    settings.user = arguments[4];
    Connection = OpenConnection(settings);
    const auto close = qScopeGuard([] { Connection.reset(); });
    Visit visit{u"00001234"_s, u"01"_s, u"20261124"_s, u"위내시경"_s, arguments[5], u"jpg"_s};
    const int stills = arguments[7].toInt();
    int filed = 0;
    int asked = 0;
    StillFiling filing([&](const Visit&) {
        // Asked at the press, and again when the file stands.
        if (dies && filed == stills - 1 && ++asked == 2)
            std::raise(SIGKILL);
        return dies ? std::optional(TypedNote{u"쓰던 글"_s, u"남의 글"_s}) : std::nullopt;
    });
    for (; filed < stills; ++filed) {
        const QByteArray content =
            dies ? StationInABox::Jpeg({64, 48}, Qt::red) : (arguments[6] + u'-' + QString::number(filed)).toUtf8();
        const Filed still = FileAndWait(filing, visit, content);
        if ((still.waits || !still.fault.isEmpty()) && !dies)
            return 1;
    }
    return 0;
}

/// An operation of the system that fails while it lives.
template <class Call>
class Failing
{
public:
    Failing(Call& call, Call instead) : m_call(call), m_kept(call) { call = instead; }
    ~Failing() { m_call = m_kept; }
    Failing(const Failing&) = delete;
    Failing& operator=(const Failing&) = delete;

private:
    Call& m_call;
    Call m_kept;
};

int FailFolderSync(int handle)
{
    struct stat facts = {};
    fstat(handle, &facts);
    if (!S_ISDIR(facts.st_mode))
        return fsync(handle);
    errno = EIO;
    return -1;
}

/// Mark of a process of this machine's identity that ran under another boot.
QString OfBoot(const QString& boot)
{
    QStringList parts = Files().ProcessMark().split(u'.');
    parts[1] = boot;
    return parts.join(u'.');
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

    /// What the sections' folders hold when the next station of the machine starts, and what is left of it.
    void WhatStationsLeft_data()
    {
        QTest::addColumn<QString>("holder"); ///< Of the claim; empty for no claim.
        Columns<bool, bool, bool, bool>("old", "picture", "found", "claimStays");
        QTest::newRow("a dead station's picture") << u"dead"_s << false << true << true << true;
        QTest::newRow("a dead station's claim alone") << u"dead"_s << false << false << false << false;
        QTest::newRow("this station's") << u"own"_s << true << false << false << true;
        QTest::newRow("another machine's of today") << u"elsewhere"_s << false << false << false << true;
        QTest::newRow("another machine's of long ago") << u"elsewhere"_s << true << false << false << false;
        QTest::newRow("another machine's picture of long ago") << u"elsewhere"_s << true << true << false << true;
        QTest::newRow("an earlier boot's picture") << u"before"_s << false << true << true << true;
        QTest::newRow("picture of a copied disk") << u"copy"_s << true << true << false << true;
        QTest::newRow("of one whose lease is old") << u"silent"_s << false << true << true << true;
    }

    void WhatStationsLeft()
    {
        QFETCH5(QString, holder, bool, old, bool, picture, bool, found, bool, claimStays);
        StationInABox box;
        const Visit visit = CurrentVisit();
        const QHash<QString, QString> marks = {
            {u"own"_s, Files().ProcessMark()},  {u"dead"_s, DeadMark()},        {u"elsewhere"_s, u"other.boot.1.1"_s},
            {u"before"_s, OfBoot(u"before"_s)}, {u"copy"_s, OfBoot(u"copy"_s)}, {u"silent"_s, OfBoot(u"silent"_s)}};
        process_mark::KeepBoots(box.Desk().ProgramFolder() + u"/boots"_s,
                                [&] { return QStringList{marks[u"before"_s]}; });
        for (const QString& each : {u"copy"_s, u"silent"_s})
            WriteWholeFile(box.Root() + QString::fromUtf16(LeasePrefix) + marks[each], {});
        MakeOld(box.Root() + QString::fromUtf16(LeasePrefix) + marks[u"silent"_s]);
        const QString claim = ClaimOf(box, 7);
        QVERIFY(Files().CreateExclusively(
            claim, R"({"holder":"%1","yuhyung":"02","imageExt":"jpg"})"_L1.arg(marks[holder]).toUtf8()));
        const QString part = claim.chopped(20) + u"\\.station-%1-3.part"_s.arg(marks[holder]);
        WriteWholeFile(part, "half");
        if (old) {
            MakeOld(claim);
            MakeOld(part);
        }
        if (picture)
            WriteWholeFile(claim + u".jpg"_s, "x");
        const QList<LeftoverNumber> numbers = LeftoverNumbers::FindIn({{visit.captureDir, visit.etc}});
        QCOMPARE(numbers.size(), found ? 1 : 0);
        if (found) {
            QCOMPARE(numbers[0].number, 7);
            QCOMPARE(numbers[0].visit.yuhyung, u"02"_s);
        }
        QCOMPARE(FileExists(claim), claimStays);
        // What is half written isn't judged by a lease.
        const bool isDead = holder == u"dead"_s || holder == u"before"_s;
        QCOMPARE(FileExists(part), holder == u"own"_s || (!isDead && !old));
    }

    void AStationThatDiesBetweenFileAndRowsLosesNothing()
    {
        StationInABox box;
        const Visit visit = CurrentVisit();
        box.Run(u"INSERT INTO ca VALUES ('00001234','01','20261124','A','위내시경','남의 글','');"_s);
        RunDyingStation(box, 3);
        QVERIFY(NumberClaim::Stands(visit, 3));
        QCOMPARE(box.Value(u"SELECT COUNT(*) AS v FROM cap"_s), u"2"_s);

        frmCapture& screen = OpenScreen();
        QTRY_COMPARE(box.Value(u"SELECT COUNT(*) AS v FROM cap"_s), u"3"_s);
        QTRY_VERIFY(screen.PicturesOf(1).PlaceOf({{}, 3}));
        QTRY_VERIFY(!NumberClaim::Stands(visit, 3));
        QCOMPARE(box.Desk().shown, QStringList());
        QCOMPARE(box.Value(u"SELECT ca_chamgo AS v FROM ca"_s), u"쓰던 글"_s);
        // What each was stands beside its rows, the killed one's too.
        QTRY_COMPARE(box.Value(u"SELECT GROUP_CONCAT(sum_no || sum_state) AS v FROM ca_sum WHERE sum_hash = '%1'"_s.arg(
                         SumOf(StationInABox::Jpeg({64, 48}, Qt::red)).hash)),
                     u"1live,2live,3live"_s);
        screen.Unload();
        QCOMPARE(box.Names(u"2026"_s, u"위내시경"_s).size(), 3);
    }

    void TheListOfADeadStationIsTakenOver()
    {
        StationInABox box;
        const Visit visit = CurrentVisit();
        StillFiling beside(NothingTyped);
        QCOMPARE(FileAndWait(beside, visit, "x").number, 1);
        box.Run(u"ALTER TABLE cap RENAME TO cap_gone;"_s);
        RunDyingStation(box, 3);
        QVERIFY(NumberClaim::Stands(visit, 2) && NumberClaim::Stands(visit, 3));
        box.Run(u"ALTER TABLE cap_gone RENAME TO cap;"_s);
        beside.End();

        StillFiling next(NothingTyped);
        // The last one has its number at once or a little later.
        const QList<int> numbers = NumbersOf(next, visit);
        QCOMPARE(numbers.size(), 3);
        QCOMPARE(numbers.first(2), (QList<int>{2, 3}));
        WriteAndWait(next);
        QTRY_COMPARE(box.Value(u"SELECT COUNT(*) AS v FROM cap"_s), u"4"_s);
        QCOMPARE(box.Value(u"SELECT ca_chamgo AS v FROM ca"_s), u"쓰던 글"_s);
        AwaitRest(next);
        QVERIFY(!NumberClaim::Stands(visit, 3));
        next.Journal().LeftFoldersAreSettled();
        next.End();
        QCOMPARE(Files().FilesStartingWith(box.Desk().ProgramFolder() + u'\\', u"P"_s), QStringList());
    }

    void ARefusedEntryKeepsNoOtherAway()
    {
        StationInABox box;
        const Visit visit = CurrentVisit();
        StillFiling filing(NothingTyped);
        QSignalSpy told(&filing, &StillFiling::Tidings);
        box.Run(u"CREATE TRIGGER no_first BEFORE INSERT ON cap WHEN NEW.cap_no = 1 BEGIN "
                "SELECT RAISE(ABORT, 'not this one'); END;"_s);
        QVERIFY(FileAndWait(filing, visit, "1").waits);
        QVERIFY(told.last()[0].toString().contains(u"not this one"_s));
        QVERIFY(!FileAndWait(filing, visit, "2").waits);
        QCOMPARE(told.size(), 1);
        QCOMPARE(NumbersOf(filing, visit), QList<int>{1});
        box.Run(u"DROP TRIGGER no_first;"_s);
        QCOMPARE(FileAndWait(filing, visit, "3").number, 3);
        QCOMPARE(filing.Journal().Count(), 0);
        QCOMPARE(box.Value(u"SELECT COUNT(*) AS v FROM cap"_s), u"3"_s);
    }

    void AFileThatStandsGetsItsRowsWhateverTheDiskSays()
    {
        StationInABox box;
        const Failing sync(posix_files::calls.fsync, FailFolderSync);
        StillFiling filing(NothingTyped);
        QSignalSpy told(&filing, &StillFiling::Tidings);
        QVERIFY(!FileAndWait(filing, CurrentVisit(), "x").waits);
        QVERIFY(told.first()[0].toString().startsWith(u"파일은 저장하였으나"_s));
        QCOMPARE(box.Value(u"SELECT COUNT(*) AS v FROM cap"_s), u"1"_s);
    }

    /// Filed and marked up while the database is away, marked up by two stations, deleted.
    void ASumIsThatOfThePicturesFile()
    {
        StationInABox box(u"QMARIADB"_s);
        const Visit visit = CurrentVisit();
        const auto write = [&](int number, const QByteArray& content) {
            WriteWholeFile(visit.PicturePath(number), content);
            return Files().VersionOf(visit.PicturePath(number));
        };
        const auto stored = [&](int number, const QString& column) {
            return box.Value(u"SELECT %1 AS v FROM ca_sum WHERE sum_no = %2"_s.arg(column).arg(number));
        };
        QString id;
        {
            StillFiling filing(NothingTyped);
            QCOMPARE(FileAndWait(filing, visit, "1").number, 1);
            id = stored(1, u"sum_id"_s);
            StationInABox::Server().Stop();
            QVERIFY(FileAndWait(filing, visit, "2").waits);
            filing.Marked().Add(visit, 1, SumOf("1, marked"), write(1, "1, marked"));
        }
        QVERIFY(StationInABox::Server().Start());
        StillFiling filing(NothingTyped);
        WriteAndWait(filing);
        QTRY_COMPARE(stored(1, u"sum_hash"_s), SumOf("1, marked").hash);
        QTRY_COMPARE(stored(2, u"sum_hash"_s), SumOf("2").hash);
        QCOMPARE(stored(1, u"GROUP_CONCAT(CONCAT(sum_id, sum_state))"_s), id + u"live"_s);

        const QByteArray own = write(2, "own");
        filing.Marked().Add(visit, 2, SumOf("theirs"), write(2, "theirs"));
        filing.Marked().Add(visit, 2, SumOf("own"), own);
        QTRY_VERIFY(filing.Marked().IsAtRest());
        QCOMPARE(stored(2, u"sum_hash"_s), SumOf("theirs").hash);

        PictureDeletion deletion(filing, {visit.captureDir});
        QSignalSpy ended(&deletion, &PictureDeletion::Ended);
        DeletionJob job;
        job.visit = visit;
        job.items = {{1}};
        deletion.Begin(job);
        QTRY_COMPARE(ended.size(), 1);
        QCOMPARE(IdentityOfDeleted(visit.DeletedPicturePath(1)), id);
        QCOMPARE(stored(1, u"GROUP_CONCAT(CONCAT(sum_id, sum_state))"_s), id + u"deleted"_s);
    }

    void APictureThatSomebodyPutThereMeanwhileStays()
    {
        StationInABox box;
        box.FaultyFiles().beforeWrite = [](const QString& path) { WriteWholeFile(path, "by hand"); };
        StillFiling filing(NothingTyped);
        QCOMPARE(FileAndWait(filing, CurrentVisit(), "x").number, 2);
        QCOMPARE(Files().ReadFile(CurrentVisit().PicturePath(1)), "by hand");
        QCOMPARE(Files().ReadFile(CurrentVisit().PicturePath(2)), "x");
    }

    void PicturesWhoseRowsWaitStandInTheGrid()
    {
        StationInABox box(u"QMARIADB"_s);
        const Visit visit = CurrentVisit();
        frmCapture& screen = OpenScreen();
        Press(u"연결"_s);
        Press(u"캡쳐"_s);
        StationInABox::Server().Stop();
        for (int still = 0; still < 3; ++still)
            Press(u"캡쳐"_s);
        QCOMPARE(Mark(1) + Mark(2) + Mark(4), u"기록 대기기록 대기"_s);

        box.Desk().answers = {true};
        ChooseOver(1, 2, 1, u"그림지우기"_s);
        QVERIFY(!screen.PicturesOf(1).PlaceOf({{}, 2}));
        QCOMPARE(Mark(3), u"기록 대기"_s);
        QTRY_VERIFY(!NumberClaim::Stands(visit, 2));
        QVERIFY(FileExists(LogFolder(visit.captureDir, visit.etc) + u"0000123420261124002.jpg"_s));

        QVERIFY(box.Desk().shown.size() == 1); // the question
        QVERIFY(StationInABox::Server().Start());
        QTRY_COMPARE(Mark(3) + Mark(4), QString());
        Press(u"캡쳐"_s);
        QCOMPARE(box.Value(u"SELECT GROUP_CONCAT(cap_no ORDER BY cap_no) AS v FROM cap"_s), u"1,3,4,5"_s);
        QCOMPARE(box.Names(u"2026"_s, u"위내시경"_s).size(), 4);
    }

    void WhatWasPressedJustBeforeTheEndIsFiled()
    {
        StationInABox box;
        const Visit visit = CurrentVisit();
        {
            StillFiling filing(NothingTyped);
            for (const char* content : {"1", "2", "3"}) {
                const auto encode = [content] {
                    QThread::msleep(50);
                    return QByteArray(content);
                };
                filing.Stills().File({visit, PictureOrigin::Press, encode, [](const QByteArray&) {},
                                      [](int, const std::exception_ptr&) {}});
            }
        }
        StillFiling next(NothingTyped);
        QTRY_COMPARE(box.Value(u"SELECT COUNT(*) AS v FROM cap"_s), u"3"_s);
        // Their claims go behind the rows.
        QTRY_COMPARE(box.Names(u"2026"_s, u"위내시경"_s).size(), 3);
    }

    void AShareThatWentAwayGetsNoFolders()
    {
        StationInABox box;
        const Visit visit = CurrentVisit();
        StillFiling filing(NothingTyped);
        Files().RenameFile(visit.captureDir, box.Root() + u"gone"_s);
        QVERIFY(FileAndWait(filing, visit, "x").waits);
        QVERIFY(!FolderExists(visit.captureDir));
        Files().RenameFile(box.Root() + u"gone"_s, visit.captureDir);
        QTRY_COMPARE(box.Value(u"SELECT COUNT(*) AS v FROM cap"_s), u"1"_s);
        QTRY_COMPARE(filing.Journal().Count(), 0);
    }

    void PendingRowsKeepWhatWasTypedBesideWhatOthersStored()
    {
        StationInABox box;
        const Visit visit = CurrentVisit();
        {
            StillFiling filing([&](const Visit&) { return std::optional(TypedNote{u"내가 쓴 글"_s, {}}); });
            box.Run(u"ALTER TABLE ca RENAME TO ca_gone;"_s);
            QVERIFY(FileAndWait(filing, visit, "x").waits);
        }
        box.Run(u"ALTER TABLE ca_gone RENAME TO ca;"
                "INSERT INTO ca VALUES ('00001234','01','20261124','A','위내시경','남이 쓴 글','');"_s);
        // The next run knows nothing of the text but what the list holds.
        StillFiling next(NothingTyped);
        QVERIFY(next.Journal().Holds(visit, 1));
        WriteAndWait(next);
        QCOMPARE(box.Value(u"SELECT ca_chamgo AS v FROM ca"_s), u"남이 쓴 글\n내가 쓴 글"_s);
        QCOMPARE(next.Journal().Count(), 0);
    }

private:
    /// Of a process of this machine that has ended.
    static QString DeadMark()
    {
        QStringList parts = Files().ProcessMark().split(u'.');
        parts.last() += u'0';
        return parts.join(u'.');
    }

    static void MakeOld(const QString& path)
    {
        const timespec longAgo[2] = {{1700000000, 0}, {1700000000, 0}};
        if (utimensat(AT_FDCWD, QFile::encodeName(NativePath(path)), longAgo, 0) != 0)
            qFatal("no old file");
    }

    static void RunDyingStation(StationInABox& box, int stills)
    {
        QProcess process;
        process.setProcessChannelMode(QProcess::ForwardedChannels);
        process.start(QCoreApplication::applicationFilePath(),
                      {u"station"_s, QString(), box.Database().Settings().name, QString(), VisitContext.CaptureDir,
                       u"0"_s, QString::number(stills), u"dies"_s, box.Desk().ProgramFolder()});
        QVERIFY(process.waitForFinished());
        QCOMPARE(process.exitStatus(), QProcess::CrashExit);
    }

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
