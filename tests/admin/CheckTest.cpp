#include "contracts/OutsideChecks.h"
#include "contracts/PlatformError.h"
#include "support/ClinicDatabase.h"
#include "support/ScriptedDesktop.h"
#include "support/testing.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QProcessEnvironment>

#include <sys/stat.h>

using namespace Qt::StringLiterals;

namespace {

struct Report
{
    QString text;
    int exitCode = -1;

    /// What is wrong, or so to be told, one line each.
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
        // Statements are waited for, on a machine that has much to do.
        ScriptedDesktop::Install();
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
        QVERIFY2(m_clinic->Make({u"ca"_s, u"cap"_s, u"ca_uid"_s, u"ca_study"_s, u"ca_log"_s, u"ca_sum"_s, u"caso"_s,
                                 u"endo"_s, u"clinic"_s}),
                 qPrintable(m_clinic->Fault()));
        QString grants = m_grants;
        grants.replace(u"`clinic`"_s, m_clinic->Settings().name);
        QVERIFY2(m_server.Run(grants + u"SET GLOBAL max_allowed_packet = DEFAULT, sql_mode = DEFAULT;"_s),
                 qPrintable(m_server.Fault()));
        QVERIFY(QDir(m_folder->path()).mkpath(u"capture/"_s));
        SetRights(u"capture"_s, 02770);
        WriteSetup({});
    }

    void NothingIsWrong()
    {
        const Report answer = Check(m_folder->path());
        QVERIFY2(answer.Lines().isEmpty() && answer.exitCode == 0, qPrintable(answer.text));
        QCOMPARE(answer.Lines(u"[참고] 캡쳐 폴더"_s), QStringList());
        QVERIFY(answer.text.contains(u"[정상] 시계"_s) && answer.text.contains(u"[정상] 테이블 caso"_s));
        const Report without =
            Run({u"check"_s}, m_folder->path(), {QStringLiteral(SHUT_IN_ATTEMPTS), u"without-landlock"_s});
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
        row("Korean in no set", u"ALTER TABLE caso MODIFY caso_sogyon LONGBLOB"_s, u"caso_sogyon(longblob)"_s);
        row("number that would be cut", u"ALTER TABLE cap MODIFY cap_no TINYINT NOT NULL"_s, u"cap_no(tinyint"_s);
        row("number as text", u"ALTER TABLE cap MODIFY cap_no VARCHAR(5) NOT NULL"_s, u"cap_no(varchar(5))"_s);
        row("chart as a number", u"ALTER TABLE ca MODIFY ca_chart INT NOT NULL"_s, u"담지 못하는 칸입니다: ca_chart"_s);
        row("key that isn't unique", u"ALTER TABLE ca DROP PRIMARY KEY, ADD KEY (ca_chart, ca_ymd, ca_gubun, ca_etc)"_s,
            u"테이블 ca: 키가 없습니다"_s);
        row("key too narrow", u"ALTER TABLE ca ADD UNIQUE KEY a_visit (ca_chart, ca_ymd)"_s, u"a_visit"_s);
        row("packet too small", u"SET GLOBAL max_allowed_packet = 65536"_s, u"max_allowed_packet: 65536"_s);
        row("letters lost", u"ALTER TABLE ca MODIFY ca_chamgo MEDIUMTEXT CHARACTER SET utf8mb3"_s,
            u"[참고] 테이블 ca: 문자 집합에 없는 글자는 ?로 저장됩니다: ca_chamgo(utf8mb3)"_s);
        row("all rights", u"GRANT ALL ON %1.* TO station@'%'; REVOKE DELETE ON %1.cap FROM station@'%'"_s,
            u"접근 기록을 바꾸거나 지울 수 있습니다: UPDATE, DELETE"_s);
        row("record of access missing", u"DROP TABLE ca_log"_s, u"[참고] 테이블 ca_log: 없거나"_s);
        row("Korean lost", u"ALTER TABLE ca MODIFY ca_chamgo MEDIUMTEXT CHARACTER SET latin1"_s, u"한글이 ?로"_s);
        row("key of the list missing", u"ALTER TABLE caso DROP KEY caso_list_ymd"_s, u"키가 없습니다: caso_ymd,"_s);
        row("primary key missing", u"ALTER TABLE cap DROP PRIMARY KEY"_s, u"테이블 cap: 키가 없습니다"_s);
        row("right missing", u"REVOKE DELETE ON %1.cap FROM station@'%'"_s, u"테이블 cap: 권한이 없습니다: DELETE"_s);
        row("right to mark missing", u"REVOKE UPDATE ON %1.endo FROM station@'%'"_s, u"테이블 endo: 권한이 없습니다"_s);
        row("identities not remembered", u"DROP TABLE ca_uid"_s, u"[참고] 테이블 ca_uid: 없거나"_s);
        row("identities out of reach", u"REVOKE INSERT ON %1.ca_uid FROM station@'%'"_s,
            u"[참고] 테이블 ca_uid: 권한이 없습니다: INSERT"_s);
        row("identity that would be cut", u"ALTER TABLE ca_uid MODIFY uid_study VARCHAR(32) NOT NULL"_s,
            u"uid_study(32자"_s);
        const auto inSetup = [](const char* name, const QString& setup, const QString& expected) {
            QTest::newRow(name) << QString() << setup << expected;
        };
        inSetup("wrong password", u"Password=wrong"_s, u"사용자나 암호가 맞지 않습니다"_s);
        inSetup("root missing", u"CaptureRoot=none/"_s, u"캡쳐 폴더: 없습니다"_s);
        inSetup("not mounted", u"CaptureMount=1"_s, u"공유가 연결되어 있지 않습니다"_s);
        inSetup("section outside the root", u"EtcList=..,위내시경"_s, u"검사 이름으로 쓸 수 없습니다"_s);
        inSetup("server for pictures away, nothing to tell the clinic by",
                u"Image=cd.iso\n[Pacs]\nHost=127.0.0.1\nPort=1"_s,
                u"PACS 서버: 127.0.0.1:1|[Pacs] Institution이나 UidRoot를"_s + MissingPrograms());
        inSetup("no section", u"EtcList="_s, u"EtcList가 비어"_s);
        inSetup("section twice", u"EtcList=위내시경,대장내시경, 위내시경"_s, u"\"위내시경\"이(가) 두 번"_s);
        inSetup("key misspelt", u"CheckTabel=1"_s, u"[Client] CheckTabel은(는) 모르는 키"_s);
        inSetup("key twice", u"CommPort=\ncommport=2"_s, u"첫째만 읽습니다: [Client] commport"_s);
        inSetup("section of the file twice", u"Image=cd.iso\n[client]"_s, u"첫째만 읽습니다: [client]"_s);
        inSetup("section of the file misspelt", u"Image=cd.iso\n[Pasc]\nHost=a"_s, u"[Pasc]은(는) 모르는 구역"_s);
        inSetup("no entry", u"CommPort 2\nCommPort="_s, u"첫째만 읽습니다: CommPort 2"_s);
        inSetup("foot switch away", u"CommPort=99"_s, u"발판 스위치: /dev/ttyS98"_s);
        inSetup("program folder away", u"program folder"_s, u"프로그램 폴더: 파일을 저장할 수 없습니다"_s);
        inSetup("setup open to writers", u"writers"_s, u"고칠 수 있습니다"_s);
        inSetup("secret open to all", u"others"_s, u"모든 사용자가 읽을 수 있습니다"_s);
        inSetup("pictures open to all", u"open pictures"_s, u"[참고] 캡쳐 폴더: 이 컴퓨터의 모든 사용자가"_s);
    }

    void SaysWhatIsWrong()
    {
        QFETCH3(QString, statements, QString, setup, QString, expected);
        if (!statements.isEmpty())
            QVERIFY2(m_clinic->Run(QString(statements).replace(u"%1"_s, m_clinic->Settings().name)),
                     qPrintable(m_clinic->Fault()));
        QString programFolder = m_folder->path();
        if (setup == u"others" || setup == u"writers")
            SetRights(u"Setup.ini"_s, setup == u"others" ? 0644 : 0602);
        else if (setup == u"open pictures")
            SetRights(u"capture"_s, 02775);
        else if (setup == u"program folder")
            programFolder = u"/proc/none"_s;
        else
            WriteSetup(setup);
        const Report answer = Check(programFolder);
        const bool isWrong = !expected.isEmpty() && !expected.startsWith(u"[참고]"_s);
        const QStringList all = expected.split(u'|', Qt::SkipEmptyParts);
        QVERIFY2(answer.exitCode == (isWrong ? 1 : 0) && answer.Lines().size() == (isWrong ? all.size() : 0),
                 qPrintable(answer.text));
        bool isUpgrade = false;
        for (const QString& each : all) {
            const QStringList lines = answer.Lines(isWrong ? u"[이상]"_s : u"[참고]"_s).filter(each);
            QVERIFY2(lines.size() == 1 && lines.first().contains(u" → "_s), qPrintable(answer.text));
            isUpgrade = lines.first().contains(u"upgrade-tables"_s);
        }
        if (!isUpgrade)
            return;
        Upgrade({u"--yes"_s, u"--utf8mb4"_s});
        const Report after = Check(programFolder);
        QVERIFY2(after.exitCode == 0 && after.Lines(u"[참고]"_s).filter(u"테이블"_s).isEmpty(), qPrintable(after.text));
    }

    void UpgradeKeepsEveryText_data()
    {
        Columns<QString, QString, QString, QString, QString, QString>("engine", "mode", "type", "bytes", "option",
                                                                      "expected");
        const QString euckr = u"C0A7B3BBBDC3B0E6208C63"_s;
        const QString utf8 = u"EC9C84EB82B4EC8B9CEAB2BD20EB98A0"_s;
        const QString text = u"위내시경 똠"_s;
        const QString latin1 = u"VARCHAR(%1) CHARACTER SET latin1"_s;
        const QList<QStringList> cases{
            {u"latin1"_s, latin1, u"706C61696E"_s, {}, u"plain"_s},
            {u"latin1, its own letters"_s, latin1, u"4DE96E69E87265"_s, {}, u"Ménière"_s},
            {u"latin1 of EUC-KR, not said"_s, latin1, euckr, {}, {}},
            {u"latin1 of EUC-KR"_s, latin1, euckr, u"--bytes=euckr"_s, text},
            {u"latin1 of EUC-KR, said wrongly"_s, latin1, euckr, u"--bytes=utf8"_s, {}},
            {u"latin1 of UTF-8"_s, latin1, utf8, u"--bytes=utf8"_s, text},
            {u"bytes, as a stop on the way leaves them"_s, u"VARBINARY(%1)"_s, euckr, u"--bytes=euckr"_s, text},
            {u"euckr"_s, u"VARCHAR(%1) CHARACTER SET euckr"_s, euckr, {}, text},
            {u"euckr to all letters"_s, u"VARCHAR(%1) CHARACTER SET euckr"_s, euckr, u"--utf8mb4"_s, text},
            {u"utf8mb3"_s, u"VARCHAR(%1) CHARACTER SET utf8mb3"_s, utf8, {}, text},
            {u"utf8mb3 to all letters"_s, u"CHAR(%1) CHARACTER SET utf8mb3"_s, utf8, u"--utf8mb4"_s, text},
            {u"utf8mb4"_s, u"VARCHAR(%1) CHARACTER SET utf8mb4"_s, utf8 + u"F09F8FA5"_s, {}, text + u"🏥"_s},
        };
        for (const QString& engine : {u"InnoDB"_s, u"MyISAM"_s}) {
            for (const QString& mode : {u""_s, u"STRICT_ALL_TABLES"_s}) {
                for (const QStringList& each : cases)
                    QTest::addRow("%s, %s %s", qPrintable(each[0]), qPrintable(engine), qPrintable(mode))
                        << engine << mode << each[1] << each[2] << each[3] << each[4];
            }
        }
    }

    void UpgradeKeepsEveryText()
    {
        QFETCH6(QString, engine, QString, mode, QString, type, QString, bytes, QString, option, QString, expected);
        QVERIFY2(
            m_clinic->Run(
                u"SET GLOBAL sql_mode = '%1'; DROP TABLE ca; CREATE TABLE ca (ca_chart VARCHAR(20) NOT "
                "NULL, ca_yuhyung VARCHAR(10), ca_ymd VARCHAR(8), ca_gubun VARCHAR(1), ca_etc %2 NOT NULL, "
                "ca_chamgo %3 COMMENT 'it''s', ca_extra VARCHAR(100), "
                "PRIMARY KEY (ca_chart, ca_ymd, ca_gubun, ca_etc)) ENGINE = %4 DEFAULT CHARSET latin1; "
                "INSERT INTO ca VALUES ('1', '', '20261124', 'A', x'%5', x'%5', ''), "
                "('2', '', '20261124', 'A', x'%5', NULL, '')"_s.arg(mode, type.arg(20), type.arg(200), engine, bytes)),
            qPrintable(m_clinic->Fault()));
        const QStringList options = option.isEmpty() ? QStringList() : QStringList{option};
        const QString before = u"HEX(ca_etc) = '%1' AND (ca_chart = 2 OR HEX(ca_chamgo) = '%1')"_s.arg(bytes);
        QCOMPARE(Upgrade(options).exitCode, 1);
        QVERIFY2(HoldsForAll(before), "changed without a yes");

        const Report answer = Upgrade(options + QStringList{u"--yes"_s});
        QVERIFY2(answer.exitCode == (expected.isEmpty() ? 1 : 0), qPrintable(answer.text));
        if (expected.isEmpty()) {
            QVERIFY2(HoldsForAll(before), "changed after a refusal");
            return;
        }
        QVERIFY2(HoldsForAll(u"CONVERT(ca_etc USING utf8mb4) = '%1' AND (CONVERT(ca_chamgo USING utf8mb4) = '%1' OR "
                             "(ca_chart = 2 AND ca_chamgo IS NULL))"_s.arg(expected)),
                 qPrintable(answer.text));
        const Report check = Check(m_folder->path());
        QVERIFY2(check.exitCode == 0, qPrintable(check.text));
    }

    void TheAccountMayDoWhatTheStationDoesAlone_data()
    {
        Columns<QString, bool>("statement", "isAllowed");
        const auto row = [](const QString& statement, bool isAllowed) {
            QTest::addRow("%s", qPrintable(statement.left(60))) << statement << isAllowed;
        };
        row(u"SELECT COUNT(*) FROM ca, cap, caso, yk, wj, bh, jh, pt, doctor, so"_s, true);
        row(u"REPLACE INTO cap SELECT * FROM cap"_s, true);
        row(u"INSERT INTO ca_uid (uid_chart, uid_ymd, uid_etc) SELECT '1', '2', uid_etc FROM ca_uid"_s, true);
        row(u"UPDATE ca_uid SET uid_study = ''"_s, false);
        row(u"INSERT IGNORE INTO ca_log (log_id, log_at, log_kind) VALUES ('1', '2', '3')"_s, true);
        row(u"REPLACE INTO ca_log (log_id, log_at, log_kind) VALUES ('1', '2', '3')"_s, false);
        row(u"UPDATE ca_log SET log_user = ''"_s, false);
        row(u"SELECT log_chart FROM ca_log"_s, false);
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
        bool isOfTable = false;
        try {
            OpenConnection(settings)->Execute(statement);
        } catch (const PlatformError& error) {
            fault = error.Text();
            isOfTable = dynamic_cast<const TableRefused*>(&error) != nullptr;
        }
        QVERIFY2(isAllowed ? fault.isEmpty() : fault.contains(u"denied"_s), qPrintable(fault));
        QCOMPARE(isOfTable, !isAllowed && !statement.contains(u"OUTFILE"_s));
    }

private:
    /// What is said of helpers that aren't beside the administrator's program.
    static QString MissingPrograms()
    {
        QString missing;
        const QDir folder(QFileInfo(QStringLiteral(STATION_ADMIN_PROGRAM)).path() + u"/libexec"_s);
        for (const QString& name : {u"capture-station-sender"_s, u"capture-station-dicom"_s}) {
            if (!folder.exists(name))
                missing += u"|%1 없음"_s.arg(name);
        }
        return missing;
    }

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

    /// All rows of ca.
    bool HoldsForAll(const QString& condition)
    {
        return m_clinic->Run(u"DELIMITER //\nBEGIN NOT ATOMIC IF (SELECT COUNT(*) FROM ca WHERE %1) <> 2 THEN "
                             "SIGNAL SQLSTATE '45000'; END IF; END//\n"_s.arg(condition));
    }

    /// By the administrator of the server.
    Report Upgrade(const QStringList& options)
    {
        return Run(QStringList{u"upgrade-tables"_s, u"--user=root"_s} + options, m_folder->path());
    }

    Report Check(const QString& programFolder) { return Run({u"check"_s}, programFolder); }

    /// By a program of its own, if there is one.
    Report Run(const QStringList& arguments, const QString& programFolder, QStringList command = {})
    {
        QProcess program;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(u"CAPTURE_STATION_SETUP"_s, Setup());
        environment.insert(u"CAPTURE_STATION_FOLDER"_s, programFolder);
        environment.remove(u"QT_IM_MODULE"_s);
        program.setProcessEnvironment(environment);
        command << QStringLiteral(STATION_ADMIN_PROGRAM) << arguments;
        const QString first = command.takeFirst();
        program.start(first, command);
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
