#include "contracts/setup_components.h"
#include "contracts/StatusPanels.h"
#include "identifiers/dicom_uids.h"
#include "records/capture_index.h"
#include "records/patient_lookup.h"
#include "records/study_identity.h"
#include "records/tables.h"
#include "screenparts/fill_routines.h"
#include "screenparts/NoteBox.h"
#include "screenparts/picture_grid.h"
#include "screenparts/VisitPictures.h"
#include "support/StationInABox.h"

using namespace Qt::StringLiterals;

namespace {

const QString Stomach = u"위내시경"_s;
const QString Day = u"20261124"_s;

std::unique_ptr<fpSpread> MakeGrid(int columns, int rows)
{
    auto grid = CreateObject<fpSpread>(u"FPSpreadADO.fpSpread"_s);
    grid->setMaxCols(columns);
    grid->setMaxRows(rows);
    grid->resize(560, 231);
    return grid;
}

bool HasPicture(fpSpread& grid, int column, int row)
{
    grid.setRow(row);
    grid.setCol(column);
    return grid.CellType() == CellTypePicture && !grid.TypePictPicture().isNull();
}

Visit On(const QString& ymd, const QString& etc = Stomach)
{
    return VisitOf(VisitContext.Chart, VisitContext.Yuhyung, ymd, etc);
}

int Fill(VisitPictures& pictures)
{
    return LoadCaptureList(On(Day), pictures, false);
}

} // namespace

class CaptureIndexTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { m_box = std::make_unique<StationInABox>(); }
    void cleanup() { m_box.reset(); }

    void PicturesFillTheGridInPairs_data()
    {
        Columns<int, int, int, int, QList<int>>("layout", "pictures", "lastColumn", "lastRow", "chosen");
        const auto row = [](const char* name, int layout, int pictures, int column, int lastRow,
                            const QList<int>& chosen) {
            QTest::newRow(name) << layout << pictures << column << lastRow << chosen;
        };
        row("none", 1, 0, 0, 0, {});
        row("seven across five columns", 1, 7, 2, 3, {1, 2, 3, 6, 7});
        row("a full pair", 1, 5, 5, 1, {1, 2, 3});
        row("three across the history", 2, 3, 6, 1, {});
        row("four across the history", 2, 4, 2, 3, {4});
        row("a picture beyond the rows of the grid", 2, 31, 2, 21, {4, 22});
    }

    void PicturesFillTheGridInPairs()
    {
        QFETCH4(int, layout, int, pictures, int, lastColumn, int, lastRow);
        const auto grid = MakeGrid(6, 20);
        VisitPictures shown(*grid, layout);
        for (int number = 1; number <= pictures; ++number)
            m_box->AddPicture(Day, Stomach, number);
        QCOMPARE(Fill(shown), pictures);
        QCOMPARE(shown.All().size(), pictures);
        if (pictures > 0) {
            QVERIFY(HasPicture(*grid, lastColumn, lastRow));
            QCOMPARE(CellText(*grid, lastColumn, lastRow + 1), NumberTextOf(pictures));
            QCOMPARE(grid->ActiveRow(), lastRow);
        }
        QCOMPARE(grid->DataRowCnt(), pictures == 0 ? 0 : lastRow + 1);
        // A box ticked further down is no picture.
        for (const int row : {3, 15}) {
            grid->setRow(row);
            grid->setCol(1);
            if (layout == 2) {
                grid->setCellType(CellTypeCheckBox);
                grid->setValue(u"1"_s);
            }
        }
        // One that waits for its number stands behind the others, and goes to no sheet.
        shown.Add({{u"a"_s, 0}, QImage(8, 8, QImage::Format_RGB32), u"기록 대기"_s});
        const QPoint waiting = *shown.PlaceOf({u"a"_s, 0});
        QCOMPARE(CellText(*grid, waiting.x(), waiting.y() + 1), u"대기"_s);
        QVERIFY(shown.At(waiting.x(), waiting.y())->id == u"a"_s && shown.FileAt(waiting.x(), waiting.y()).isEmpty());
        QVERIFY(!shown.At(waiting.x(), waiting.y() + 1) && !shown.At(1, waiting.y() + 2));
        QList<int> chosen;
        for (const auto& [number, path] : shown.Chosen())
            chosen << number;
        QTEST(chosen, "chosen");
        // It gets its number, is found by it in the next fill, and keeps its identity.
        shown.Update(pictures, [&](VisitPictures::Picture& picture) { picture.number = pictures + 1; });
        m_box->AddPicture(Day, Stomach, pictures + 1);
        Fill(shown);
        QCOMPARE(shown.Find({u"a"_s, 0}), pictures);
        shown.Remove(0);
        QCOMPARE(shown.Find({{}, pictures + 1}), pictures - 1);
    }

    void AMissingFileTakesNoPlace()
    {
        for (const int number : {1, 2, 3, 1000})
            m_box->AddPicture(Day, Stomach, number);
        DeleteFile(m_box->PicturePath(Day, Stomach, 2));
        const auto grid = MakeGrid(5, 20);
        VisitPictures shown(*grid, 1);
        QCOMPARE(Fill(shown), 1000);
        QCOMPARE(CellText(*grid, 2, 2), u"003"_s);
        QCOMPARE(CellText(*grid, 3, 2), u"1000"_s);
    }

    void ANewerFillEndsTheOlder()
    {
        for (int number = 1; number <= 20; ++number)
            m_box->AddPicture(Day, Stomach, number);
        m_box->AddPicture(u"20251231"_s, Stomach, 7);
        const auto grid = MakeGrid(5, 20);
        VisitPictures shown(*grid, 1);
        bool inner = false;
        QTimer::singleShot(0, this, [&] {
            inner = true;
            LoadCaptureList(On(u"20251231"_s), shown, false);
        });
        Fill(shown);
        QVERIFY(inner);
        QCOMPARE(grid->DataRowCnt(), 2);
        QCOMPARE(CellText(*grid, 1, 2), u"007"_s);
    }

    void AFillSurvivesTheEndOfItsGrid()
    {
        for (int number = 1; number <= 20; ++number)
            m_box->AddPicture(Day, Stomach, number);
        auto grid = MakeGrid(5, 20);
        QTimer::singleShot(0, this, [&] { grid.reset(); });
        VisitPictures shown(*grid, 1);
        QVERIFY(Fill(shown) < 20);
        QVERIFY(grid == nullptr);
    }

    void PathsStayBelowTheRoot()
    {
        QCOMPARE((Visit{u"00001234"_s, {}, Day, Stomach, u"R\\2026\\"_s, u"jpg"_s}.PicturePath(7)),
                 u"R\\2026\\위내시경\\0000123420261124007.jpg"_s);
        QCOMPARE(LogFolder(u"R\\2026\\"_s, Stomach), u"R\\2026\\위내시경Log\\"_s);
        QVERIFY_THROWS_EXCEPTION(PlatformError, SectionFolder(u"R\\2026\\"_s, u".."_s));
        QVERIFY_THROWS_EXCEPTION(PlatformError, SectionFolder(u"R\\2026\\"_s, u"a/../../b"_s));
        QVERIFY_THROWS_EXCEPTION(PlatformError, YearFolder(u"R\\"_s, u"..\\.0101"_s));
        QVERIFY_THROWS_EXCEPTION(PlatformError, SectionFolder(u"R\\"_s, QString(10000, u'가')));
        const Visit hostile{u"../../x"_s, {}, Day, Stomach, u"R\\"_s, u"jpg"_s};
        QVERIFY_THROWS_EXCEPTION(PlatformError, hostile.PicturePath(1));
        const Visit visit{u"00001234"_s, {}, Day, Stomach, {}, u"jpg"_s};
        QCOMPARE(visit.PictureNumber(u"0000123420261124012.jpg"_s), 12);
        QCOMPARE(visit.PictureNumber(u"0000123420261124012.bmp"_s), 0);
        QCOMPARE(visit.PictureNumber(u"00001234202611240x2.jpg"_s), 0);
    }

    void AgeAndSex_data()
    {
        Columns<QString, QString, QString, QString>("ymd", "jumin", "age", "sex");
        QTest::newRow("birthday") << u"20261124"_s << u"8011241234567"_s << u"046 0"_s << u"M"_s;
        QTest::newRow("day before the birthday") << u"20261123"_s << u"8011242234567"_s << u"045 12"_s << u"F"_s;
        QTest::newRow("months of a birthday to come") << u"20260301"_s << u"8011241234567"_s << u"045 4"_s << u"M"_s;
        QTest::newRow("5 is the last century") << u"20261124"_s << u"8001015234567"_s << u"046 10"_s << u"M"_s;
        QTest::newRow("7 is this century") << u"20261124"_s << u"0501017234567"_s << u"021 10"_s << u"M"_s;
        QTest::newRow("9 is the one before") << u"20261124"_s << u"9901019234567"_s << u"127 10"_s << u"M"_s;
        QTest::newRow("dash inside") << u"20261124"_s << u"800101-1234567"_s << u"000 00"_s << u"F"_s;
        QTest::newRow("no number") << u"20261124"_s << QString() << u"000 00"_s << u"F"_s;
        QTest::newRow("no date") << u"20261399"_s << u"8001011234567"_s << QString() << u"M"_s;
    }

    void AgeAndSex()
    {
        QFETCH2(QString, ymd, QString, jumin);
        QTEST(AgeText(ymd, jumin), "age");
        QTEST(SexText(jumin), "sex");
    }

    void InsuranceRowAndVerdict_data()
    {
        Columns<QString, QString, QString, QString, QString>("rows", "yuhyung", "ymd", "rowFound", "verdict");
        const QString insurance = u"INSERT INTO bh (bh_chart, bh_chymd, bh_yuhyung, bh_saupkiho, bh_jongbl) VALUES "
                                  "('00001234', '%1', '%2', '%3', '%4');"_s;
        const QString other = insurance.arg(u"20210601"_s, u"05"_s, u"S"_s, u"00"_s);
        QTest::newRow("newest of the type up to the date")
            << insurance.arg(u"20220101"_s, u"01"_s, u"S"_s, QString()) + other +
                   insurance.arg(u"20270101"_s, u"01"_s, u"S"_s, QString())
            << u"01"_s << u"20261124"_s << u"20220101"_s << QString();
        QTest::newRow("no type takes any") << other << QString() << u"20261124"_s << u"20210601"_s << QString();
        QTest::newRow("only later rows") << QString() << u"01"_s << u"20190315"_s << u"20200101"_s
                                         << u"Y 2019년 03월 15일 이후에 등록되었습니다. \r\n적용일자를 확인하세요."_s;
        QTest::newRow("no workplace") << insurance.arg(u"20230101"_s, u"01"_s, QString(), QString()) << u"01"_s
                                      << u"20261124"_s << u"20230101"_s
                                      << u"Y 사업장기호가 없습니다. \r\n사업장기호를 확인하세요."_s;
        QTest::newRow("type 05 without its kind")
            << insurance.arg(u"20230101"_s, u"05"_s, u"S"_s, QString()) << u"05"_s << u"20261124"_s << u"20230101"_s
            << u"Y 의료급여 종별이 없습니다. \r\n의료급여 종별을 확인하세요."_s;
        QTest::newRow("no resident number") << u"UPDATE wj SET wj_jumin = NULL;"_s << u"01"_s << u"20261124"_s
                                            << u"20200101"_s << u"Y 주민번호가 없습니다. \r\n주민번호를 확인하세요."_s;
        QTest::newRow("nobody") << u"DELETE FROM wj;"_s << u"01"_s << u"20261124"_s << QString()
                                << u"N 인적사항이 없습니다. 확인하세요. "_s;
    }

    void InsuranceRowAndVerdict()
    {
        QFETCH3(QString, rows, QString, yuhyung, QString, ymd);
        for (const QString& driver : {u"QSQLITE"_s, u"QMARIADB"_s}) {
            StationInABox box(driver);
            if (!rows.isEmpty())
                box.Run(rows);
            PatientRecordFields patient;
            QTEST(LookupPatient(u"00001234"_s, yuhyung, patient, ymd), "verdict");
            QTEST(patient.Chymd, "rowFound");
        }
    }

    void OtherSystemsLearnBirthAndSexOfAMaskedNumber_data()
    {
        Columns<QString, QString>("jumin", "expected");
        for (const QString& told : {u"800101-1234567"_s, u"800101-1******"_s, u"8001011"_s, u"800101 - 1"_s})
            QTest::addRow("%s", qPrintable(told)) << told << u"19800101M"_s;
        for (const QString& hidden : {u"800101-*******"_s, u"801301-1234567"_s, u"800101"_s, QString()})
            QTest::addRow("'%s'", qPrintable(hidden)) << hidden << QString();
    }

    void OtherSystemsLearnBirthAndSexOfAMaskedNumber()
    {
        QFETCH(QString, jumin);
        m_box->Run(u"UPDATE wj SET wj_jumin = '%1'"_s.arg(jumin));
        const DicomPicture facts = PictureFacts(On(Day), {}, {}, {{1, {u"1"_s, u"나래의원"_s}}});
        QTEST(facts.birthDate + facts.sex, "expected");
        QCOMPARE(facts.institution, u"나래의원"_s);
    }

    /// Two stations with two setups send the same visit: it is one study. Without its table both go on, each as its
    /// setup tells.
    void WhatAVisitIsKnownUnderStays_data()
    {
        Columns<QString>("driver");
        QTest::newRow("SQLite") << u"QSQLITE"_s;
        QTest::newRow("MariaDB") << u"QMARIADB"_s;
    }

    void WhatAVisitIsKnownUnderStays()
    {
        QFETCH(QString, driver);
        StationInABox box(driver);
        box.Run(u"DROP TABLE ca_uid"_s);
        const Visit visit = On(Day);
        const SaupRecords places{{1, {u" 11 "_s, {}}}, {2, {{}, {}}}, {3, {u"11"_s, {}}}};
        QCOMPARE(NewIdentity(visit, {}, {{1, {}}, {2, {u"22"_s, {}}}}), std::nullopt);
        QCOMPARE(FormerIdentities(visit, {}, places),
                 (QList<DicomIdentity>{{u"11"_s, {}, visit.chart, {}}, {{}, {}, visit.chart, {}}}));
        PacsSetupRecord setup;
        setup.PatientIdPrefix = u"N-"_s;
        const DicomIdentity own = NewIdentity(visit, setup, places).value_or(DicomIdentity());
        QCOMPARE(own, (DicomIdentity{u"11"_s, {}, u"N-"_s + visit.chart, u"11"_s}));
        QCOMPARE(KeptIdentity(visit), std::nullopt);
        QCOMPARE(KeepIdentity(visit, own), own);

        ConnectionPointer other = OpenConnection(box.Database().Settings());
        CreateObject<clsTableKeeper>(u"prjTableKeeper.clsTableKeeper"_s)->tablecreate(other, u"ca_uid"_s, {});
        QCOMPARE(KeptIdentity(visit), std::nullopt);
        // Between this station's look and its row the other one's row comes in.
        struct Quicker final : AdoConnection
        {
            QString DefaultDatabase() const override { return own->DefaultDatabase(); }
            std::unique_ptr<AdoRecordset> Execute(const QString& statement, ExecuteOption option) override
            {
                if (statement.startsWith(u" INSERT INTO ca_uid"_s))
                    other->Execute(QString(statement).replace(u"'11'"_s, u"'O''Brien'"_s));
                return own->Execute(statement, option);
            }
            void Queue(QObject* context, Work work, Done done) override
            {
                own->Queue(context, std::move(work), std::move(done));
            }
            std::unique_ptr<AdoRecordset> NewRecordset() override { return own->NewRecordset(); }

            ConnectionPointer own;
            ConnectionPointer other;
        };
        const auto quicker = std::make_shared<Quicker>();
        quicker->own = Connection;
        quicker->other = other;
        Connection = quicker;
        // The study that the other one has written stands, whatever the rest of its row would make of it.
        DicomPicture first;
        first.chart = visit.chart;
        first.ymd = visit.ymd;
        first.section = visit.etc;
        first.identity = own;
        const DicomIdentity theirs{u"O'Brien"_s, {}, own.patientId, u"O'Brien"_s, StudyUid(first)};
        QCOMPARE(KeepIdentity(visit, own), theirs);
        Connection = quicker->own;
        QCOMPARE(KeptIdentity(visit), theirs);
        QCOMPARE(KeepIdentity(visit, own), theirs);

        const Visit second = On(Day, u"대장내시경"_s);
        const DicomIdentity longest{QString(63, u'가') + u"🏥"_s, QString(30, u'1'), {}, {}};
        const DicomIdentity cut = KeepIdentity(second, longest);
        QCOMPARE(cut.institution, QString(63, u'가'));
        QCOMPARE(KeptIdentity(second), cut);
        DicomPicture picture;
        picture.chart = second.chart;
        picture.ymd = second.ymd;
        picture.section = second.etc;
        picture.identity = cut;
        QCOMPARE(box.Value(u"SELECT uid_study AS v FROM ca_uid WHERE uid_etc = '대장내시경'"_s), StudyUid(picture));
        box.Run(u"ALTER TABLE ca_uid RENAME COLUMN uid_root TO uid_stem"_s);
        QVERIFY_THROWS_EXCEPTION(PlatformError, KeptIdentity(visit));
    }

    void PanelsShowThePatient()
    {
        const auto bar = CreateObject<StatusPanels>(u"MSComctlLib.StatusBar"_s);
        bar->setPanelCount(8);
        ShowPatientPanels(*bar, CurrentVisit());
        QStringList texts;
        for (int panel = 1; panel <= 8; ++panel)
            texts << bar->Text(panel);
        QCOMPARE(texts, (QStringList{u"00001234"_s, u"01"_s, u"홍길동"_s, u"M"_s, u"46세"_s, u"02-123-4567"_s,
                                     u"800101-1234567"_s, u"서울 강남구 역삼동 12-3번지"_s}));

        m_box->Run(u"DELETE FROM pt; UPDATE wj SET wj_suname = 'O''Brien', wj_tel = NULL;"_s);
        ShowPatientPanels(*bar, CurrentVisit());
        QCOMPARE(bar->Text(3), u"O'Brien"_s);
        QCOMPARE(bar->Text(6), QString());
        QCOMPARE(bar->Text(8), QString());
    }

private:
    static QString NumberTextOf(int number) { return QString::number(number).rightJustified(3, u'0'); }

    std::unique_ptr<StationInABox> m_box;
};

QTEST_MAIN(CaptureIndexTest)
#include "CaptureIndexTest.moc"
