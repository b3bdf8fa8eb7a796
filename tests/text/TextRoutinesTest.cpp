#include "screenparts/fill_routines.h"
#include "support/testing.h"
#include "text/text_routines.h"

using namespace Qt::StringLiterals;

class TextRoutinesTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void CleanText_data()
    {
        Columns<QString, int, QString>("text", "count", "clean");
        QTest::newRow("an apostrophe keeps its place") << u"a'b"_s << 3 << u"a b"_s;
        QTest::newRow("a long text is cut") << u"abcde"_s << 3 << u"abc"_s;
        QTest::newRow("backslashes and NUL") << u"C:\\a"_s + QChar(u'\0') + u"b"_s << 6 << u"C:/a b"_s;
        QTest::newRow("Korean") << u"위'내시경\\"_s << 6 << u"위 내시경/"_s;
    }

    void CleanText()
    {
        QFETCH2(QString, text, int, count);
        QTEST(::CleanText(text, count), "clean");
    }

    void LayIntoMask_data()
    {
        Columns<QString, QString, QString>("text", "mask", "laid");
        QTest::newRow("date on screen") << u"20260105"_s << u"0000-00-00"_s << u"2026-01-05"_s;
        QTest::newRow("digit too many stands in front")
            << u"20260105"_s << u"000년 00월 00일"_s << u"2026년 01월 05일"_s;
        QTest::newRow("resident number") << u"8001011234567"_s << u"000000-0000000"_s << u"800101-1234567"_s;
        QTest::newRow("leading zeros are kept by the mask")
            << u"0501013234567"_s << u"000000-0000000"_s << u"050101-3234567"_s;
        QTest::newRow("text with a dash stays") << u"800101-1234567"_s << u"000000-0000000"_s << u"800101-1234567"_s;
        QTest::newRow("number of a picture") << u"7"_s << u"000"_s << u"007"_s;
        QTest::newRow("number over the mask") << u"1000"_s << u"000"_s << u"1000"_s;
    }

    void LayIntoMask()
    {
        QFETCH2(QString, text, QString, mask);
        QTEST(::LayIntoMask(text, mask), "laid");
    }

    void WholeNumber_data()
    {
        Columns<QString, QString, int>("text", "whole", "number");
        QTest::newRow("half to even, down") << u"2.5"_s << u"2"_s << 2;
        QTest::newRow("over half") << u"2.51"_s << u"3"_s << 3;
        QTest::newRow("carry") << u"99.9"_s << u"100"_s << 100;
        QTest::newRow("letters") << u"1a"_s << QString() << 0;
        QTest::newRow("empty") << u" "_s << QString() << 0;
        QTest::newRow("beyond 32 bits") << u"99999999999"_s << u"99999999999"_s << 2147483647;
    }

    void WholeNumber()
    {
        QFETCH(QString, text);
        QTEST(WholeNumberText(text), "whole");
        QTEST(::WholeNumber(text), "number");
    }

    void FillDayCombo_data()
    {
        Columns<QString, QString, QString, int, QString>("year", "month", "day", "days", "selected");
        QTest::newRow("day beyond the month") << u"2025"_s << u"02"_s << u"31"_s << 28 << u"01"_s;
        QTest::newRow("leap year") << u"2024"_s << u"02"_s << u"29"_s << 29 << u"29"_s;
        QTest::newRow("no such month leaves the list") << u"2026"_s << u"13"_s << u"1"_s << 1 << u"before"_s;
    }

    void FillDayCombo()
    {
        QFETCH3(QString, year, QString, month, QString, day);
        QComboBox list;
        list.addItem(u"before"_s);
        ::FillDayCombo(year, month, day, list);
        QTEST(list.count(), "days");
        QTEST(list.currentText(), "selected");
    }
};

QTEST_MAIN(TextRoutinesTest)
#include "TextRoutinesTest.moc"
