#include "admin/commands.h"
#include "contracts/LocalDatabase.h"
#include "contracts/OutsideChecks.h"
#include "filing/capture_folders.h"
#include "filing/capture_wastebasket.h"
#include "filing/journal_rows.h"
#include "filing/NumberClaim.h"
#include "filing/originals.h"
#include "frame/terminal.h"
#include "pacs/SenderQueue.h"
#include "support/StationInABox.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>

using namespace Qt::StringLiterals;

namespace {

const QString Day = QString::fromUtf16(StationInABox::Today);
const QString Chart = QString::fromUtf16(StationInABox::Chart);
const QString Stomach = u"위내시경"_s;

/// Of a process of this machine that has ended.
QString DeadMark()
{
    QStringList parts = Files().ProcessMark().split(u'.');
    parts[3] += u'0';
    return parts.join(u'.');
}

} // namespace

/// What the administrator does with the record of access, and with all that is one patient's.
class HistoryTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup() { m_box.reset(); }

    void TheRecordIsReadAndRetired_data()
    {
        Columns<QString>("driver");
        QTest::newRow("SQLite") << u"QSQLITE"_s;
        QTest::newRow("MariaDB") << u"QMARIADB"_s;
    }

    void TheRecordIsReadAndRetired()
    {
        QFETCH(QString, driver);
        Make(driver);
        const int year = QDate::currentDate().year();
        const auto act = [](const QString& at, const QString& run, int seq, const QString& kind, const QString& user,
                            const QString& detail, const QString& before) {
            return u"INSERT INTO ca_log (log_id, log_at, log_run, log_seq, log_kind, log_user, log_chart, log_detail, "
                   "log_before) VALUES ('%2-%3', '%1T23:59:59.999+09:00', '%2', %3, '%4', '%5', '00001234', '%6', "
                   "%7);"_s.arg(at, run, QString::number(seq), kind, user, detail, before);
        };
        const QString many = u"(SELECT 0 AS n UNION SELECT 1 UNION SELECT 2 UNION SELECT 3 UNION SELECT 4 UNION SELECT "
                             "5 UNION SELECT 6 UNION SELECT 7 UNION SELECT 8 UNION SELECT 9)"_s;
        m_box->Run(act(u"%1-12-31"_s.arg(year - 3), u"old"_s, 1, u"filed"_s, u"kim"_s, {}, u"NULL"_s) +
                   act(u"%1-01-01"_s.arg(year - 2), u"old"_s, 2, u"deleted"_s, u"kim"_s, {}, u"NULL"_s) +
                   act(u"2026-11-24"_s, u"cut"_s, 1, u"printed"_s, u"lee"_s, u"=1+1, \"x\""_s, u"NULL"_s) +
                   act(u"2026-11-24"_s, u"cut"_s, 4, u"note-stored"_s, u"root (kim)"_s, {}, u"'앞의\n글'"_s) +
                   u"INSERT INTO ca_log (log_id, log_at, log_kind) SELECT a.n * 1000 + b.n * 100 + c.n * 10 + d.n, "
                   "'2026-11-25T', 'searched' FROM %1 a, %1 b, %1 c, %1 d;"_s.arg(many));

        QCOMPARE(Run({u"history"_s}), 1);
        QCOMPARE(m_output.count(u"소견서 검색"_s), 10'000);
        QVERIFY2(m_output.contains(u"10004건\n[이상] 기록 2건이 빠졌습니다"_s), qPrintable(m_output.right(500)));
        QCOMPARE(Run({u"history"_s, u"1234"_s, u"--from=20261124"_s, u"--to=20261124"_s, u"--csv"_s}), 1);
        const QStringList lines = m_output.split(u'\n');
        QVERIFY2(lines.size() == 5 && lines[1].contains(u",lee,"_s) && lines[1].contains(u",\"'=1+1, \"\"x\"\"\","_s) &&
                     lines[2].endsWith(u",\"앞의"_s) && lines[3].startsWith(u"글\","_s),
                 qPrintable(m_output));
        QCOMPARE(
            Run({u"history"_s, u"--user=kim"_s, u"--kind=note-stored,deleted"_s, u"--day=20261124"_s, u"--json"_s}), 1);
        const QJsonObject entry = QJsonDocument::fromJson(m_output.toUtf8()).object();
        QCOMPARE(entry.value(u"before"_s).toString(), u"앞의\n글"_s);
        QCOMPARE(Run({u"notes"_s, u"1234"_s}), 0);
        QVERIFY2(m_output.endsWith(u"앞의 글:\n    앞의\n    글\n"_s), qPrintable(m_output));
        for (const QString& wrong : {u"--kind=none"_s, u"--day=2026"_s})
            QCOMPARE(Run({u"history"_s, wrong}), 2);

        const QString count = u"SELECT COUNT(*) AS v FROM ca_log WHERE log_run = 'old'"_s;
        QCOMPARE(Run({u"retire-log"_s, QString::number(year - 2), u"--yes"_s}), 1);
        QCOMPARE(Run({u"retire-log"_s, QString::number(year - 3)}), 0);
        QCOMPARE(m_box->Value(count), u"2"_s);
        QCOMPARE(Run({u"retire-log"_s, QString::number(year - 3), u"--yes"_s}), 0);
        QCOMPARE(m_box->Value(count), u"1"_s);
        QCOMPARE(Run({u"history"_s, u"--to=%1"_s.arg(year - 2) + u"0101"_s}), 0);
        if (driver == u"QSQLITE"_s) {
            for (const QString& statement :
                 {u"DELETE FROM ca_log"_s, u"UPDATE ca_log SET log_user = ''"_s,
                  u"REPLACE INTO ca_log (log_id, log_at, log_kind) VALUES ('old-2', '', '')"_s}) {
                QString fault;
                try {
                    Connection->Execute(statement);
                } catch (const PlatformError& error) {
                    fault = error.Text();
                }
                QVERIFY(fault.contains(u"only added"_s) || statement.startsWith(u"REPLACE"_s));
            }
            QCOMPARE(m_box->Value(u"SELECT log_user || COUNT(*) AS v FROM ca_log WHERE log_run = 'old'"_s), u"kim1"_s);
        }
    }

    void DeletedPicturesGoAfterTenFullYears()
    {
        Make(u"QSQLITE"_s);
        const int year = QDate::currentDate().year();
        const auto path = [this](int of, const QString& name = u"00001234%1.jpg"_s) {
            const QString folder = YearFolder(m_box->Root(), QString::number(of));
            MakeFolder(SectionFolder(folder, Stomach));
            MakeFolder(LogFolder(folder, Stomach));
            return LogFolder(folder, Stomach) + name.arg(QString::number(of) + u"0101001"_s);
        };
        const QString old = path(year - 11);
        const QString young = path(year - 10);
        const QString original = path(year - 11, u"original-00001234%1"_s).chopped(3) + u"-a1.jpg"_s;
        for (const QString& file : {old, young, original, path(year - 11, u"notes%1.txt"_s)})
            WriteWholeFile(file, "x");
        Files().SetFileNote(old, IdentityNote, "a1");
        QCOMPARE(Run({u"retire-deleted"_s, QString::number(year - 10), u"--yes"_s}), 1);
        QCOMPARE(Run({u"retire-deleted"_s, QString::number(year - 11)}), 0);
        QVERIFY(FileExists(old) && FileExists(original));
        QCOMPARE(Run({u"retire-deleted"_s, QString::number(year - 11), u"--yes"_s}), 0);
        QVERIFY(!FileExists(old) && !FileExists(original) && FileExists(young) &&
                FileExists(path(year - 11, u"notes%1.txt"_s)));
    }

    void APatientIsRemovedWhole_data()
    {
        Columns<QString, QString, bool>("driver", "hindrance", "isRemoved");
        QTest::newRow("SQLite") << u"QSQLITE"_s << QString() << true;
        QTest::newRow("MariaDB") << u"QMARIADB"_s << QString() << true;
        QTest::newRow("typed wrongly") << u"QSQLITE"_s << u"typo"_s << false;
        QTest::newRow("nobody sits there") << u"QSQLITE"_s << u"nobody"_s << false;
        QTest::newRow("being filed") << u"QSQLITE"_s << u"claim"_s << false;
        QTest::newRow("waits for a living station") << u"QSQLITE"_s << u"journal"_s << false;
    }

    void APatientIsRemovedWhole()
    {
        QFETCH3(QString, driver, QString, hindrance, bool, isRemoved);
        Make(driver);
        InstallChecks(driver != u"QSQLITE"_s);
        const QString spool = LocalFolder() + u"Spool-0123.jpg"_s;
        const QString journal =
            LocalFolder() + u"Pictures-%1.journal"_s.arg(hindrance == u"journal" ? Files().ProcessMark() : DeadMark());
        PictureRecord others{.id = u"0456"_s, .visit = CurrentVisit(), .state = PictureState::Local};
        others.visit.chart = u"00009999"_s;
        WriteWholeFile(spool, "x");
        UseService<LocalDatabases>().Open(journal)->Run(
            journal_rows::Tables() +
            QStringList{journal_rows::Write({.id = u"0123"_s, .visit = CurrentVisit(), .state = PictureState::Local}),
                        journal_rows::Write(others)});
        SenderQueue().Add({PacsLine::Of(PacsLine::Send, CurrentVisit(), 1)});
        m_box->Run(u"INSERT INTO ca_uid (uid_chart, uid_ymd, uid_etc) VALUES ('00001234', '20261124', '위내시경');"
                   "INSERT INTO ca_log (log_id, log_at, log_kind, log_chart) VALUES ('1', '', 'filed', '00001234');"
                   "INSERT INTO cap VALUES ('00009999', '01', '20261124', 'A', '위내시경', 1, '');"_s);
        const QString theirs = SectionFolder(VisitContext.CaptureDir, Stomach) + u"0000999920261124001.jpg"_s;
        const QString deleted = CurrentVisit().DeletedPicturePath(9);
        const QString movie = MovieFolder(VisitContext.CaptureDir) + u"0000123420261124001.avi"_s;
        const QString original = originals::PathFor(CurrentVisit(), u"a1"_s);
        MakeFolder(CurrentVisit().LogFolder());
        MakeFolder(MovieFolder(VisitContext.CaptureDir));
        for (const QString& file : {theirs, deleted, movie, original})
            WriteWholeFile(file, "x");
        if (hindrance == u"claim")
            NumberClaim::Take(CurrentVisit(), 7, u"0789"_s)->Keep();
        Surroundings.askSecret = [hindrance, count = 0](const QString&) mutable {
            return hindrance == u"nobody" ? QString() : hindrance == u"typo" && ++count == 2 ? u"1235"_s : u"1234"_s;
        };
        TerminalOutput out(stdout);
        const QString rows = u"SELECT (SELECT COUNT(*) FROM cap) * 100 + (SELECT COUNT(*) FROM ca) * 10 + "
                             "(SELECT COUNT(*) FROM ca_uid) AS v"_s;
        QCOMPARE(HandlePatient(Chart, {u"--list"_s}, out), int(AllWell));
        if (isRemoved) {
            // A file that stays keeps its rows.
            m_box->FaultyFiles().FailAt(2, false, FailingFiles::Deletes);
            QCOMPARE(HandlePatient(Chart, {u"--remove"_s}, out), int(Found));
            QCOMPARE(m_box->Value(rows), u"411"_s);
        }
        QCOMPARE(HandlePatient(Chart, {u"--remove"_s}, out), isRemoved ? int(AllWell) : int(Found));
        QCOMPARE(m_box->Value(rows), isRemoved ? u"100"_s : u"411"_s);
        QCOMPARE(m_box->Value(u"SELECT COUNT(*) AS v FROM ca_log"_s), u"1"_s);
        QCOMPARE(UseService<LocalDatabases>().OpenToRead(journal)->Rows(u"SELECT id FROM picture"_s).size(),
                 isRemoved ? 1 : 2);
        QCOMPARE(SenderQueue().Look().held, isRemoved ? 0 : 1);
        for (const QString& file : {spool, deleted, movie, original, m_box->PicturePath(Day, Stomach, 1)})
            QCOMPARE(FileExists(file), !isRemoved);
        QVERIFY(FileExists(theirs));
    }

private:
    /// A visit of today with three pictures and a note.
    void Make(const QString& driver)
    {
        m_box = std::make_unique<StationInABox>(driver);
        for (const int number : {1, 2, 3})
            m_box->AddPicture(Day, Stomach, number, u"의사의 글"_s);
        const DatabaseSettings& database = m_box->Database().Settings();
        WriteWholeFile(m_box->Desk().ProgramFolder() + u"/Setup.ini"_s,
                       u"[Database]\nDriver=%1\nName=%2\nSocket=%3\nUser=%4\n[Client]\nCaptureRoot=%5\n"
                       "EtcList=위내시경\n"_s.arg(driver, database.name, database.socket, database.user, m_box->Root())
                           .toUtf8());
    }

    static void InstallChecks(bool isServer)
    {
        struct Checks final : OutsideChecks
        {
            Setup LookAtSetup() override { return {{}, true, ClientSetup, {}, isServer, Connection}; }
            ConnectionPointer OpenForUpkeep(const QString&, const QString&, const QString&) override
            {
                return Connection;
            }
            CheckLines LookAtCaptureRoot(const ClientSetupRecord&) override { return {}; }
            CheckLines LookAtMachine(const ClientSetupRecord&) override { return {}; }
            bool isServer = false;
        };
        auto checks = std::make_unique<Checks>();
        checks->isServer = isServer;
        InstallService<OutsideChecks>(std::move(checks));
    }

    /// Gives the program's exit code; what it says is in `m_output`.
    int Run(const QStringList& arguments)
    {
        QProcess program;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(u"CAPTURE_STATION_SETUP"_s, m_box->Desk().ProgramFolder() + u"/Setup.ini"_s);
        environment.insert(u"CAPTURE_STATION_FOLDER"_s, m_box->Desk().ProgramFolder());
        program.setProcessEnvironment(environment);
        program.start(u"" STATION_ADMIN_PROGRAM ""_s, arguments);
        program.waitForFinished();
        m_output = QString::fromUtf8(program.readAllStandardOutput());
        return program.exitStatus() == QProcess::NormalExit ? program.exitCode() : -1;
    }

    std::unique_ptr<StationInABox> m_box;
    QString m_output;
};

QTEST_MAIN(HistoryTest)
#include "HistoryTest.moc"
