#include "contracts/OutsideChecks.h"
#include "contracts/PlatformError.h"
#include "support/ClinicDatabase.h"
#include "support/testing.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QProcessEnvironment>

#include <sys/stat.h>

using namespace Qt::StringLiterals;

namespace {

struct Answer
{
    QString text;
    int exitCode = -1;

    /// What is wrong, one line each; or what has another verdict.
    QStringList Lines(const QString& verdict = u"[이상]"_s) const
    {
        QStringList lines = text.split(u'\n');
        lines.removeIf([&verdict](const QString& line) { return !line.startsWith(verdict); });
        return lines;
    }
};

} // namespace

/// `capture-station-admin check` beside a clinic on its own server, with the account that the administrator's file of
/// grants makes.
class CheckTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY2(m_server.Start(), qPrintable(m_server.Fault()));
        QFile file(QStringLiteral(STATION_SOURCE_FOLDER "/sql/mariadb/grants.sql"));
        QVERIFY(file.open(QFile::ReadOnly));
        m_grants = QString::fromUtf8(file.readAll());
        // Whoever sets no password gets no account.
        QVERIFY(!m_server.Run(m_grants));
        QVERIFY(!m_server.Run(u"SHOW GRANTS FOR 'station'@'%'"_s));
        m_grants.replace(u"PASSWORD_OF_THE_STATION"_s, u"'%1'"_s.arg(Password));
    }

    void init()
    {
        m_folder = std::make_unique<QTemporaryDir>();
        m_clinic = std::make_unique<ClinicDatabase>(u"QMARIADB"_s, &m_server);
        QVERIFY2(m_clinic->Make({u"ca"_s, u"cap"_s, u"caso"_s, u"endo"_s, u"clinic"_s}), qPrintable(m_clinic->Fault()));
        QString grants = m_grants;
        grants.replace(u"`clinic`"_s, m_clinic->Settings().name);
        QVERIFY2(m_server.Run(grants), qPrintable(m_server.Fault()));
        QVERIFY(QDir(m_folder->path()).mkpath(u"capture/"_s));
        SetRights(u"capture"_s, 02770);
        WriteSetup({});
    }

    void NothingIsWrong()
    {
        const Answer answer = Check();
        QVERIFY2(answer.Lines().isEmpty() && answer.exitCode == 0, qPrintable(answer.text));
        QCOMPARE(answer.Lines(u"[참고] 캡쳐 폴더"_s), QStringList());
        QVERIFY(answer.text.contains(u"[정상] 시계"_s) && answer.text.contains(u"[정상] 테이블 caso"_s));
        QCOMPARE(
            QDir(m_folder->filePath(u"capture"_s)).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
            QStringList());
    }

    void SaysWhatIsWrong_data()
    {
        Columns<QString, QString, QString>("statements", "setup", "expected");
        const auto row = [](const char* name, const QString& statements, const QString& expected) {
            QTest::newRow(name) << statements << QString() << expected;
        };
        row("table missing", u"DROP TABLE so"_s, u"테이블 so: 없거나"_s);
        row("column of the clinic missing", u"ALTER TABLE wj DROP COLUMN wj_suname"_s, u"wj_suname"_s);
        row("column added to the station's", u"ALTER TABLE ca ADD COLUMN ca_new INT"_s, u"테이블 ca: 칸의 수나 순서"_s);
        row("note that would be cut", u"ALTER TABLE ca MODIFY ca_chamgo VARCHAR(255)"_s, u"ca_chamgo(255자"_s);
        row("section that would be cut", u"ALTER TABLE cap MODIFY cap_etc VARCHAR(20) NOT NULL"_s, u"cap_etc(20자"_s);
        row("Korean lost", u"ALTER TABLE ca MODIFY ca_chamgo MEDIUMTEXT CHARACTER SET latin1"_s, u"한글이 ?로"_s);
        row("key of the list missing", u"ALTER TABLE caso DROP KEY caso_list_ymd"_s, u"steps/001"_s);
        row("primary key missing", u"ALTER TABLE cap DROP PRIMARY KEY"_s, u"테이블 cap: 키가 없습니다"_s);
        row("right missing", u"REVOKE DELETE ON %1.cap FROM station@'%'"_s, u"테이블 cap: 권한이 없습니다: DELETE"_s);
        row("right to mark missing", u"REVOKE UPDATE ON %1.endo FROM station@'%'"_s, u"테이블 endo: 권한이 없습니다"_s);
        const auto inSetup = [](const char* name, const QString& setup, const QString& expected) {
            QTest::newRow(name) << QString() << setup << expected;
        };
        inSetup("wrong password", u"Password=wrong"_s, u"사용자나 암호가 맞지 않습니다"_s);
        inSetup("root missing", u"CaptureRoot=none/"_s, u"캡쳐 폴더: 없습니다"_s);
        inSetup("not mounted", u"CaptureMount=1"_s, u"공유가 연결되어 있지 않습니다"_s);
        inSetup("section outside the root", u"EtcList=..,위내시경"_s, u"검사 이름으로 쓸 수 없습니다"_s);
        inSetup("server for pictures away", u"Image=cd.iso\n[Pacs]\nHost=127.0.0.1\nPort=1"_s,
                u"PACS 서버: 127.0.0.1:1"_s);
        inSetup("secret open to all", u"Setup.ini 644"_s, u"모든 사용자가 읽을 수 있습니다"_s);
        inSetup("pictures open to all", u"capture 2775"_s, u"[참고] 캡쳐 폴더: 이 컴퓨터의 모든 사용자가"_s);
    }

    void SaysWhatIsWrong()
    {
        QFETCH3(QString, statements, QString, setup, QString, expected);
        if (!statements.isEmpty())
            QVERIFY2(
                m_clinic->Run(statements.contains(u"%1"_s) ? statements.arg(m_clinic->Settings().name) : statements),
                qPrintable(m_clinic->Fault()));
        const QStringList rights = setup.split(u' ');
        if (setup.contains(u'=') || setup.isEmpty())
            WriteSetup(setup);
        else
            SetRights(rights[0], rights[1].toUInt(nullptr, 8));
        const Answer answer = Check();
        const bool isRemark = expected.startsWith(u'[');
        QCOMPARE(answer.exitCode, isRemark ? 0 : 1);
        QCOMPARE(answer.Lines().size(), isRemark ? 0 : 1);
        const QStringList found = answer.Lines(isRemark ? expected : u"[이상]"_s);
        QCOMPARE(found.size(), 1);
        QVERIFY2(found.first().contains(expected), qPrintable(found.first()));
        QVERIFY2(found.first().contains(u" → "_s), qPrintable(found.first()));
    }

    void TheAccountMayDoWhatTheStationDoesAlone_data()
    {
        Columns<QString, bool>("statement", "isAllowed");
        const auto row = [](const QString& statement, bool isAllowed) {
            QTest::addRow("%s", qPrintable(statement.left(60))) << statement << isAllowed;
        };
        row(u"SELECT COUNT(*) FROM ca, cap, caso, yk, wj, bh, jh, pt, doctor, so"_s, true);
        row(u"REPLACE INTO cap SELECT * FROM cap"_s, true);
        row(u"UPDATE yk SET yk_check = '1' WHERE yk_chart = '1'"_s, true);
        row(u"CREATE TABLE IF NOT EXISTS endo (endo_check VARCHAR(1))"_s, true); // it is missing
        row(u"CREATE TABLE own (x INT)"_s, false);
        row(u"SELECT * FROM salary"_s, false);
        row(u"UPDATE wj SET wj_suname = ''"_s, false);
        row(u"INSERT INTO so (so_code) VALUES ('1')"_s, false);
        row(u"DELETE FROM yk"_s, false);
        row(u"DROP TABLE cap"_s, false);
        row(u"ALTER TABLE ca ADD COLUMN x INT"_s, false);
        row(u"SELECT * FROM mysql.global_priv"_s, false);
        row(u"SELECT 1 INTO OUTFILE '/tmp/station'"_s, false);
    }

    void TheAccountMayDoWhatTheStationDoesAlone()
    {
        QFETCH2(QString, statement, bool, isAllowed);
        QVERIFY(m_clinic->Run(u"DROP TABLE endo; CREATE TABLE salary (x INT);"_s));
        DatabaseSettings settings = m_clinic->Settings();
        settings.user = u"station"_s;
        settings.password = Password;
        QString fault;
        try {
            OpenConnection(settings)->Execute(statement);
        } catch (const PlatformError& error) {
            fault = error.Text();
        }
        QVERIFY2(isAllowed ? fault.isEmpty() : fault.contains(u"denied"_s), qPrintable(fault));
    }

private:
    void SetRights(const QString& name, mode_t rights)
    {
        QCOMPARE(chmod(QFile::encodeName(m_folder->filePath(name)).constData(), rights), 0);
    }
    QString Setup() const { return m_folder->filePath(u"Setup.ini"_s); }

    /// With one line in the place of the one with its key, or added to [Client].
    void WriteSetup(const QString& line)
    {
        QStringList lines{u"[Database]"_s,
                          u"Driver=QMARIADB"_s,
                          u"Socket=%1"_s.arg(m_server.Socket()),
                          u"Name=%1"_s.arg(m_clinic->Settings().name),
                          u"User=station"_s,
                          u"Password=%1"_s.arg(Password),
                          u"[Client]"_s,
                          u"CaptureRoot=capture/"_s,
                          u"EtcList=위내시경,대장내시경"_s,
                          u"[Video]"_s,
                          u"TestPicture=1"_s,
                          u"[Printer]"_s,
                          u"Folder=printed"_s,
                          u"[Burner]"_s,
                          u"Image=cd.iso"_s};
        if (!line.isEmpty()) {
            const QString key = line.left(line.indexOf(u'=') + 1);
            const auto old = std::ranges::find_if(lines, [&key](const QString& each) { return each.startsWith(key); });
            if (old != lines.end())
                *old = line;
            else
                lines.insert(lines.indexOf(u"[Client]"_s) + 1, line);
        }
        QFile file(Setup());
        QVERIFY(file.open(QFile::WriteOnly) && file.write(lines.join(u'\n').toUtf8()) > 0);
        file.close();
        SetRights(u"Setup.ini"_s, 0600);
    }

    Answer Check()
    {
        QProcess program;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(u"CAPTURE_STATION_SETUP"_s, Setup());
        environment.insert(u"CAPTURE_STATION_FOLDER"_s, m_folder->path());
        environment.remove(u"QT_IM_MODULE"_s);
        program.setProcessEnvironment(environment);
        program.start(QStringLiteral(STATION_ADMIN_PROGRAM), {u"check"_s});
        program.waitForFinished(60'000);
        return {QString::fromUtf8(program.readAllStandardOutput()), program.exitCode()};
    }

    const QString Password = u"9b1c57"_s;

    PrivateMariaDb m_server;
    QString m_grants;
    std::unique_ptr<ClinicDatabase> m_clinic;
    std::unique_ptr<QTemporaryDir> m_folder;
};

QTEST_GUILESS_MAIN(CheckTest)
#include "CheckTest.moc"
