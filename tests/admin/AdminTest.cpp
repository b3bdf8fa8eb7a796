#include "admin/commands.h"
#include "admin/deleted_pictures.h"
#include "admin/Report.h"
#include "contracts/LocalDatabase.h"
#include "contracts/MachineSetup.h"
#include "contracts/PlatformError.h"
#include "filing/capture_folders.h"
#include "filing/capture_wastebasket.h"
#include "filing/journal_rows.h"
#include "filing/NumberClaim.h"
#include "filing/originals.h"
#include "filing/PictureJournal.h"
#include "frame/terminal.h"
#include "frame/WorkThread.h"
#include "records/picture_sums.h"
#include "support/PacsPeer.h"
#include "support/StationInABox.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QScopeGuard>

#include <cmath>
#include <cstdio>

#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

const QString Day = QString::fromUtf16(StationInABox::Today);
const QString Stomach = u"위내시경"_s;
const QString StomachLog = u"위내시경Log"_s;
const QString Numbers = u"SELECT GROUP_CONCAT(cap_no) AS v FROM cap WHERE cap_ymd = '20261124'"_s;
const QString Notes = u"SELECT GROUP_CONCAT(ca_chamgo) AS v FROM ca"_s;

/// Of a process of this machine that has ended.
QString DeadMark()
{
    QStringList parts = Files().ProcessMark().split(u'.');
    parts[3] += u'0';
    return parts.join(u'.');
}

} // namespace

/// The administrator's program, as a process beside a station's files and tables.
class AdminTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { Make(u"QSQLITE"_s); }
    void cleanup() { m_box.reset(); }

    void RestoresPicture_data()
    {
        Columns<QString, QString, QString, int, QString, QString>("driver", "statements", "others", "exitCode",
                                                                  "numbers", "notes");
        const auto onBoth = [](const char* name, const QString& statements, const QString& others, int exitCode,
                               const QString& numbers, const QString& notes) {
            for (const QString& driver : {u"QSQLITE"_s, u"QMARIADB"_s})
                QTest::addRow("%s, %s", name, qPrintable(driver))
                    << driver << statements << others << exitCode << numbers << notes;
        };
        onBoth("number free, note stays", {}, {}, 0, u"1,2,3"_s, u"의사의 글"_s);
        onBoth("visit's row gone", u"DELETE FROM ca;"_s, {}, 0, u"1,2,3"_s, u""_s);
        onBoth("number has a row", u"INSERT INTO cap VALUES ('00001234','01','20261124','A','위내시경',2,'');"_s, {}, 0,
               u"1,2,3,4"_s, u"의사의 글"_s);
        QTest::newRow("number has a file")
            << u"QSQLITE"_s << QString() << u"jpg"_s << 0 << u"1,3,4"_s << u"의사의 글"_s;
        QTest::newRow("number is claimed")
            << u"QSQLITE"_s << QString() << u"claim"_s << 0 << u"1,3,4"_s << u"의사의 글"_s;
        const QString refuse = u"CREATE TRIGGER refuse BEFORE INSERT ON %1 "_s;
        const QString sqlite = refuse + u"BEGIN SELECT RAISE(ABORT, 'full'); END;"_s;
        const QString server = refuse + u"FOR EACH ROW SIGNAL SQLSTATE '45000';"_s;
        for (const QString& table : {u"cap"_s, u"ca"_s}) {
            QTest::addRow("refused, %s", qPrintable(table))
                << u"QSQLITE"_s << u"DELETE FROM ca;"_s + sqlite.arg(table) << QString() << 3 << u"1,3"_s << QString();
            QTest::addRow("refused by the server, %s", qPrintable(table))
                << u"QMARIADB"_s << u"DELETE FROM ca;"_s + server.arg(table) << QString() << 3 << u"1,3"_s << QString();
        }
    }

    void RestoresPicture()
    {
        QFETCH6(QString, driver, QString, statements, QString, others, int, exitCode, QString, numbers, QString, notes);
        Make(driver);
        QCOMPARE(Run({u"verify"_s, u"--learn"_s}), 0);
        const QByteArray picture = DeletePicture();
        m_box->Run(u"UPDATE ca_sum SET sum_state = 'deleted' WHERE sum_no = 2;"_s);
        if (!statements.isEmpty())
            m_box->Run(statements);
        if (others == "jpg"_L1)
            WriteWholeFile(m_box->PicturePath(Day, Stomach, 2), "of another station");
        else if (others == "claim"_L1)
            NumberClaim::Take(CurrentVisit(), 2, u"of another station"_s)->Keep();
        const QStringList before = m_box->Names(u"2026"_s, Stomach);

        QCOMPARE(Run({u"restore"_s, u"1234"_s, Day, Stomach, u"2"_s}), exitCode);
        QCOMPARE(m_box->Value(Numbers), numbers);
        QCOMPARE(m_box->Value(Notes), notes);
        QCOMPARE(m_box->Value(u"SELECT endo_check AS v FROM endo"_s), u"0"_s);
        const QStringList restored = m_box->Names(u"2026"_s, Stomach);
        QCOMPARE(restored.size(), before.size() + (exitCode == 0 ? 1 : 0));
        QCOMPARE(m_box->Names(u"2026"_s, StomachLog).size(), exitCode == 0 ? 0 : 1);
        if (exitCode != 0)
            return;
        const int number = numbers.endsWith(u'4') ? 4 : 2;
        QCOMPARE(Files().ReadFile(m_box->PicturePath(Day, Stomach, number)), picture);
        QCOMPARE(m_box->Value(u"SELECT cap_yuhyung AS v FROM cap WHERE cap_no = %1"_s.arg(number)), u"01"_s);
        QCOMPARE(m_box->Value(u"SELECT GROUP_CONCAT(sum_no) AS v FROM ca_sum WHERE sum_state = 'live'"_s),
                 QString::number(number));
        if (others == "claim"_L1)
            QVERIFY(NumberClaim::Stands(CurrentVisit(), 2));
    }

    void RestoresNothingOnAFailingShare_data()
    {
        Columns<int, FailingFiles::Kind>("countdown", "kind");
        QTest::newRow("taking it") << 1 << FailingFiles::Writes;
        QTest::newRow("claim") << 2 << FailingFiles::Writes;
        QTest::newRow("file") << 3 << FailingFiles::Writes;
        QTest::newRow("reading back") << 2 << FailingFiles::Reads;
    }

    void RestoresNothingOnAFailingShare()
    {
        QFETCH2(int, countdown, FailingFiles::Kind, kind);
        DeletePicture();
        const QStringList before = m_box->Names(u"2026"_s, Stomach);
        m_box->FaultyFiles().FailAt(countdown, false, kind);
        TerminalOutput out(stdout);
        const auto restore = [&out] { return RestorePicture({u"00001234"_s, Day, Stomach, u"2"_s}, out); };
        if (countdown == 1)
            QCOMPARE(restore(), int(Found));
        else
            QVERIFY_THROWS_EXCEPTION(PlatformError, restore());
        QCOMPARE(m_box->Names(u"2026"_s, Stomach), before);
        QCOMPARE(m_box->Names(u"2026"_s, StomachLog), QStringList{u"0000123420261124002.jpg"_s});
        QCOMPARE(m_box->Value(Numbers), u"1,3"_s);
        QCOMPARE(JournalsLeft(), QStringList());
        // The same, but for somebody who puts another picture there meanwhile.
        m_box->FaultyFiles().beforeWrite = [](const QString& path) { WriteWholeFile(path, "by hand"); };
        QCOMPARE(restore(), int(AllWell));
        QCOMPARE(Files().ReadFile(m_box->PicturePath(Day, Stomach, 2)), "by hand");
        QCOMPARE(m_box->Value(Numbers), u"1,3,4"_s);
    }

    void OneOfTwoRestoresGivesThePictureBack()
    {
        for (int round = 0; round < 6; ++round) {
            DeletePicture();
            const QStringList command{u"restore"_s, u"1234"_s, Day, Stomach, u"2"_s};
            const auto one = Start(command);
            const auto other = Start(command);
            QVERIFY(one->waitForFinished() && other->waitForFinished());
            QCOMPARE(one->exitCode() + other->exitCode(), int(Found));
            QVERIFY(!(one->readAllStandardError() + other->readAllStandardError()).isEmpty());
            QCOMPARE(m_box->Names(u"2026"_s, Stomach).size(), 3);
            QCOMPARE(m_box->Names(u"2026"_s, StomachLog), QStringList());
            QCOMPARE(m_box->Value(u"SELECT COUNT(DISTINCT cap_no) AS v FROM cap"_s), u"3"_s);
        }
    }

    /// A picture is marked twice, deleted, restored, and gets its unmarked original back.
    void AnOriginalComesBack_data()
    {
        QTest::addColumn<QString>("driver");
        QTest::newRow("SQLite") << u"QSQLITE"_s;
        QTest::newRow("MariaDB") << u"QMARIADB"_s;
    }

    void AnOriginalComesBack()
    {
        QFETCH(QString, driver);
        Make(driver);
        QCOMPARE(Run({u"verify"_s, u"--learn"_s}), 0);
        const Visit visit = CurrentVisit();
        const QString path = visit.PicturePath(2);
        const QByteArray original = Files().ReadFile(path);
        m_box->Run(u"DELETE FROM ca_sum WHERE sum_no = 2;"_s);
        QByteArray marked;
        for (const QSize& size : {QSize(64, 48), QSize(80, 60)}) {
            OriginalKeeper(visit, 2).Keep();
            marked = StationInABox::Jpeg(size, Qt::yellow);
            WriteWholeFile(path, marked);
            ReplaceSum(visit, 2, SumOf(marked), SumState::Live);
        }
        const QString id = PictureIdOf(visit, 2);
        const QString kept = originals::PathFor(visit, id);
        QCOMPARE(Files().ReadFile(kept), original);

        MoveToLogFolder(visit, 2, visit.captureDir, id);
        m_box->Run(u"DELETE FROM cap WHERE cap_no = 2;"_s);
        SumIsDeleted(visit, 2, id);
        QCOMPARE(DeletedPictures().size(), 1);
        const QStringList restore{u"restore-original"_s, u"1234"_s, Day, Stomach, u"2"_s};
        QCOMPARE(Run(restore), 1);
        QCOMPARE(Run({u"restore"_s, u"1234"_s, Day, Stomach, u"2"_s}), 0);
        QCOMPARE(Files().ReadFile(path), marked);
        QCOMPARE(Run({u"originals"_s, u"1234"_s, Day, u"--json"_s}), 0);
        QVERIFY(m_output.contains(u"\"number\": 2"_s) || m_output.contains(u"\"number\":2"_s));
        QCOMPARE(Run(restore), 0);
        QCOMPARE(Files().ReadFile(path), original);
        QCOMPARE(Files().ReadFile(visit.DeletedPicturePath(2)), marked);
        QCOMPARE(Run(restore), 0); // It is there already.
        QCOMPARE(DeletedPictures().size(), 1);
        QCOMPARE(PictureIdOf(visit, 2), id);
        QCOMPARE(Run({u"verify"_s}), 0);
        QCOMPARE(Run({u"restore"_s, u"1234"_s, Day, Stomach, u"2"_s}), 0);
        QCOMPARE(Files().ReadFile(visit.PicturePath(4)), marked);
        QCOMPARE(Files().ReadFile(originals::PathOf(visit, 4)), original);
        // One that was kept in an outage goes to the picture's own identity.
        WriteWholeFile(originals::PathFor(visit, u"outage"_s), original);
        Files().SetFileNote(visit.PicturePath(3), IdentityNote, "outage");
        originals::Adopt(visit, 3);
        QVERIFY(FileExists(originals::PathFor(visit, PictureIdOf(visit, 3))));
    }

    /// Killed at any moment, as is the one that finishes it, or the share is away then.
    void AKilledRestoreIsFinished_data()
    {
        Columns<QString, bool>("day", "othersFirst");
        QTest::newRow("of a past year") << u"20250301"_s << false;
        QTest::newRow("another user's station comes first") << Day << true;
    }

    void AKilledRestoreIsFinished()
    {
        QFETCH2(QString, day, bool, othersFirst);
        const Visit visit{u"00001234"_s, u"01"_s, day, Stomach, YearFolder(m_box->Root(), day), u"jpg"_s};
        const QString row = u"FROM cap WHERE cap_no = 2 AND cap_ymd = '%1'"_s.arg(day);
        const QStringList write{u"pending"_s, u"--write"_s};
        const QTemporaryDir other;
        const QByteArray seed = qgetenv("STATION_WALK_SEED");
        QRandomGenerator random(seed.isEmpty() ? 4711 : seed.toUInt());
        const auto pause = [&random](int longestUs) {
            QThread::usleep(ulong(longestUs * std::pow(random.generateDouble(), 3)));
        };
        int longestUs = 0; // Of what it does to the picture; it takes as long as the machine's disk does.
        if (day != Day)
            m_box->AddPicture(day, Stomach, 2, u"옛 글"_s);
        const QByteArray picture = Files().ReadFile(visit.PicturePath(2));
        const QStringList names = m_box->Names(day.left(4), Stomach);
        MakeFolder(visit.LogFolder());
        for (int round = qMax(10, qEnvironmentVariableIntValue("STATION_WALKS")); round > 0; --round) {
            if (FileExists(visit.PicturePath(2))) {
                MoveToLogFolder(visit, 2, {});
                m_box->Run(u"DELETE %1;"_s.arg(row));
            }
            const auto program = Start({u"restore"_s, u"1234"_s, day, Stomach, u"2"_s});
            // Most are killed between the file's taking and the end, some before it.
            const auto hasBegun = [&] {
                return round % 5 == 1 ? !JournalsLeft().isEmpty() : !FileExists(visit.DeletedPicturePath(2));
            };
            while (program->state() != QProcess::NotRunning && !hasBegun())
                program->waitForFinished(0);
            QElapsedTimer timer;
            timer.start();
            if (longestUs > 0) {
                pause(longestUs);
                program->kill();
            }
            program->waitForFinished();
            longestUs = longestUs > 0 ? longestUs : int(timer.nsecsElapsed() / 1000);
            if (othersFirst) {
                Start(write, other.path())->waitForFinished();
            } else if (const QString root = NativePath(m_box->Root()).chopped(1); round % 3 == 0) {
                QVERIFY(QDir().rename(root, root + u".aside"_s) && QDir().mkpath(root));
                Run(write);
                QVERIFY(QDir(root).removeRecursively() && QDir().rename(root + u".aside"_s, root));
            } else {
                const auto cut = Start(write);
                pause(longestUs * 10);
                cut->kill();
                cut->waitForFinished();
            }

            QCOMPARE(Run(write), 0);
            const QStringList where = m_box->Names(day.left(4), Stomach) + m_box->Names(day.left(4), StomachLog);
            QCOMPARE(where.size(), names.size());
            QVERIFY(where.contains(u"00001234"_s + day + u"002.jpg"_s));
            const bool isBack = FileExists(visit.PicturePath(2));
            QCOMPARE(Files().ReadFile(isBack ? visit.PicturePath(2) : visit.DeletedPicturePath(2)), picture);
            QCOMPARE(m_box->Value(u"SELECT COUNT(*) AS v %1"_s.arg(row)), isBack ? u"1"_s : u"0"_s);
            QCOMPARE(JournalsLeft(), QStringList());
        }
    }

    void ChoosesAmongFilesAndTellsSweptOnes()
    {
        DeletePicture(u"0123456789abcdef0123456789abcdef"_s);
        // The number was taken again and deleted again: the newest has the plain name.
        for (const Qt::GlobalColor colour : {Qt::yellow, Qt::cyan}) {
            WriteWholeFile(m_box->PicturePath(Day, Stomach, 2), StationInABox::Jpeg({64, 64}, colour));
            DeletePicture();
        }
        const QString log = LogFolder(VisitContext.CaptureDir, Stomach);
        QCOMPARE(Files().ReadFile(log + u"0000123420261124002.jpg"_s), StationInABox::Jpeg({64, 64}, Qt::cyan));
        const QStringList aside = m_box->Names(u"2026"_s, StomachLog).filter(u"2-"_s);
        QCOMPARE(aside.size(), 2);
        QVERIFY(aside.contains(u"0000123420261124002-0123456789abcdef0123456789abcdef.jpg"_s));
        WriteWholeFile(log + u"0000123420261124002 (2).jpg"_s, StationInABox::Jpeg({64, 64}, Qt::green));
        WriteWholeFile(log + u"0000123420261124007.jpg"_s, "no picture");
        WriteWholeFile(m_box->PicturePath(Day, Stomach, 5), StationInABox::Jpeg({64, 64}, Qt::blue));
        WorkThread writer;
        SweepOrphanPictures(CurrentVisit(), PictureJournal(writer, {}));

        QCOMPARE(Run({u"list-deleted"_s, u"1234"_s, Day}), 0);
        const QStringList lines = m_output.trimmed().split(u'\n');
        QCOMPARE(lines.size(), 6);
        QCOMPARE(lines.filter(u"정리됨"_s).size(), 1);
        QVERIFY(lines.filter(u"정리됨"_s).first().startsWith(u"00001234 20261124 위내시경 005"_s));
        const QStringList number{u"restore"_s, u"1234"_s, Day, Stomach};
        QCOMPARE(Run(number + QStringList{u"2"_s}), 1);
        QCOMPARE(Run(number + QStringList{u"7"_s}), 1);
        QCOMPARE(m_box->Names(u"2026"_s, StomachLog).size(), 6);
        QCOMPARE(Run(number + QStringList{u"2"_s, u"0000123420261124002 (2).jpg"_s}), 0);
        QCOMPARE(Run(number + QStringList{u"5"_s}), 0);
        QVERIFY(m_output.contains(u"정리된 것"_s));
        QCOMPARE(Run(number + QStringList{u"2"_s, aside.first()}), 0);
        QVERIFY(m_output.contains(u"8번으로"_s));
        QCOMPARE(m_box->Value(Numbers), u"1,2,3,5,8"_s);
    }

    void VerifyFindsAndChangesNothing_data()
    {
        Columns<QString, QStringList>("driver", "arguments");
        QTest::newRow("SQLite") << u"QSQLITE"_s << QStringList{};
        QTest::newRow("MariaDB, decoded") << u"QMARIADB"_s << QStringList{u"2026"_s, u"--decode"_s};
    }

    void VerifyFindsAndChangesNothing()
    {
        QFETCH2(QString, driver, QStringList, arguments);
        Make(driver);
        QCOMPARE(Run(QStringList{u"verify"_s, u"--learn"_s} + arguments), 0);
        QVERIFY2(m_output.startsWith(u"합을 받아들인 파일 3개\n그림 3장"_s), qPrintable(m_output));

        const QByteArray jpeg = Files().ReadFile(m_box->PicturePath(Day, Stomach, 3));
        DeleteFile(m_box->PicturePath(Day, Stomach, 1));
        WriteWholeFile(m_box->PicturePath(Day, Stomach, 2), jpeg.left(jpeg.size() / 2));
        WriteWholeFile(m_box->PicturePath(Day, Stomach, 4), jpeg);
        m_box->Run(u"INSERT INTO cap VALUES ('9''9/','01','20261124','A','초음파',2000,'');"_s);
        const QString movies = MovieFolder(VisitContext.CaptureDir);
        MakeFolder(movies);
        WriteWholeFile(movies + u"0000123420261124001.avi"_s,
                       QByteArray("RIFF\0\0\0\0AVI LIST\4\0\0\0hdrlLIST\0\0\0\0movi00dc", 40));
        WriteWholeFile(movies + u".0000123420261124002.avi.%1.part"_s.arg(DeadMark()), "RIFF");
        const QString folder = SectionFolder(VisitContext.CaptureDir, Stomach);
        WriteWholeFile(folder + u".station-%1-1.part"_s.arg(Files().ProcessMark()), "being written");
        WriteWholeFile(folder + u"0000123420261124009"_s, u"{\"holder\": \"%1\"}"_s.arg(DeadMark()).toUtf8());
        const QString before = State();

        QCOMPARE(Run(QStringList{u"verify"_s} + arguments), 1);
        QCOMPARE(State(), before);
        QStringList kinds;
        for (const QString& line : m_output.trimmed().split(u'\n'))
            kinds << line.section(u' ', 0, 0) + u' ' + line.section(u'/', -1).section(u' ', 0, 0);
        kinds.sort();
        const QStringList wanted{
            u"그림 그림"_s,
            u"기록없음 0000123420261124004.jpg"_s,
            u"방문기록없음 "_s,
            u"색인없음 0000123420261124001.avi"_s,
            u"손상 0000123420261124002.jpg"_s,
            u"쓰는중 .station-%1-1.part"_s.arg(Files().ProcessMark()),
            u"잔여 .0000123420261124002.avi.%1.part"_s.arg(DeadMark()),
            u"잔여 0000123420261124009"_s,
            u"파일없음 "_s,
            u"파일없음 0000123420261124001.jpg"_s,
            u"합이 합이"_s,
        };
        QCOMPARE(kinds.join(u'\n'), wanted.join(u'\n'));
    }

    /// `%1` is the year's folder. What is read says so, and as a document as well.
    void VerifyTellsEachDamage_data()
    {
        Columns<QString, QString, QString, int>("damage", "statement", "line", "faults");
        const auto row = [](const char* name, const QString& damage, const QString& line, int faults = 1) {
            QTest::newRow(name) << damage << QString() << line << faults;
        };
        row("pipe", u"rm %1/위내시경/*001.jpg; mkfifo %1/위내시경/0000123420261124001.jpg"_s,
            u"파일아님 %1/위내시경/0000123420261124001.jpg "_s);
        row("link to a section", u"mv %1/위내시경 %1/../there; ln -s ../there %1/위내시경"_s,
            u"폴더링크 %1/위내시경 "_s);
        row("link to a year", u"mv %1 %1/../there; ln -s there %1"_s, u"폴더링크 %1/ "_s.chopped(2));
        row("closed Log folder", u"mkdir -p %1/위내시경Log; chmod 0 %1/위내시경Log"_s, u"읽지못함 %1/위내시경Log/ "_s);
        row("closed section", u"chmod 0 %1/위내시경"_s, u"읽지못함 %1/위내시경/ "_s);
        row("name in another encoding", u"touch %1/위내시경/0000123420261124$(printf '\\377').jpg"_s,
            u"깨진이름 %1/위내시경/"_s);
        row("movie of empty blocks",
            u"mkdir -p %1/movie; cd %1/movie; printf 'RIFF----AVI LIST\\4\\0\\0\\0movi' >1.avi; truncate -s 2G 1.avi"_s,
            u"색인없음 %1/movie/1.avi"_s);
        // Each is a picture still, though not the one that it was.
        const auto changed = [](const char* name, const QString& damage, const QString& statement,
                                const QString& line) {
            QTest::newRow(name) << u"cd %1/위내시경; "_s + damage + u"; touch -d 2020-01-01 *"_s << statement << line
                                << 1;
        };
        const QString number = u"0000123420261124%1.jpg"_s;
        const QString write = u"dd of=%1 bs=1 seek=40 conv=notrunc status=none"_s;
        changed("flipped byte", u"printf '\\252' | "_s + write.arg(number.arg(u"001"_s)), {},
                u"다름 %1/위내시경/"_s + number.arg(u"001"_s));
        changed("zeros", u"head -c 20 /dev/zero | "_s + write.arg(number.arg(u"002"_s)), {},
                u"다름 %1/위내시경/"_s + number.arg(u"002"_s));
        changed("swapped",
                u"mv *1.jpg there; mv *2.jpg "_s + number.arg(u"001"_s) + u"; mv there "_s + number.arg(u"002"_s), {},
                u"뒤바뀜 %1/위내시경/"_s + number.arg(u"001"_s));
        const QString rowGone = u"DELETE FROM cap WHERE cap_no = 3;"_s;
        changed("picture gone with its row", u"rm *3.jpg"_s, rowGone, u"그림없음 00001234 20261124 위내시경 003 "_s);
        changed("deleted and changed",
                u"mkdir ../위내시경Log; mv *3.jpg ../위내시경Log; cd ../위내시경Log; printf x | "_s +
                    write.arg(number.arg(u"003"_s)),
                rowGone + u"UPDATE ca_sum SET sum_state = 'deleted' WHERE sum_no = 3;"_s,
                u"지운그림다름 %1/위내시경Log/"_s + number.arg(u"003"_s));
        const QString movie =
            u"INSERT INTO ca_sum VALUES ( '00001234', '20261124', 'movie', 1, 'm', 'f0', 2, '2026', 'live' );"_s;
        changed("movie that is another", u"mkdir ../movie; cd ../movie; echo x > 0000123420261124001.avi"_s, movie,
                u"다름 %1/movie/0000123420261124001.avi (저장한 동영상"_s);
        changed("movie gone", u":"_s, movie, u"그림없음 %1/movie/0000123420261124001.avi "_s);
        row("nothing at all", u"rm -r %1/*"_s, u"비어있음 %1/ "_s);
        const auto rows = [](const char* name, const QString& statement, const QString& line, int faults) {
            QTest::newRow(name) << QString() << statement << line << faults;
        };
        rows("visits' rows gone", u"DELETE FROM ca;"_s, u"방문기록없음 00001234 20261124 위내시경 "_s, 1);
        rows("rows without files",
             u"INSERT INTO cap WITH RECURSIVE n(i) AS (VALUES(10) UNION ALL SELECT i + 1 FROM n WHERE i < 2509) "
             "SELECT '00001234', '01', '20261124', 'A', '위내시경', i, '' FROM n;"_s,
             u"파일없음 외 1500건 "_s, 2500);
    }

    void VerifyTellsEachDamage()
    {
        QFETCH4(QString, damage, QString, statement, QString, line, int, faults);
        const QString year = NativePath(VisitContext.CaptureDir).chopped(1);
        if (line.startsWith(u"비어있음"_s))
            m_box->Run(u"DELETE FROM cap;"_s);
        WriteWholeFile(m_box->PicturePath(Day, Stomach, 2), StationInABox::Jpeg({640, 480}, Qt::green));
        if (!line.startsWith(u"비어있음"_s))
            QCOMPARE(Run({u"verify"_s, u"--learn"_s}), 0);
        if (!statement.isEmpty())
            m_box->Run(statement);
        QCOMPARE(QProcess::execute(u"bash"_s, {u"-ec"_s, damage.contains(u'%') ? damage.arg(year) : damage}), 0);
        const auto open = qScopeGuard([&year] { QProcess::execute(u"chmod"_s, {u"-R"_s, u"u+rwX"_s, year}); });

        QCOMPARE(Run({u"verify"_s, u"2026"_s}), 1);
        const QStringList lines = m_output.trimmed().split(u'\n');
        const QString expected = line.contains(u'%') ? line.arg(year) : line;
        QVERIFY2(lines[lines.size() - 2].startsWith(expected), qPrintable(m_output));
        QVERIFY2(lines.last().endsWith(u"이상 %1건"_s.arg(faults)), qPrintable(m_output));
        QCOMPARE(Run({u"verify"_s, u"2026"_s, u"--json"_s}), 1);
        const QJsonObject document = QJsonDocument::fromJson(m_output.toUtf8()).object();
        QCOMPARE(document[u"faults"_s].toInt(), faults);
        QCOMPARE(document[u"exitStatus"_s].toInt(), 1);
        QCOMPARE(document[u"items"_s].toArray().size(), lines.size() - 1);
    }

    void OutputThatIsLostIsNoSuccess_data()
    {
        Columns<QStringList, QString>("arguments", "redirection");
        for (const QString& redirection : {u">/dev/full"_s, u">&-"_s}) {
            for (const QString& command : {u"verify"_s, u"list-deleted"_s, u"pending"_s, u"pacs"_s, u"--version"_s})
                QTest::addRow("%s %s", qPrintable(command), qPrintable(redirection))
                    << QStringList{command} << redirection;
        }
        QTest::newRow("document") << QStringList{u"pacs"_s, u"--json"_s} << u">/dev/full"_s;
    }

    void OutputThatIsLostIsNoSuccess()
    {
        QFETCH2(QStringList, arguments, QString, redirection);
        QCOMPARE(Run(arguments), 0);
        QCOMPARE(Run(arguments, redirection), 1);
    }

    /// Every list as one document.
    void ListsAreDocumentsToo()
    {
        DeletePicture();
        WriteWholeFile(LogFolder(VisitContext.CaptureDir, Stomach) + u"0000123420261124002 \u202e\".jpg"_s, "x");
        WriteWholeFile(m_box->Desk().ProgramFolder() + u"/Spool-0123.jpg"_s, "x");
        const auto items = [this](const QString& command) {
            Run({command, u"--json"_s});
            return QJsonDocument::fromJson(m_output.toUtf8()).object()[u"items"_s].toArray();
        };
        const QJsonArray deleted = items(u"list-deleted"_s);
        QCOMPARE(deleted.size(), 2);
        QVERIFY(!m_output.contains(QChar(0x202e)));
        QCOMPARE(deleted[0][u"file"_s].toString(), u"0000123420261124002 \u202e\".jpg"_s);
        QCOMPARE(deleted[1][u"number"_s].toInt(), 2);
        QCOMPARE(items(u"pending"_s)[0][u"kind"_s].toString(), u"unlisted-picture"_s);
        QVERIFY(items(u"check"_s).size() > 5);
        m_box->Run(u"DROP TABLE cap;"_s);
        QCOMPARE(Run({u"verify"_s, u"--json"_s}), 3);
        QVERIFY(!QJsonDocument::fromJson(m_output.toUtf8()).object()[u"error"_s].toString().isEmpty());
    }

    void PendingWritesForTheDeadAlone()
    {
        const QString folder = m_box->Desk().ProgramFolder() + u'/';
        // Filed, and its rows wait; in the spool, and its number waits too.
        WriteWholeFile(m_box->PicturePath(Day, Stomach, 6), StationInABox::Jpeg({64, 64}, Qt::blue));
        const auto claim = [](const QString& mark) { return u"{\"holder\": \"%1\"}"_s.arg(mark).toUtf8(); };
        WriteWholeFile(CurrentVisit().ClaimPath(6), claim(Files().ProcessMark()));
        WriteWholeFile(folder + u"Spool-0123.jpg"_s, StationInABox::Jpeg({64, 64}, Qt::red));
        const auto entry = [](int number, const QString& spooled) {
            return QJsonObject{
                {u"chart"_s, u"00001234"_s}, {u"yuhyung"_s, u"01"_s},     {u"ymd"_s, Day},
                {u"etc"_s, Stomach},         {u"number"_s, number},       {u"captureDir"_s, VisitContext.CaptureDir},
                {u"imageExt"_s, u"jpg"_s},   {u"note"_s, u"기다린 글"_s}, {u"spooled"_s, spooled}};
        };
        const QByteArray list =
            QJsonDocument(QJsonObject{{u"entries"_s, QJsonArray{entry(6, {}), entry(-1, u"0123"_s)}}}).toJson();
        const QString ofLiving = folder + u"PendingRows-%1.json"_s.arg(Files().ProcessMark());
        WriteWholeFile(ofLiving, list);
        auto lock = Files().Lock(folder + u"PendingRows-%1.lock"_s.arg(Files().ProcessMark()));
        const QString before = State();
        QCOMPARE(Run({u"pending"_s}), 1);
        QCOMPARE(m_output.count(u"실행 중인 스테이션"_s), 2);
        QCOMPARE(Run({u"pending"_s, u"--write"_s}), 1);
        QCOMPARE(State(), before);
        QCOMPARE(Files().ReadFile(ofLiving), list);

        lock.reset();
        WriteWholeFile(CurrentVisit().ClaimPath(6), claim(DeadMark()));
        Files().RenameFile(ofLiving, folder + u"PendingRows-%1.json"_s.arg(DeadMark()));
        QCOMPARE(Run({u"pending"_s, u"--write"_s}), 0);
        QCOMPARE(m_box->Value(Numbers), u"1,2,3,6,7"_s);
        QCOMPARE(m_box->Value(Notes), u"의사의 글\n기다린 글"_s);
        QCOMPARE(Files().FilesStartingWith(folder, u"Spool-"_s), QStringList());
        QCOMPARE(m_box->Names(u"2026"_s, Stomach).filter(u".jpg"_s).size(), 5);
        QCOMPARE(m_box->Names(u"2026"_s, Stomach).size(), 5);
        QCOMPARE(Run({u"pending"_s}), 0);
    }

    void AnothersFolderIsTakenAsFarAsItIsAList_data()
    {
        Columns<QString, bool>("trap", "isTaken");
        QTest::newRow("none") << QString() << true;
        for (const QString& trap : {u"link"_s, u"log that is a pipe"_s, u"length"_s, u"endless view"_s,
                                    u"picture that is a link"_s, u"movie outside"_s, u"visit outside"_s})
            QTest::newRow(qPrintable(trap)) << trap << false;
    }

    void AnothersFolderIsTakenAsFarAsItIsAList()
    {
        QFETCH2(QString, trap, bool, isTaken);
        const QTemporaryDir other;
        const QString folder = other.path() + u'/';
        const QString journal = folder + u"Pictures-%1.journal"_s.arg(DeadMark());
        const QString picture = folder + u"Spool-0123.jpg"_s;
        const QString foreign = folder + u"foreign"_s;
        WriteWholeFile(foreign, StationInABox::Jpeg({64, 64}, Qt::green));
        WriteWholeFile(picture, StationInABox::Jpeg({64, 64}, Qt::red));
        PictureRecord record{.id = u"0123"_s, .visit = CurrentVisit(), .state = PictureState::Local};
        if (trap == u"visit outside")
            record.visit.captureDir = folder;
        QStringList statements = journal_rows::Tables() + QStringList{journal_rows::Write(record)};
        if (trap == u"movie outside")
            statements << journal_rows::Write(
                MovieJob{.id = u"0456"_s, .visit = CurrentVisit(), .earlier = {{foreign, {}, {}}}});
        if (trap == u"endless view")
            statements << u"ALTER TABLE picture RENAME TO old"_s
                       << u"CREATE VIEW picture AS WITH RECURSIVE endless AS (SELECT * FROM old UNION ALL SELECT * "
                          "FROM endless) SELECT * FROM endless"_s;
        UseService<LocalDatabases>().Open(other.path() + u'\\' + QFileInfo(journal).fileName())->Run(statements);
        const auto link = [](const QString& to, const QString& name) {
            return QFile::rename(name, name + u".kept"_s) && QFile::link(to, name);
        };
        if (trap == u"link")
            QVERIFY(link(journal + u".kept"_s, journal));
        if (trap == u"picture that is a link")
            QVERIFY(link(foreign, picture));
        if (trap == u"log that is a pipe")
            QCOMPARE(mkfifo(QFile::encodeName(journal + u"-wal"_s).constData(), 0600), 0);
        if (trap == u"length")
            QVERIFY(QFile::resize(journal, 1LL << 40));

        Surroundings.foldersOfOthers = [&other] { return QStringList{other.path()}; };
        const auto restore = qScopeGuard([] { Surroundings.foldersOfOthers = {}; });
        TerminalOutput out(stdout);
        Report report(out);
        QCOMPARE(ListPending(report), int(Found));
        TakeOverPending(out);
        QCOMPARE(QFileInfo::exists(journal), !isTaken);
        QCOMPARE(QFileInfo::exists(picture), !isTaken);
        QVERIFY(QFileInfo::exists(foreign));
        QCOMPARE(m_box->Names(u"2026"_s, Stomach).filter(u".jpg"_s).size(), isTaken ? 4 : 3);
        for (const QString& prefix : {u"Spool-"_s, u"Pictures-"_s + DeadMark()})
            QCOMPARE(Files().FilesStartingWith(LocalFolder(), prefix), QStringList());
    }

    /// What waits is shown and sent while anything lives or nothing does; what the server lacks is found.
    void PacsIsShownSentAndCompared()
    {
        PacsPeer server;
        server.Start({u"--statuses"_s, u"0000,C000"_s});
        QFile setup(SetupPath());
        QVERIFY(setup.open(QFile::Append));
        setup.write("[Pacs]\nInstitution=31100001\nHost=127.0.0.1\nPort=" + QByteArray::number(server.Port()) + '\n');
        setup.close();
        WriteWholeFile(m_box->PicturePath(Day, Stomach, 3), "no picture");
        QCOMPARE(Run({u"pacs"_s}), 0);
        QCOMPARE(Run({u"pacs"_s, u"--compare"_s, u"2026"_s}), 1);
        QVERIFY2(m_output.contains(u"없음 00001234 20261124 위내시경 3장 모두"_s), qPrintable(m_output));
        QCOMPARE(Run({u"pacs"_s, u"--send"_s, u"1234"_s, Day, Stomach}), 0);
        QTRY_COMPARE_WITH_TIMEOUT(server.Objects().size(), 2, 30000);
        QTRY_COMPARE_WITH_TIMEOUT(Run({u"pacs"_s}), 1, 30000);
        QVERIFY2(m_output.contains(u"거부 00001234 20261124 위내시경 002 "_s) && m_output.contains(u"(C000)"_s),
                 qPrintable(m_output));
        QCOMPARE(Run({u"pacs"_s, u"--retry"_s}), 1);
        QVERIFY2(m_output.contains(u"보냄 00001234 20261124 위내시경 002\n"_s) &&
                     m_output.contains(u"거부 00001234 20261124 위내시경 003 "_s) &&
                     m_output.contains(u"1건을 보냈습니다."_s),
                 qPrintable(m_output));
        QCOMPARE(Run({u"pacs"_s, u"--drop"_s}), 0);
        WriteWholeFile(m_box->PicturePath(Day, Stomach, 1), StationInABox::Jpeg({64, 48}, Qt::yellow));
        QCOMPARE(Run({u"pacs"_s, u"--compare"_s, u"2026"_s}), 1);
        QVERIFY2(m_output.contains(u"다름 00001234 20261124 위내시경 001번"_s) &&
                     m_output.contains(u"PACS에 없는 그림 1장, 내용이 다른 그림 1장"_s),
                 qPrintable(m_output));
    }

    void UsedWrongly_data()
    {
        Columns<QStringList, int>("arguments", "exitCode");
        QTest::newRow("no command") << QStringList{} << 2;
        QTest::newRow("no such date") << QStringList{u"restore"_s, u"1"_s, u"2026"_s, Stomach, u"1"_s} << 2;
        QTest::newRow("way out of the root") << QStringList{u"restore"_s, u"1"_s, Day, u"../x"_s, u"1"_s} << 1;
        QTest::newRow("unknown option") << QStringList{u"verify"_s, u"--write"_s} << 2;
        QTest::newRow("no document") << QStringList{u"pending"_s, u"--write"_s, u"--json"_s} << 2;
        QTest::newRow("no capture root") << QStringList{u"verify"_s} << 3;
    }

    void UsedWrongly()
    {
        QFETCH2(QStringList, arguments, int, exitCode);
        if (exitCode == 3)
            QVERIFY(QDir(NativePath(m_box->Root())).removeRecursively());
        QCOMPARE(Run(arguments), exitCode);
        QCOMPARE(QDir(NativePath(m_box->Root())).exists(), exitCode != 3);
    }

    /// Bare, with all there, and with nobody who answers.
    void TheFirstSetupMakesWhatIsMissing()
    {
        struct Machine final : MachineSetup
        {
            bool MayChange() const override { return true; }
            QStringList People() const override { return {u"kim"_s}; }
            QString AddToGroups(const QString& user, const QStringList& groups) override
            {
                done << u"groups %1 %2"_s.arg(user, groups.first());
                return {};
            }
            QString LetLinger(const QString& user) override
            {
                done << u"linger %1"_s.arg(user);
                return {};
            }
            QString MakeSharedFolder(const QString& path, const QString& group) override
            {
                done << u"folder %1 %2"_s.arg(path, group);
                return {};
            }
            bool HasServer() const override { return true; }
            bool HasDatabase(const QString& name) const override { return name == u"clinic"_s; }
            QStringList MakeTables(const QString&) override
            {
                done << u"tables"_s;
                return {};
            }
            QStringList MakeAccount(const QString&, const QString& user, const QString& given) override
            {
                password = given;
                done << u"account %1"_s.arg(user);
                return {{}};
            }
            bool Exists(const QString&) const override { return isThere; }
            QString WriteSecret(const QString& path, const QByteArray& content, const QString&) override
            {
                setup = content;
                done << u"setup %1"_s.arg(path);
                return {};
            }

            bool isThere = false;
            QStringList done;
            QString password;
            QByteArray setup;
        };
        auto made = std::make_unique<Machine>();
        Machine& machine = *made;
        InstallService<MachineSetup>(std::move(made));
        const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::tmpfile(), &std::fclose);
        TerminalOutput out(file.get());
        const auto restore = qScopeGuard([] { Surroundings.readLine = nullptr; });
        Surroundings.readLine = [] { return std::optional(QString()); };
        QCOMPARE(SetUpFirst(out), int(AllWell));
        QCOMPARE(machine.done, (QStringList{u"groups kim capture-station"_s, u"linger kim"_s,
                                            u"folder /srv/capture capture-station"_s, u"tables"_s,
                                            u"account capture_station"_s, u"setup /etc/capture-station/Setup.ini"_s}));
        QVERIFY(machine.password.size() >= 20 && machine.setup.contains("Password=" + machine.password.toUtf8()));
        std::rewind(file.get());
        QByteArray output(10000, '\0');
        output.truncate(qsizetype(std::fread(output.data(), 1, size_t(output.size()), file.get())));
        QVERIFY(output.size() > 500 && !output.contains(machine.password.toUtf8()));
        machine.done.clear();
        machine.isThere = true;
        QCOMPARE(SetUpFirst(out), int(AllWell));
        QCOMPARE(machine.done.last(), u"tables"_s);
        Surroundings.readLine = [] { return std::optional<QString>(); };
        QVERIFY_THROWS_EXCEPTION(PlatformError, SetUpFirst(out));
    }

private:
    /// A visit of today with three pictures and a note.
    void Make(const QString& driver)
    {
        m_box.reset();
        m_box = std::make_unique<StationInABox>(driver);
        for (const int number : {1, 2, 3})
            m_box->AddPicture(Day, Stomach, number, u"의사의 글"_s);
        const DatabaseSettings& database = m_box->Database().Settings();
        WriteWholeFile(SetupPath(),
                       u"[Database]\nDriver=%1\nName=%2\nSocket=%3\nUser=%4\n[Client]\nCaptureRoot=%5\n"
                       "EtcList=위내시경\n"_s.arg(driver, database.name, database.socket, database.user, m_box->Root())
                           .toUtf8());
    }

    QString SetupPath() const { return m_box->Desk().ProgramFolder() + u"/Setup.ini"_s; }

    /// Number 2, as the station deletes it; gives what it was.
    QByteArray DeletePicture(const QString& id = {})
    {
        const QByteArray picture = Files().ReadFile(m_box->PicturePath(Day, Stomach, 2));
        MoveToLogFolder(CurrentVisit(), 2, CurrentVisit().captureDir, id);
        m_box->Run(u"DELETE FROM cap WHERE cap_no = 2;"_s);
        return picture;
    }

    /// `folder`: of another user. It runs without root's right to open what is closed.
    std::unique_ptr<QProcess> Start(const QStringList& arguments, const QString& folder = {},
                                    const QString& redirection = {}) const
    {
        auto program = std::make_unique<QProcess>();
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(u"CAPTURE_STATION_SETUP"_s, NativePath(SetupPath()));
        environment.insert(u"CAPTURE_STATION_FOLDER"_s, folder.isEmpty() ? m_box->Desk().ProgramFolder() : folder);
        program->setProcessEnvironment(environment);
        const QString limited =
            geteuid() == 0 ? u"setpriv --bounding-set=-dac_override,-dac_read_search "_s : QString();
        program->start(u"bash"_s, QStringList{u"-c"_s, u"exec "_s + limited + u"\"$0\" \"$@\" "_s + redirection,
                                              u"" STATION_ADMIN_PROGRAM ""_s} +
                                      arguments);
        program->waitForStarted();
        return program;
    }

    /// Gives the program's exit code; what it says is in `m_output`.
    int Run(const QStringList& arguments, const QString& redirection = {})
    {
        const auto program = Start(arguments, {}, redirection);
        program->waitForFinished();
        m_output = QString::fromUtf8(program->readAllStandardOutput());
        return program->exitStatus() == QProcess::NormalExit ? program->exitCode() : -1;
    }

    /// What any process has left in the program's folder.
    QStringList JournalsLeft() const
    {
        return QDir(m_box->Desk().ProgramFolder()).entryList({u"Pictures-*"_s}, QDir::Files);
    }

    /// All files and folders below the capture root with size and time, and all rows.
    QString State()
    {
        QProcess find;
        find.start(u"find"_s, {NativePath(m_box->Root()), u"-printf"_s, u"%p %s %T@\n"_s});
        find.waitForFinished();
        QStringList lines = QString::fromUtf8(find.readAllStandardOutput()).split(u'\n');
        lines.sort();
        return lines.join(u'\n') + m_box->Value(Numbers) + m_box->Value(Notes);
    }

    std::unique_ptr<StationInABox> m_box;
    QString m_output;
};

QTEST_MAIN(AdminTest)
#include "AdminTest.moc"
