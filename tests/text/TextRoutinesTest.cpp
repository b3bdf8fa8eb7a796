#include "screenparts/fill_routines.h"
#include "text/text_routines.h"

#include <QComboBox>
#include <QTest>

using namespace Qt::StringLiterals;

class TextRoutinesTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void CleanText_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("count");
        QTest::addColumn<QString>("clean");
        QTest::newRow("an apostrophe keeps its place") << u"a'b"_s << 3 << u"a b"_s;
        QTest::newRow("a short text is filled up") << u"abc"_s << 5 << u"abc  "_s;
        QTest::newRow("a long text is cut") << u"abcde"_s << 3 << u"abc"_s;
        QTest::newRow("backslashes and NUL") << u"C:\\a"_s + QChar(u'\0') + u"b"_s << 6 << u"C:/a b"_s;
        QTest::newRow("Korean") << u"위'내시경\\"_s << 6 << u"위 내시경/"_s;
        QTest::newRow("nothing") << QString() << 2 << u"  "_s;
    }

    void CleanText()
    {
        QFETCH(QString, text);
        QFETCH(int, count);
        QTEST(::CleanText(text, count), "clean");
    }

    void LayIntoMask_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("mask");
        QTest::addColumn<QString>("laid");
        QTest::newRow("date on screen") << u"20260105"_s << u"0000-00-00"_s << u"2026-01-05"_s;
        QTest::newRow("digit too many stands in front")
            << u"20260105"_s << u"000년 00월 00일"_s << u"2026년 01월 05일"_s;
        QTest::newRow("resident number") << u"8001011234567"_s << u"000000-0000000"_s << u"800101-1234567"_s;
        QTest::newRow("short number is padded") << u"123"_s << u"000000-0000000"_s << u"000000-0000123"_s;
        QTest::newRow("leading zeros are kept by the mask")
            << u"0501013234567"_s << u"000000-0000000"_s << u"050101-3234567"_s;
        QTest::newRow("text with a dash stays") << u"800101-1234567"_s << u"000000-0000000"_s << u"800101-1234567"_s;
        QTest::newRow("letters stay") << u"abc"_s << u"0000-00-00"_s << u"abc"_s;
        QTest::newRow("empty stays") << QString() << u"0000-00-00"_s << QString();
        QTest::newRow("number of a picture") << u"7"_s << u"000"_s << u"007"_s;
        QTest::newRow("number over the mask") << u"1000"_s << u"000"_s << u"1000"_s;
    }

    void LayIntoMask()
    {
        QFETCH(QString, text);
        QFETCH(QString, mask);
        QTEST(::LayIntoMask(text, mask), "laid");
    }

    void WholeNumber_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("whole");
        QTest::addColumn<int>("number");
        QTest::newRow("blanks in front") << u"  3"_s << u"3"_s << 3;
        QTest::newRow("leading zeros") << u"012"_s << u"12"_s << 12;
        QTest::newRow("half to even, down") << u"2.5"_s << u"2"_s << 2;
        QTest::newRow("half to even, up") << u"3.50"_s << u"4"_s << 4;
        QTest::newRow("over half") << u"2.51"_s << u"3"_s << 3;
        QTest::newRow("carry") << u"99.9"_s << u"100"_s << 100;
        QTest::newRow("sign") << u"-7"_s << u"-7"_s << -7;
        QTest::newRow("letters") << u"1a"_s << QString() << 0;
        QTest::newRow("empty") << u" "_s << QString() << 0;
        QTest::newRow("a lone point") << u"."_s << QString() << 0;
        QTest::newRow("beyond 32 bits") << u"99999999999"_s << u"99999999999"_s << 2147483647;
        QTest::newRow("full-width digits are no digits") << u"３"_s << QString() << 0;
    }

    void WholeNumber()
    {
        QFETCH(QString, text);
        QTEST(WholeNumberText(text), "whole");
        QTEST(::WholeNumber(text), "number");
    }

    void TrimTakesBlanksOnly()
    {
        QCOMPARE(Trim(u"  a b \n "_s), u"a b \n"_s);
        QCOMPARE(Trim(u"   "_s), QString());
    }

    void FillDayCombo_data()
    {
        QTest::addColumn<QString>("year");
        QTest::addColumn<QString>("month");
        QTest::addColumn<QString>("day");
        QTest::addColumn<int>("days");
        QTest::addColumn<QString>("selected");
        QTest::newRow("day beyond the month") << u"2025"_s << u"02"_s << u"31"_s << 28 << u"01"_s;
        QTest::newRow("day kept") << u"2025"_s << u"02"_s << u"15"_s << 28 << u"15"_s;
        QTest::newRow("leap year") << u"2024"_s << u"02"_s << u"29"_s << 29 << u"29"_s;
        QTest::newRow("century without a leap day") << u"2100"_s << u"02"_s << u"x"_s << 28 << u"01"_s;
        QTest::newRow("December") << u"2026"_s << u"12"_s << u"31"_s << 31 << u"31"_s;
        QTest::newRow("no such month leaves the list") << u"2026"_s << u"13"_s << u"1"_s << 1 << u"before"_s;
    }

    void FillDayCombo()
    {
        QFETCH(QString, year);
        QFETCH(QString, month);
        QFETCH(QString, day);
        QComboBox list;
        list.addItem(u"before"_s);
        ::FillDayCombo(year, month, day, list);
        QTEST(list.count(), "days");
        QTEST(list.currentText(), "selected");
    }
};

QTEST_MAIN(TextRoutinesTest)
#include "TextRoutinesTest.moc"
