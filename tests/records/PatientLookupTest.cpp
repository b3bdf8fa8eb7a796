#include "contracts/StatusPanels.h"
#include "frame/components.h"
#include "records/patient_lookup.h"
#include "screenparts/fill_routines.h"
#include "support/StationInABox.h"
#include "visit/VisitContext.h"

#include <QTest>

using namespace Qt::StringLiterals;

class PatientLookupTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void AgeAndSex_data()
    {
        QTest::addColumn<QString>("ymd");
        QTest::addColumn<QString>("jumin");
        QTest::addColumn<QString>("age");
        QTest::addColumn<QString>("sex");
        QTest::newRow("birthday") << u"20261124"_s << u"8011241234567"_s << u"046 0"_s << u"M"_s;
        QTest::newRow("day before the birthday") << u"20261123"_s << u"8011242234567"_s << u"045 12"_s << u"F"_s;
        QTest::newRow("months of a birthday to come") << u"20260301"_s << u"8011241234567"_s << u"045 4"_s << u"M"_s;
        QTest::newRow("3 is this century") << u"20261124"_s << u"0501013234567"_s << u"021 10"_s << u"M"_s;
        QTest::newRow("4 is this century") << u"20261124"_s << u"0501014234567"_s << u"021 10"_s << u"F"_s;
        QTest::newRow("5 is the last century") << u"20261124"_s << u"8001015234567"_s << u"046 10"_s << u"M"_s;
        QTest::newRow("7 is this century") << u"20261124"_s << u"0501017234567"_s << u"021 10"_s << u"M"_s;
        QTest::newRow("9 is the one before") << u"20261124"_s << u"9901019234567"_s << u"127 10"_s << u"M"_s;
        QTest::newRow("0 is the one before") << u"20261124"_s << u"9901010234567"_s << u"127 10"_s << u"F"_s;
        QTest::newRow("dash inside") << u"20261124"_s << u"800101-1234567"_s << u"000 00"_s << u"F"_s;
        QTest::newRow("no number") << u"20261124"_s << QString() << u"000 00"_s << u"F"_s;
        QTest::newRow("no date") << u"20261399"_s << u"8001011234567"_s << QString() << u"M"_s;
    }

    void AgeAndSex()
    {
        QFETCH(QString, ymd);
        QFETCH(QString, jumin);
        QTEST(AgeText(ymd, jumin), "age");
        QTEST(SexText(jumin), "sex");
    }

    void InsuranceRowAndVerdict_data()
    {
        QTest::addColumn<QString>("rows");
        QTest::addColumn<QString>("yuhyung");
        QTest::addColumn<QString>("ymd");
        QTest::addColumn<QString>("rowFound");
        QTest::addColumn<QString>("verdict");
        const QString insurance = u"INSERT INTO bh (bh_chart, bh_chymd, bh_yuhyung, bh_saupkiho, bh_jongbl) VALUES "
                                  "('00001234', '%1', '%2', '%3', '%4');"_s;
        const QString other = insurance.arg(u"20210601"_s, u"05"_s, u"S"_s, u"00"_s);
        QTest::newRow("newest of the type up to the date")
            << insurance.arg(u"20220101"_s, u"01"_s, u"S"_s, QString()) + other +
                   insurance.arg(u"20270101"_s, u"01"_s, u"S"_s, QString())
            << u"01"_s << u"20261124"_s << u"20220101"_s << QString();
        QTest::newRow("no type takes any") << other << QString() << u"20261124"_s << u"20210601"_s << QString();
        QTest::newRow("another type only") << QString() << u"07"_s << u"20261124"_s << u"20200101"_s << QString();
        QTest::newRow("only later rows") << QString() << u"01"_s << u"20190315"_s << u"20200101"_s
                                         << u"Y 2019년 03월 15일 이후에 등록되었습니다. \r\n적용일자를 확인하세요."_s;
        QTest::newRow("no workplace") << insurance.arg(u"20230101"_s, u"01"_s, QString(), QString()) << u"01"_s
                                      << u"20261124"_s << u"20230101"_s
                                      << u"Y 사업장기호가 없습니다. \r\n사업장기호를 확인하세요."_s;
        QTest::newRow("type 04 needs none") << insurance.arg(u"20230101"_s, u"04"_s, QString(), QString()) << u"04"_s
                                            << u"20261124"_s << u"20230101"_s << QString();
        QTest::newRow("type 05 without its kind")
            << insurance.arg(u"20230101"_s, u"05"_s, u"S"_s, QString()) << u"05"_s << u"20261124"_s << u"20230101"_s
            << u"Y 의료급여 종별이 없습니다. \r\n의료급여 종별을 확인하세요."_s;
        QTest::newRow("type 05 with kind 00") << insurance.arg(u"20230101"_s, u"05"_s, u"S"_s, u"00"_s) << u"05"_s
                                              << u"20261124"_s << u"20230101"_s << QString();
        QTest::newRow("no resident number") << u"UPDATE wj SET wj_jumin = NULL;"_s << u"01"_s << u"20261124"_s
                                            << u"20200101"_s << u"Y 주민번호가 없습니다. \r\n주민번호를 확인하세요."_s;
        QTest::newRow("nobody") << u"DELETE FROM wj;"_s << u"01"_s << u"20261124"_s << QString()
                                << u"N 인적사항이 없습니다. 확인하세요. "_s;
    }

    void InsuranceRowAndVerdict()
    {
        QFETCH(QString, rows);
        QFETCH(QString, yuhyung);
        QFETCH(QString, ymd);
        for (const QString& driver : {u"QSQLITE"_s, u"QMARIADB"_s}) {
            StationInABox box(driver);
            if (!rows.isEmpty())
                box.Run(rows);
            PatientRecordFields patient;
            QTEST(LookupPatient(u"00001234"_s, yuhyung, patient, ymd), "verdict");
            QTEST(patient.Chymd, "rowFound");
        }
    }

    void DiscountRates_data()
    {
        QTest::addColumn<QString>("own");
        QTest::addColumn<QString>("workplace");
        QTest::addColumn<QString>("rate");
        QTest::newRow("over a hundred") << u"150"_s << QString() << u"100"_s;
        QTest::newRow("letters") << u"abc"_s << QString() << u"0"_s;
        QTest::newRow("leading zero") << u"012"_s << QString() << u"12"_s;
        QTest::newRow("of the workplace") << u"0"_s << u"30"_s << u"30"_s;
        QTest::newRow("own one stays") << u"20"_s << u"30"_s << u"20"_s;
        QTest::newRow("workplace with rubbish") << u"0"_s << u"x"_s << u"0"_s;
    }

    void DiscountRates()
    {
        QFETCH(QString, own);
        QFETCH(QString, workplace);
        StationInABox box;
        box.Run(u"UPDATE wj SET wj_ibdc = '%1';"_s.arg(own));
        if (!workplace.isEmpty())
            box.Run(u"INSERT INTO jh (jh_saupkiho, jh_saupmyung, jh_hal) VALUES ('31100001', '나래상사', '%1');"_s.arg(
                workplace));
        PatientRecordFields patient;
        LookupPatient(u"00001234"_s, u"01"_s, patient, u"20261124"_s);
        QTEST(patient.Ibdc, "rate");
    }

    void PanelsShowThePatient()
    {
        StationInABox box;
        const auto bar = CreateObject<StatusPanels>(u"MSComctlLib.StatusBar"_s);
        bar->setPanelCount(8);
        ShowPatientPanels(*bar);
        QStringList texts;
        for (int panel = 1; panel <= 8; ++panel)
            texts << bar->Text(panel);
        QCOMPARE(texts, (QStringList{u"00001234"_s, u"01"_s, u"홍길동"_s, u"M"_s, u"46세"_s, u"02-123-4567"_s,
                                     u"800101-1234567"_s, u"서울 강남구 역삼동 12-3번지"_s}));

        box.Run(u"DELETE FROM pt; UPDATE wj SET wj_suname = 'O''Brien', wj_tel = NULL;"_s);
        ShowPatientPanels(*bar);
        QCOMPARE(bar->Text(3), u"O'Brien"_s);
        QCOMPARE(bar->Text(6), QString());
        QCOMPARE(bar->Text(8), QString());
    }

    void AnUnknownPatientLeavesTheScreenUsable()
    {
        StationInABox box;
        box.Run(u"DELETE FROM wj;"_s);
        const auto bar = CreateObject<StatusPanels>(u"MSComctlLib.StatusBar"_s);
        bar->setPanelCount(8);
        ShowPatientPanels(*bar);
        QCOMPARE(bar->Text(1), u"00001234"_s);
        QCOMPARE(bar->Text(3), QString());
        QCOMPARE(bar->Text(4), u"F"_s);
        QCOMPARE(bar->Text(5), u"0세"_s);
        QCOMPARE(bar->Text(7), QString());
    }
};

QTEST_MAIN(PatientLookupTest)
#include "PatientLookupTest.moc"
