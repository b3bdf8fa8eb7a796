#include "contracts/PlatformError.h"
#include "contracts/setup_components.h"
#include "frame/components.h"
#include "platform/sql/register_sql.h"
#include "support/ClinicDatabase.h"
#include "support/PryingServer.h"
#include "support/ScriptedDesktop.h"
#include "support/testing.h"

#include <QSqlDatabase>

#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {
QString Literal(QString text)
{
    return u"'%1'"_s.arg(text.replace(u"'"_s, u"''"_s));
}

/// The operator's text when the statement fails; empty when it runs.
QString FaultOf(AdoConnection& connection, const QString& statement)
{
    try {
        connection.Execute(statement);
    } catch (const PlatformError& error) {
        return error.Text();
    }
    return {};
}

QString OpeningFaultOf(const DatabaseSettings& settings)
{
    try {
        OpenConnection(settings);
    } catch (const PlatformError& error) {
        return error.Text();
    }
    return {};
}

QStringList ColumnOf(AdoRecordset& rows, const QString& column)
{
    QStringList values;
    for (; !rows.Eof(); rows.MoveNext())
        values.append(rows.Fields(column).toString());
    return values;
}
} // namespace

class ConnectionTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        RegisterSql();
        ScriptedDesktop::Install();
        QVERIFY2(m_server.Start(), qPrintable(m_server.Fault()));
    }

    void cleanup()
    {
        m_connection.reset();
        m_clinic.reset();
    }

    void keepsTexts_data()
    {
        Columns<QString, QString>("driver", "text");
        const QList<std::pair<const char*, QString>> texts{
            {"apostrophes", u"'O''Brien' '"_s},     {"backslashes", u"C:\\캡쳐\\'\\"_s},
            {"like a comment", u"-- ; /* # */"_s},  {"line ends", u"\r\n  첫째\n둘째\t "_s},
            {"outside the first plane", u"😀 𠀀"_s}, {"10 kB of Korean", u"위 점막에 발적이 관찰됨. "_s.repeated(300)},
        };
        for (const auto& [name, text] : texts) {
            QTest::addRow("MariaDB, %s", name) << u"QMARIADB"_s << text;
            QTest::addRow("SQLite, %s", name) << u"QSQLITE"_s << text;
        }
    }

    void keepsTexts()
    {
        Begin({u"ca"_s});
        QFETCH(QString, text);
        m_connection->Execute(
            u" REPLACE INTO ca VALUES ( '00001234', '01', '20260302', 'A', '위내시경', %1, '') "_s.arg(Literal(text)));

        const auto rows = m_connection->Execute(u" SELECT ca_chamgo FROM ca  WHERE ca_etc = '위내시경' "_s);
        QCOMPARE(rows->Fields(u"ca_chamgo"_s).typeId(), int(QMetaType::QString));
        QCOMPARE(rows->Fields(u"ca_chamgo"_s).toString(), text);
    }

    void readsRows_data() { Engines(); }
    void readsRows()
    {
        Begin({u"clinic"_s});
        QVERIFY2(m_clinic->Run(u"INSERT INTO bh (bh_chart, bh_chymd, bh_yuhyung) VALUES ('1', '20250101', '01'), "
                               "('1', '20260101', '05');"_s),
                 qPrintable(m_clinic->Fault()));
        const auto rows = m_connection->NewRecordset();
        rows->setCursorLocation(adUseClient);
        rows->setCursorType(adOpenKeyset);
        rows->setLockType(adLockReadOnly);
        rows->Open(u" SELECT bh_yuhyung, bh_jongbl, bh_chymd AS bh_yuhyung FROM bh  ORDER BY  bh_chymd  desc "_s,
                   *m_connection);

        QVERIFY(!rows->Bof() && !rows->Eof());
        QCOMPARE(rows->Fields(u"BH_Yuhyung"_s).toString(), u"05"_s); // of two columns of one name, the first
        QVERIFY(!rows->Fields(u"bh_jongbl"_s).isValid());
        QVERIFY_THROWS_EXCEPTION(PlatformError, rows->Fields(u"bh_nothing"_s));
        // Other statements run while the rows are open.
        m_connection->Execute(u" DELETE FROM bh "_s);
        rows->MoveNext();
        QCOMPARE(rows->Fields(u"bh_yuhyung"_s).toString(), u"01"_s);
        rows->MoveNext();
        QVERIFY(rows->Eof() && !rows->Bof());
        QVERIFY_THROWS_EXCEPTION(PlatformError, rows->Fields(u"bh_yuhyung"_s));
    }

    void numbersAndLeft_data() { Engines(); }
    void numbersAndLeft()
    {
        Begin({u"cap"_s, u"caso"_s});
        const QString highest = u" SELECT IFNULL(MAX(cap_no), 0) AS Maxno FROM cap  WHERE cap_chart = '1' "_s;
        QCOMPARE(m_connection->Execute(highest)->Fields(u"maxno"_s), QVariant(0LL));
        m_connection->Execute(u" REPLACE INTO cap VALUES ( '1', '01', '20260302', 'A', '위', 32767, '') "_s);
        QCOMPARE(m_connection->Execute(highest)->Fields(u"maxno"_s), QVariant(32767LL));

        const QString serial =
            u" SELECT IFNULL(MAX(caso_yeonno), 0) AS maxnum FROM caso  WHERE LEFT(caso_yeonno,4) = '2026' "_s;
        QCOMPARE(m_connection->Execute(serial)->Fields(u"maxnum"_s).toString(), u"0"_s);
        for (const QString& number : {u"2025000009"_s, u"2026000001"_s, u"2026000002"_s})
            m_connection->Execute(
                u" REPLACE INTO caso VALUES (  '%1', '1', '01', '20260302', '김', '', '11', '위', 1, 0, "
                u"0,  0, 0, 5, '소견',  '', "
                "'', '', '', '', '' ) "_s.arg(number));
        QCOMPARE(m_connection->Execute(serial)->Fields(u"maxnum"_s).toString(), u"2026000002"_s);
        const auto report = m_connection->Execute(u" SELECT * FROM caso  WHERE caso_yeonno = '2026000001' "_s);
        QCOMPARE(report->Fields(u"caso_no6"_s), QVariant(5LL));
    }

    void comparesTextsAlike_data() { Engines(); }
    void comparesTextsAlike()
    {
        Begin({u"clinic"_s});
        QVERIFY2(m_clinic->Run(
                     u"INSERT INTO wj (wj_chart, wj_suname) VALUES ('00001234', '가'), ('a', '나'), ('A', '다');"_s),
                 qPrintable(m_clinic->Fault()));
        const auto nameOf = [this](const QString& chart) {
            return ColumnOf(*m_connection->Execute(u" SELECT wj_suname FROM wj WHERE wj_chart = '%1' "_s.arg(chart)),
                            u"wj_suname"_s);
        };
        QCOMPARE(nameOf(u"a"_s), QStringList{u"나"_s});
        QCOMPARE(nameOf(u"00001234  "_s), QStringList{u"가"_s}); // columns of the launch string are padded with blanks
        QCOMPARE(nameOf(u" 00001234"_s), QStringList());
    }

    void tellsWhyItCantOpen_data()
    {
        Columns<QString, QString, QString>("field", "value", "expected");
        QTest::newRow("no such driver") << u"driver"_s << u"QODBC"_s << u"QODBC"_s;
        QTest::newRow("no such server") << u"socket"_s << u"/nonexistent/mariadb.sock"_s
                                        << u"서버에 연결할 수 없습니다.!!"_s;
        QTest::newRow("no such database") << u"name"_s << u"nowhere"_s << u"nowhere이(가) 서버에 없습니다.!!"_s;
        QTest::newRow("wrong password") << u"password"_s << u"틀림"_s << u"암호가 맞지 않습니다.!!"_s;
        QTest::newRow("no such file") << u"file"_s << u"/tmp/없는 자료.sqlite"_s << u"/tmp/없는 자료.sqlite"_s;
        QTest::newRow("no database file")
            << u"file"_s << u"" STATION_SOURCE_FOLDER "/CMakeLists.txt"_s << u"not a database"_s;
    }

    void tellsWhyItCantOpen()
    {
        QFETCH3(QString, field, QString, value, QString, expected);
        DatabaseSettings settings{
            .driver = u"QMARIADB"_s, .socket = m_server.Socket(), .name = u"mysql"_s, .user = u"root"_s};
        if (field == u"driver")
            settings.driver = value;
        else if (field == u"socket")
            settings.socket = value;
        else if (field == u"name")
            settings.name = value;
        else if (field == u"password")
            settings.password = value;
        else
            settings = {.driver = u"QSQLITE"_s, .name = value};
        const QString fault = OpeningFaultOf(settings);
        QVERIFY2(fault.contains(expected) && fault.contains(u".!!"_s), qPrintable(fault));
        QVERIFY(!QFile::exists(u"/tmp/없는 자료.sqlite"_s));
        QVERIFY(QSqlDatabase::connectionNames().isEmpty());
    }

    void outlivesTheServer_data()
    {
        Columns<QString, QString>("driver", "how");
        for (const QString& how : {u"shutdown"_s, u"power cut"_s, u"connection killed"_s})
            QTest::newRow(qPrintable(how)) << u"QMARIADB"_s << how;
    }

    void outlivesTheServer()
    {
        Begin({u"ca"_s});
        QFETCH(QString, how);
        const QString row = u" REPLACE INTO ca VALUES ( '1', '01', '20260302', 'A', '%1', '\\''', '' ) "_s;
        m_connection->Execute(row.arg(u"위내시경"_s));
        if (how == u"connection killed") {
            const QString id = m_connection->Execute(u" SELECT CONNECTION_ID() AS id "_s)->Fields(u"id"_s).toString();
            QVERIFY2(m_server.Run(u"KILL %1;"_s.arg(id)), qPrintable(m_server.Fault()));
        } else {
            how == u"shutdown" ? m_server.Stop() : m_server.Kill();
            QVERIFY2(m_server.Start(), qPrintable(m_server.Fault()));
        }
        // The backslash would swallow an apostrophe on a connection that has lost its settings.
        m_connection->Execute(row.arg(u"대장내시경"_s));
        const auto rows = m_connection->Execute(u" SELECT * FROM ca  ORDER BY ca_etc "_s);
        QCOMPARE(ColumnOf(*rows, u"ca_etc"_s), (QStringList{u"대장내시경"_s, u"위내시경"_s}));
        rows->setFilter(u"ca_chamgo = '\\'''"_s);
        QCOMPARE(ColumnOf(*rows, u"ca_chamgo"_s).size(), 2);
    }

    void serverThatStaysAway()
    {
        m_clinic = std::make_unique<ClinicDatabase>(u"QMARIADB"_s, &m_server);
        QVERIFY2(m_clinic->Make({u"ca"_s}), qPrintable(m_clinic->Fault()));
        m_connection = OpenConnection(m_clinic->Settings());
        m_server.Stop();
        for (int again = 0; again < 2; ++again) {
            const QString fault = FaultOf(*m_connection, u" SELECT * FROM ca "_s);
            QVERIFY2(fault.contains(u"서버에 연결할 수 없습니다.!!"_s), qPrintable(fault));
        }
        QVERIFY2(m_server.Start(), qPrintable(m_server.Fault()));
        QCOMPARE(FaultOf(*m_connection, u" SELECT * FROM ca "_s), QString());
    }

    void whatWasGivenUpComesInNoMore()
    {
        m_clinic = std::make_unique<ClinicDatabase>(u"QMARIADB"_s, &m_server);
        QVERIFY2(m_clinic->Make({}) && m_clinic->Run(u"CREATE TABLE note (v VARCHAR(9));"_s),
                 qPrintable(m_clinic->Fault()));
        DatabaseSettings settings = m_clinic->Settings();
        const ConnectionPointer beside = OpenConnection(settings);
        settings.connectTimeoutSeconds = settings.replyTimeoutSeconds = 1;
        m_connection = OpenConnection(settings);
        const auto old = [&] {
            return beside
                ->Execute(u" SELECT COUNT(*) AS n FROM information_schema.processlist WHERE info LIKE 'INSERT%' "_s)
                ->Fields(u"n"_s)
                .toInt();
        };
        m_server.Freeze();
        const QString fault = FaultOf(*m_connection, u"INSERT INTO note SELECT IF(SLEEP(60), '', 'old')"_s);
        m_server.Thaw();
        QVERIFY(!fault.isEmpty());
        // The server has it, and goes on with it.
        QTRY_COMPARE(old(), 1);
        m_connection->Execute(u"INSERT INTO note VALUES ('new')"_s);
        // It has let go of all its locks; the server's own list of it may follow.
        QTRY_COMPARE(old(), 0);
        QCOMPARE(ColumnOf(*beside->Execute(u"SELECT v FROM note"_s), u"v"_s), QStringList{u"new"_s});
    }

    void goesOnAtTheHostThatAnswers()
    {
        PrivateMariaDb first;
        const QString address = u"127.77.%1.%2"_s.arg(getpid() / 256 % 256).arg(getpid() % 256);
        m_connection = OpenConnection({.driver = u"QMARIADB"_s,
                                       .host = u"%1:%2, localhost"_s.arg(address).arg(first.Port),
                                       .socket = m_server.Socket(),
                                       .name = u"mysql"_s,
                                       .user = u"root"_s});
        const auto place = [this] {
            return m_connection->Execute(u" SELECT @@socket AS place "_s)->Fields(u"place"_s).toString();
        };
        QVERIFY2(first.Start(address), qPrintable(first.Fault()));
        QCOMPARE(place(), m_server.Socket()); // as long as it lives
        m_server.Stop();
        QCOMPARE(place(), first.Socket());
        first.Kill();
        QVERIFY2(m_server.Start(), qPrintable(m_server.Fault()));
        QCOMPARE(place(), m_server.Socket());
    }

    void encryptsOrRefuses_data()
    {
        Columns<QString, QString, bool, bool>("driver", "authority", "verifiesName", "connects");
        QTest::newRow("certificate of the authority") << u"QMARIADB"_s << u"clinic"_s << true << true;
        QTest::newRow("certificate of another") << u"QMARIADB"_s << u"other"_s << false << false;
        QTest::newRow("certificate of another host") << u"QMARIADB"_s << u"elsewhere"_s << true << false;
        QTest::newRow("of another host, name not checked") << u"QMARIADB"_s << u"elsewhere"_s << false << true;
        QTest::newRow("server without encryption") << u"QMARIADB"_s << u"none"_s << false << false;
    }

    void encryptsOrRefuses()
    {
        QFETCH3(QString, authority, bool, verifiesName, bool, connects);
        const QTemporaryDir folder;
        const QString address = u"127.78.%1.%2"_s.arg(getpid() / 256 % 256).arg(getpid() % 256);
        const QString certificate = folder.filePath(u"server.pem"_s);
        for (const QString& each : {u"server"_s, u"other"_s}) {
            const QString named = authority == u"elsewhere" ? u"127.0.0.9"_s : address;
            QCOMPARE(
                QProcess::execute(u"openssl"_s, u"req -x509 -newkey ec -pkeyopt ec_paramgen_curve:prime256v1 -nodes "
                                                "-batch -subj /CN=clinic -days 2 -addext subjectAltName=IP:%1 "
                                                "-keyout %2.pem -out %2.crt"_s.arg(named, folder.filePath(each))
                                                    .split(u' ')),
                0);
        }
        QFile crt(folder.filePath(u"server.crt"_s));
        QFile pem(certificate);
        QVERIFY(crt.open(QFile::ReadOnly) && pem.open(QFile::Append) && pem.write(crt.readAll()) > 0);
        pem.close();
        PrivateMariaDb server;
        QVERIFY2(server.Start(address, authority == u"none" ? QString() : certificate), qPrintable(server.Fault()));
        QVERIFY2(server.Run(u"CREATE USER clinic@'127.%' IDENTIFIED BY 'p'"_s), qPrintable(server.Fault()));
        const DatabaseSettings settings{.driver = u"QMARIADB"_s,
                                        .host = address,
                                        .port = server.Port,
                                        .name = u"information_schema"_s,
                                        .user = u"clinic"_s,
                                        .password = u"p"_s,
                                        .certificateAuthority =
                                            folder.filePath(authority == u"other" ? u"other.crt"_s : u"server.crt"_s),
                                        .verifiesServerName = verifiesName};
        const bool isNameLookedAt = authority == u"elsewhere" && AlwaysChecksServerName();
        if (!connects || isNameLookedAt) {
            const QString fault = OpeningFaultOf(settings);
            QVERIFY2(fault.startsWith(u"데이터베이스 서버와 암호화하여"_s), qPrintable(fault));
            return;
        }
        m_connection = OpenConnection(settings);
        const auto rows = m_connection->Execute(u"SHOW STATUS LIKE 'Ssl_cipher'"_s);
        QVERIFY(!rows->Fields(u"value"_s).toString().isEmpty());
    }

    void givesNoPasswordAway_data()
    {
        Columns<QString, QString, QString, bool>("driver", "authority", "method", "verifiesName");
        for (const QString& method : {u"mysql_clear_password"_s, u"sha256_password"_s}) {
            QTest::addRow("%s, no authority", qPrintable(method)) << u"QMARIADB"_s << QString() << method << true;
            for (const bool verifies : {false, true})
                QTest::addRow("%s, name checked: %d", qPrintable(method), int(verifies))
                    << u"QMARIADB"_s << u"/etc/ssl/certs/ca-certificates.crt"_s << method << verifies;
        }
    }

    void givesNoPasswordAway()
    {
        QFETCH3(QString, authority, QString, method, bool, verifiesName);
        PryingServer server(method.toLatin1());
        PryingServer next(method.toLatin1());
        const QString hosts = u"127.0.0.1:%1, 127.0.0.1:%2"_s.arg(server.Port()).arg(next.Port());
        const QString fault = OpeningFaultOf({.driver = u"QMARIADB"_s,
                                              .host = hosts,
                                              .name = u"clinic"_s,
                                              .user = u"station"_s,
                                              .password = u"열려라 참깨"_s,
                                              .certificateAuthority = authority,
                                              .verifiesServerName = verifiesName,
                                              .replyTimeoutSeconds = 2});
        for (PryingServer* each : {&server, &next}) {
            const QByteArray heard = each->Heard();
            QVERIFY2(!heard.contains("참깨"), heard.toHex(' ').constData());
            // Where the name is checked, not even who is asking.
            QCOMPARE(heard.contains("station"), authority.isEmpty() || !verifiesName);
        }
        const bool isRefusedFirst = !authority.isEmpty() && verifiesName;
        QVERIFY2(fault.startsWith(isRefusedFirst ? u"데이터베이스 서버와 암호화하여"_s
                                                 : u"데이터베이스 서버가 암호를 그대로"_s),
                 qPrintable(fault));
    }

    void repeatsOnlyWhatHelps_data()
    {
        Columns<QString, int, int, int, bool>("driver", "number", "failures", "runs", "succeeds");
        QTest::newRow("deadlock with another node") << u"QMARIADB"_s << 1213 << 2 << 3 << true;
        QTest::newRow("cluster that doesn't come back") << u"QMARIADB"_s << 1047 << 1000 << 7 << false;
        QTest::newRow("commit that its node can't pass on") << u"QMARIADB"_s << 1180 << 1 << 2 << true;
        QTest::newRow("server that shuts down") << u"QMARIADB"_s << 1053 << 1 << 2 << true;
        QTest::newRow("connection lost twice") << u"QMARIADB"_s << 1927 << 1000 << 2 << false;
        QTest::newRow("any other fault") << u"QMARIADB"_s << 1644 << 1 << 1 << false;
    }

    void repeatsOnlyWhatHelps()
    {
        Begin({});
        QFETCH4(int, number, int, failures, int, runs, bool, succeeds);
        // The count stands in a table without transactions, so that a failed run counts.
        m_connection->Execute(u"CREATE TABLE calls (n INT) ENGINE = Aria"_s);
        m_connection->Execute(u"INSERT INTO calls VALUES (0)"_s);
        m_connection->Execute(
            u"CREATE FUNCTION unsure() RETURNS INT BEGIN UPDATE calls SET n = n + 1; IF (SELECT n FROM calls) <= %1 "
            u"THEN "
            "SIGNAL SQLSTATE '45000' SET MYSQL_ERRNO = %2, MESSAGE_TEXT = '일부러 냄'; END IF; RETURN 1; END"_s
                .arg(failures)
                .arg(number));

        const QString fault = FaultOf(*m_connection, u" SELECT unsure() "_s);
        QCOMPARE(fault.isEmpty(), succeeds);
        QCOMPARE(fault.contains(u"일부러 냄"_s), !succeeds);
        QCOMPARE(m_connection->Execute(u" SELECT n FROM calls "_s)->Fields(u"n"_s).toInt(), runs);
    }

    void waitsForNoLockForever()
    {
        m_connection = OpenConnection(
            {.driver = u"QMARIADB"_s, .socket = m_server.Socket(), .name = u"mysql"_s, .user = u"root"_s});
        const auto rows = m_connection->Execute(
            u" SELECT @@sql_mode AS mode, @@innodb_lock_wait_timeout AS rowWait, @@lock_wait_timeout AS tableWait "_s);
        const int replyLimit = DatabaseSettings().replyTimeoutSeconds;
        QVERIFY(rows->Fields(u"rowWait"_s).toInt() < replyLimit);
        QVERIFY(rows->Fields(u"tableWait"_s).toInt() < replyLimit);
        QVERIFY(!rows->Fields(u"mode"_s).toString().contains(u"STRICT"_s));
    }

    void filesTextThatAnOldTableCantHold()
    {
        m_clinic = std::make_unique<ClinicDatabase>(u"QMARIADB"_s, &m_server);
        QVERIFY2(m_clinic->Make({}), qPrintable(m_clinic->Fault()));
        QVERIFY2(
            m_clinic->Run(u"CREATE TABLE ca (ca_chart CHAR(8), ca_yuhyung CHAR(2), ca_ymd CHAR(8), ca_gubun CHAR(1), "
                          "ca_etc CHAR(20), ca_chamgo VARCHAR(10), ca_extra VARCHAR(10), "
                          "PRIMARY KEY (ca_chart, ca_ymd, ca_gubun, ca_etc)) CHARSET = euckr;"_s),
            qPrintable(m_clinic->Fault()));
        m_connection = OpenConnection(m_clinic->Settings());
        const QString row = u" REPLACE INTO ca VALUES ( '00001234', '01', '%1', 'A', '위내시경', '%2', '' ) "_s;
        m_connection->Execute(row.arg(u"20260302"_s, u"펲똠 ☆😀."_s));
        m_connection->Execute(row.arg(u"20260303"_s, u"열 글자보다 긴 참고사항"_s));

        const auto rows = m_connection->Execute(u" SELECT * FROM ca  WHERE ca_etc = '위내시경'  ORDER BY ca_ymd "_s);
        QCOMPARE(ColumnOf(*rows, u"ca_chamgo"_s), (QStringList{u"펲똠 ☆?."_s, u"열 글자보다 긴 참"_s}));
    }

    void damagedFileGivesNoShortList()
    {
        m_clinic = std::make_unique<ClinicDatabase>(u"QSQLITE"_s, nullptr);
        QVERIFY2(m_clinic->Make({u"ca"_s}), qPrintable(m_clinic->Fault()));
        m_connection = OpenConnection(m_clinic->Settings());
        for (int section = 100; section < 200; ++section)
            m_connection->Execute(
                u" REPLACE INTO ca VALUES ( '1', '01', '20260302', 'A', '%1', '%2', '' ) "_s.arg(section).arg(
                    QString(3000, u'x')));
        m_connection.reset();
        QFile file(m_clinic->Settings().name);
        QVERIFY(file.open(QIODevice::ReadWrite));
        constexpr qint64 PageBytes = 4096;
        const QByteArray damage(10 * PageBytes, '\xFF');
        QVERIFY(file.seek(file.size() / PageBytes * 6 / 10 * PageBytes)); // behind the first rows
        QCOMPARE(file.write(damage), damage.size());
        file.close();

        m_connection = OpenConnection(m_clinic->Settings());
        const QString fault = FaultOf(*m_connection, u" SELECT * FROM ca "_s);
        QVERIFY2(fault.contains(u"malformed"_s), qPrintable(fault));
    }

    void keeperMakesATable_data()
    {
        Columns<QString, QString, QString, int>("driver", "table", "row", "columns");
        const QList<std::tuple<QString, QString, int>> tables{
            {u"ca"_s, u"'1', '01', '20260302', 'A', '위', '참고', ''"_s, 7},
            {u"cap"_s, u"'1', '01', '20260302', 'A', '위', 1, '/a'"_s, 7},
            {u"caso"_s,
             u"'2026000001', '1', '01', '20260302', '김', '', '11', '위', 1, 2, 3, 4, 5, 6, 'a', 'b', '', '', '', '', ''"_s,
             21},
            {u"endo"_s, u"'20260302', '1', '11', ''"_s, 4},
        };
        for (const QString& driver : {u"QMARIADB"_s, u"QSQLITE"_s}) {
            for (const auto& [table, row, columns] : tables)
                QTest::addRow("%s %s", qPrintable(driver), qPrintable(table)) << driver << table << row << columns;
        }
    }

    void keeperMakesATable()
    {
        QFETCH3(QString, driver, QString, table, QString, row);
        ClinicDatabase clinic(driver, &m_server);
        // SQLite's client makes the file at its first statement.
        QVERIFY2(clinic.Make({}) && clinic.Run(u"CREATE TABLE other (x INT);"_s), qPrintable(clinic.Fault()));
        ConnectionPointer connection = OpenConnection(clinic.Settings());
        const auto keeper = CreateObject<clsTableKeeper>(u"prjTableKeeper.clsTableKeeper"_s);

        const QString replace = u" REPLACE INTO %1 VALUES ( %2 ) "_s.arg(table, row);
        keeper->tablecreate(connection, table, QString());
        connection->Execute(replace);
        connection->Execute(replace);
        keeper->tablecreate(connection, table, QString()); // another station was quicker: the row stays
        const auto count = connection->Execute(u" SELECT COUNT(*) AS n FROM %1 "_s.arg(table));
        QCOMPARE(count->Fields(u"n"_s).toInt(), 1);
        const auto tables = connection->Execute(u" SHOW TABLES FROM "_s + connection->DefaultDatabase());
        int made = 0;
        for (; !tables->Eof(); tables->MoveNext())
            ++made;
        QCOMPARE(made, 2);
    }

    void keeperRefusesATableOfTheClinic()
    {
        ClinicDatabase clinic(u"QSQLITE"_s, nullptr);
        QVERIFY2(clinic.Make({u"ca"_s}), qPrintable(clinic.Fault()));
        ConnectionPointer connection = OpenConnection(clinic.Settings());
        const auto keeper = CreateObject<clsTableKeeper>(u"prjTableKeeper.clsTableKeeper"_s);
        for (const QString& table : {u"wj"_s, u"clinic"_s, u"../tables"_s, u""_s})
            QVERIFY_THROWS_EXCEPTION(PlatformError, keeper->tablecreate(connection, table, QString()));
        ConnectionPointer none;
        QVERIFY_THROWS_EXCEPTION(PlatformError, keeper->tablecreate(none, u"endo"_s, QString()));
    }

private:
    static void Engines()
    {
        QTest::addColumn<QString>("driver");
        QTest::newRow("MariaDB") << u"QMARIADB"_s;
        QTest::newRow("SQLite") << u"QSQLITE"_s;
    }

    /// A fresh database with some tables and a connection to it, on the engine of the test's row.
    void Begin(const QStringList& tables)
    {
        QFETCH(QString, driver);
        m_clinic = std::make_unique<ClinicDatabase>(driver, &m_server);
        if (!m_clinic->Make(tables))
            throw PlatformError(m_clinic->Fault());
        m_connection = OpenConnection(m_clinic->Settings());
    }

    PrivateMariaDb m_server;
    std::unique_ptr<ClinicDatabase> m_clinic;
    ConnectionPointer m_connection;
};

QTEST_GUILESS_MAIN(ConnectionTest)
#include "ConnectionTest.moc"
