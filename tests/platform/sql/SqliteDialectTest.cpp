#include "platform/sql/sqlite_dialect.h"

#include <QTest>

using namespace Qt::StringLiterals;

class SqliteDialectTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void translates_data();
    void translates();
};

void SqliteDialectTest::translates_data()
{
    QTest::addColumn<QString>("statement");
    QTest::addColumn<QString>("expected");
    QTest::newRow("call") << u" WHERE LEFT(caso_yeonno,4) = '2026' "_s << u" WHERE substr(caso_yeonno,1,4) = '2026' "_s;
    QTest::newRow("blanks, small letters") << u"left (a, 2)"_s << u"substr(a,1, 2)"_s;
    QTest::newRow("nested") << u"LEFT(LEFT(a,(4)),f(b,2))"_s << u"substr(substr(a,1,(4)),1,f(b,2))"_s;
    QTest::newRow("inside another call") << u"IFNULL(LEFT(IFNULL(a,b),1),'')"_s
                                         << u"IFNULL(substr(IFNULL(a,b),1,1),'')"_s;
    QTest::newRow("text") << u"'LEFT(a,4)' 'it''s LEFT(b,1)' \"LEFT(c,1)\""_s
                          << u"'LEFT(a,4)' 'it''s LEFT(b,1)' \"LEFT(c,1)\""_s;
    QTest::newRow("text within a call") << u"LEFT('a,)(',1)"_s << u"substr('a,)(',1,1)"_s;
    QTest::newRow("part of a name") << u"bh_left(a,4), LEFTY(a,4)"_s << u"bh_left(a,4), LEFTY(a,4)"_s;
    QTest::newRow("join") << u"a LEFT JOIN (b, c)"_s << u"a LEFT JOIN (b, c)"_s;
    QTest::newRow("text without end") << u"LEFT(a,1) = 'LEFT(a,1)"_s << u"substr(a,1,1) = 'LEFT(a,1)"_s;
    QTest::newRow("parenthesis without end") << u")) LEFT("_s << u")) substr("_s;
    QTest::newRow("tables in a text") << u"SELECT ' SHOW TABLES FROM x '"_s << u"SELECT ' SHOW TABLES FROM x '"_s;
}

void SqliteDialectTest::translates()
{
    QFETCH(QString, statement);
    QFETCH(QString, expected);
    QCOMPARE(sqlite::Translated(statement), expected);
}

QTEST_GUILESS_MAIN(SqliteDialectTest)
#include "SqliteDialectTest.moc"
