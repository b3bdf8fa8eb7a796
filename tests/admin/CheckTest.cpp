#include "contracts/OutsideChecks.h"
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

    /// What is wrong, one line each.
    QStringList Wrong() const
    {
        QStringList lines = text.split(u'\n');
        lines.removeIf([](const QString& line) { return !line.startsWith(u"[이상]"_s); });
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
    void initTestCase() { QVERIFY2(m_server.Start(), qPrintable(m_server.Fault())); }

    void init()
    {
        m_folder = std::make_unique<QTemporaryDir>();
        m_clinic = std::make_unique<ClinicDatabase>(u"QMARIADB"_s, &m_server);
        QVERIFY2(m_clinic->Make({u"ca"_s, u"cap"_s, u"caso"_s, u"endo"_s, u"clinic"_s}), qPrintable(m_clinic->Fault()));
        QFile file(QStringLiteral(STATION_SOURCE_FOLDER "/sql/mariadb/grants.sql"));
        QVERIFY(file.open(QFile::ReadOnly));
        QString grants = QString::fromUtf8(file.readAll());
        grants.replace(u"clinic."_s, m_clinic->Settings().name + u'.');
        QVERIFY2(m_server.Run(grants), qPrintable(m_server.Fault()));
        QVERIFY(QDir(m_folder->path()).mkpath(u"capture/"_s));
        WriteSetup({});
    }

    void NothingIsWrong()
    {
        const Answer answer = Check();
        QVERIFY2(answer.Wrong().isEmpty() && answer.exitCode == 0, qPrintable(answer.text));
        QVERIFY(answer.text.contains(u"[정상] 시계"_s) && answer.text.contains(u"[정상] 테이블 caso"_s));
        const Answer without = Check({QStringLiteral(SHUT_IN_ATTEMPTS), u"without-landlock"_s});
        QVERIFY2(without.exitCode == 0 && without.text.contains(u"[참고] 그림 읽기 격리: 커널의 Landlock"_s),
                 qPrintable(without.text));
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
        inSetup("secret open to all", u"others"_s, u"모든 사용자가 읽을 수 있습니다"_s);
    }

    void SaysWhatIsWrong()
    {
        QFETCH3(QString, statements, QString, setup, QString, expected);
        if (!statements.isEmpty())
            QVERIFY2(
                m_clinic->Run(statements.contains(u"%1"_s) ? statements.arg(m_clinic->Settings().name) : statements),
                qPrintable(m_clinic->Fault()));
        if (setup == u"others")
            QCOMPARE(chmod(QFile::encodeName(Setup()).constData(), 0644), 0);
        else
            WriteSetup(setup);
        const Answer answer = Check();
        QCOMPARE(answer.exitCode, 1);
        QCOMPARE(answer.Wrong().size(), 1);
        QVERIFY2(answer.Wrong().first().contains(expected), qPrintable(answer.Wrong().first()));
        QVERIFY2(answer.Wrong().first().contains(u" → "_s), qPrintable(answer.Wrong().first()));
    }

private:
    QString Setup() const { return m_folder->filePath(u"Setup.ini"_s); }

    /// With one line in the place of the one with its key, or added to [Client].
    void WriteSetup(const QString& line)
    {
        QStringList lines{u"[Database]"_s,
                          u"Driver=QMARIADB"_s,
                          u"Socket=%1"_s.arg(m_server.Socket()),
                          u"Name=%1"_s.arg(m_clinic->Settings().name),
                          u"User=station"_s,
                          u"Password=password"_s,
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
        QCOMPARE(chmod(QFile::encodeName(Setup()).constData(), 0600), 0);
    }

    /// By a program of its own, if there is one.
    Answer Check(QStringList command = {})
    {
        QProcess program;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(u"CAPTURE_STATION_SETUP"_s, Setup());
        environment.insert(u"CAPTURE_STATION_FOLDER"_s, m_folder->path());
        environment.remove(u"QT_IM_MODULE"_s);
        program.setProcessEnvironment(environment);
        command += {QStringLiteral(STATION_ADMIN_PROGRAM), u"check"_s};
        const QString first = command.takeFirst();
        program.start(first, command);
        program.waitForFinished(60'000);
        return {QString::fromUtf8(program.readAllStandardOutput()), program.exitCode()};
    }

    PrivateMariaDb m_server;
    std::unique_ptr<ClinicDatabase> m_clinic;
    std::unique_ptr<QTemporaryDir> m_folder;
};

QTEST_GUILESS_MAIN(CheckTest)
#include "CheckTest.moc"
