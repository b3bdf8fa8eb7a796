#include "contracts/PlatformError.h"
#include "contracts/setup_components.h"
#include "frame/components.h"
#include "platform/sql/register_sql.h"
#include "support/ClinicDatabase.h"

#include <QTest>

using namespace Qt::StringLiterals;

class TablesTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void keeperMakesATable_data();
    void keeperMakesATable();
    void keeperRefusesATableOfTheClinic();
    void statementsUseAKey_data();
    void statementsUseAKey();

private:
    PrivateMariaDb m_server;
};

void TablesTest::initTestCase()
{
    RegisterSql();
    QVERIFY2(m_server.Start(), qPrintable(m_server.Fault()));
}

void TablesTest::keeperMakesATable_data()
{
    QTest::addColumn<QString>("driver");
    QTest::addColumn<QString>("table");
    QTest::addColumn<QString>("row");
    QTest::addColumn<int>("columns");
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

void TablesTest::keeperMakesATable()
{
    QFETCH(QString, driver);
    QFETCH(QString, table);
    QFETCH(QString, row);
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

void TablesTest::keeperRefusesATableOfTheClinic()
{
    ClinicDatabase clinic(u"QSQLITE"_s, nullptr);
    QVERIFY2(clinic.Make({u"ca"_s}), qPrintable(clinic.Fault()));
    ConnectionPointer connection = OpenConnection(clinic.Settings());
    const auto keeper = CreateObject<clsTableKeeper>(u"prjTableKeeper.clsTableKeeper"_s);
    for (const QString& table : {u"wj"_s, u"clinic"_s, u"../tables"_s, u""_s})
        QVERIFY_EXCEPTION_THROWN(keeper->tablecreate(connection, table, QString()), PlatformError);
    ConnectionPointer none;
    QVERIFY_EXCEPTION_THROWN(keeper->tablecreate(none, u"endo"_s, QString()), PlatformError);
}

void TablesTest::statementsUseAKey_data()
{
    QTest::addColumn<QString>("statement");
    QTest::addColumn<QString>("onServer");
    QTest::addColumn<QString>("inFile");
    const QString visit = u"cap_chart = '00000007' AND cap_ymd = '20260302' AND cap_etc = '위' AND cap_gubun = 'A'"_s;
    const QString listed =
        u"SELECT caso_yeonno, caso_chart, caso_yuhyung, caso_suname, caso_jumin, caso_ymd  FROM caso "_s;
    QTest::newRow("pictures of a visit") << u"SELECT * FROM cap WHERE %1 ORDER BY cap_no ASC"_s.arg(visit)
                                         << u"PRIMARY"_s << u"PRIMARY KEY"_s;
    QTest::newRow("highest number") << u"SELECT IFNULL(MAX(cap_no), 0) AS Maxno FROM cap WHERE %1"_s.arg(visit)
                                    << u"PRIMARY"_s << u"PRIMARY KEY"_s;
    QTest::newRow("history")
        << u"SELECT * FROM ca WHERE ca_chart = '00000007' AND ca_gubun = 'A' ORDER BY ca_ymd DESC"_s << u"PRIMARY"_s
        << u"PRIMARY KEY"_s;
    QTest::newRow("report of a visit")
        << u"SELECT * FROM caso WHERE caso_chart = '00000007' AND caso_ymd = '20260302' AND caso_etc = '위' "
           "ORDER BY caso_yeonno ASC"_s
        << u"caso_visit"_s << u"caso_visit"_s;
    QTest::newRow("all reports") << listed + u"ORDER BY caso_yeonno DESC"_s << u"PRIMARY"_s << u"caso_list_yeonno"_s;
    QTest::newRow("search by number") << listed + u"WHERE caso_yeonno >= '5' ORDER BY caso_yeonno ASC"_s << u"PRIMARY"_s
                                      << u"caso_list_yeonno"_s;
    for (const QString& column : {u"chart"_s, u"yuhyung"_s, u"suname"_s, u"jumin"_s, u"ymd"_s})
        QTest::addRow("search by %s", qPrintable(column))
            << listed + u"WHERE caso_%1 >= '5' ORDER BY caso_%1 ASC"_s.arg(column) << u"caso_list_"_s + column
            << u"caso_list_"_s + column;
}

/// Both engines answer the statement from the key that was made for it, without a sort.
void TablesTest::statementsUseAKey()
{
    QFETCH(QString, statement);
    QFETCH(QString, onServer);
    QFETCH(QString, inFile);
    static ClinicDatabase server(u"QMARIADB"_s, &m_server);
    static ClinicDatabase file(u"QSQLITE"_s, nullptr);
    static ConnectionPointer serverConnection;
    static ConnectionPointer fileConnection;
    if (serverConnection == nullptr) {
        QVERIFY2(server.Make({u"ca"_s, u"cap"_s, u"caso"_s}), qPrintable(server.Fault()));
        QVERIFY2(file.Make({u"ca"_s, u"cap"_s, u"caso"_s}), qPrintable(file.Fault()));
        serverConnection = OpenConnection(server.Settings());
        fileConnection = OpenConnection(file.Settings());
        serverConnection->Execute(
            u"INSERT INTO ca SELECT LPAD(seq % 50, 8, '0'), '01', 20260000 + seq, 'A', '위', '참고', '' "
            "FROM seq_1_to_2000"_s);
        serverConnection->Execute(
            u"INSERT INTO cap SELECT LPAD(seq % 50, 8, '0'), '01', '20260302', 'A', '위', seq, '' FROM seq_1_to_5000"_s);
        serverConnection->Execute(
            u"INSERT INTO caso SELECT 2026000000 + seq, LPAD(seq % 50, 8, '0'), seq % 10, '20260302', seq, seq, '11', "
            "'위', 0, 0, 0, 0, 0, 0, REPEAT('소견', 500), '', '', '', '', '', '' FROM seq_1_to_2000"_s);
        serverConnection->Execute(u"ANALYZE TABLE ca, cap, caso"_s);
    }
    const auto served = serverConnection->Execute(u"EXPLAIN "_s + statement);
    const QString key = served->Fields(u"key"_s).toString();
    const QString extra = served->Fields(u"Extra"_s).toString();
    QVERIFY2(key == onServer || extra.contains(u"optimized away"_s), qPrintable(key + u" | "_s + extra));
    QVERIFY2(!extra.contains(u"filesort"_s), qPrintable(extra));

    const auto filed = fileConnection->Execute(u"EXPLAIN QUERY PLAN "_s + statement);
    const QString detail = filed->Fields(u"detail"_s).toString();
    QVERIFY2(detail.contains(inFile), qPrintable(detail));
    filed->MoveNext();
    QVERIFY2(filed->Eof(), "a sort comes behind the key");
}

QTEST_GUILESS_MAIN(TablesTest)
#include "TablesTest.moc"
