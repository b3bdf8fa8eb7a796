#include "contracts/fpSpread.h"
#include "contracts/PlatformError.h"
#include "frame/components.h"
#include "frame/services.h"
#include "records/capture_index.h"
#include "records/tables.h"
#include "screenparts/fill_routines.h"
#include "screenparts/NoteBox.h"
#include "screenparts/picture_grid.h"
#include "support/StationInABox.h"
#include "visit/VisitContext.h"

#include <QTest>
#include <QTimer>

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

int Fill(fpSpread& grid, int gridNumber)
{
    return LoadCaptureList(On(Day), grid, gridNumber, false);
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
        QTest::addColumn<int>("gridNumber");
        QTest::addColumn<int>("pictures");
        QTest::addColumn<int>("lastColumn");
        QTest::addColumn<int>("lastRow");
        QTest::addColumn<int>("nextColumn");
        QTest::addColumn<int>("nextRow");
        QTest::newRow("none") << 1 << 0 << 0 << 0 << 1 << 1;
        QTest::newRow("seven across five columns") << 1 << 7 << 2 << 3 << 3 << 3;
        QTest::newRow("a full pair") << 1 << 5 << 5 << 1 << 1 << 3;
        QTest::newRow("three across the history") << 2 << 3 << 6 << 1 << 2 << 3;
        QTest::newRow("two across the history") << 2 << 2 << 4 << 1 << 6 << 1;
    }

    void PicturesFillTheGridInPairs()
    {
        QFETCH(int, gridNumber);
        QFETCH(int, pictures);
        QFETCH(int, lastColumn);
        QFETCH(int, lastRow);
        const auto grid = MakeGrid(6, 20);
        for (int number = 1; number <= pictures; ++number)
            m_box->AddPicture(Day, Stomach, number);
        QCOMPARE(Fill(*grid, gridNumber), pictures);
        if (pictures > 0) {
            QVERIFY(HasPicture(*grid, lastColumn, lastRow));
            QCOMPARE(CellText(*grid, lastColumn, lastRow + 1), NumberTextOf(pictures));
            QCOMPARE(grid->ActiveRow(), lastRow);
        }
        QCOMPARE(grid->DataRowCnt(), pictures == 0 ? 0 : lastRow + 1);
        int row = 0;
        int column = 0;
        NextGridSlot(0, row, column, gridNumber, *grid);
        QTEST(column, "nextColumn");
        QTEST(row, "nextRow");
        // A box ticked further down is no picture.
        grid->setRow(15);
        grid->setCol(1);
        grid->setCellType(CellTypeCheckBox);
        grid->setValue(u"1"_s);
        NextGridSlot(0, row, column, gridNumber, *grid);
        QTEST(column, "nextColumn");
        QTEST(row, "nextRow");
    }

    void AMissingFileTakesNoPlaceButItsNumberCounts()
    {
        for (const int number : {1, 2, 3, 1000})
            m_box->AddPicture(Day, Stomach, number);
        DeleteFile(m_box->PicturePath(Day, Stomach, 2));
        const auto grid = MakeGrid(5, 20);
        QCOMPARE(Fill(*grid, 1), 1000);
        QCOMPARE(CellText(*grid, 2, 2), u"003"_s);
        QCOMPARE(CellText(*grid, 3, 2), u"1000"_s);
        QCOMPARE(NextCaptureNo(On(Day)), 1000);
        QCOMPARE(NextCaptureNo(On(Day, u"대장내시경"_s)), 0);
    }

    void FilesThatAreNoPictures_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::newRow("empty") << QByteArray();
        QTest::newRow("text") << QByteArray("not a picture at all");
        QTest::newRow("cut in the header") << StationInABox::Jpeg({640, 480}, Qt::red).left(60);
        QByteArray huge = StationInABox::Jpeg({64, 48}, Qt::red);
        const qsizetype frame = huge.indexOf("\xff\xc0");
        huge.replace(frame + 5, 4, QByteArray("\xfd\xe8\xfd\xe8", 4));
        QTest::newRow("65,000 pixels high and wide by its header") << huge;
    }

    void FilesThatAreNoPictures()
    {
        QFETCH(QByteArray, content);
        m_box->AddPicture(Day, Stomach, 1);
        m_box->AddPicture(Day, Stomach, 2);
        WriteWholeFile(m_box->PicturePath(Day, Stomach, 1), content);
        const auto grid = MakeGrid(5, 20);
        Fill(*grid, 1);
        QCOMPARE(CellText(*grid, 1, 2), u"001"_s);
        QVERIFY(HasPicture(*grid, 2, 1));
    }

    void TheGridGrowsForALongVisit()
    {
        for (int number = 1; number <= 11; ++number)
            m_box->AddPicture(Day, Stomach, number);
        const auto grid = MakeGrid(6, 4);
        Fill(*grid, 2);
        QCOMPARE(grid->MaxRows(), 8);
        QCOMPARE(CellText(*grid, 4, 8), u"011"_s);
    }

    void ANewerFillEndsTheOlder()
    {
        for (int number = 1; number <= 20; ++number)
            m_box->AddPicture(Day, Stomach, number);
        m_box->AddPicture(u"20251231"_s, Stomach, 7);
        const auto grid = MakeGrid(5, 20);
        bool inner = false;
        QTimer::singleShot(0, this, [&] {
            inner = true;
            LoadCaptureList(On(u"20251231"_s), *grid, 1, false);
        });
        Fill(*grid, 1);
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
        fpSpread& filled = *grid;
        QVERIFY(Fill(filled, 1) < 20);
        QVERIFY(grid == nullptr);
    }

    void NoteOfAVisit()
    {
        NoteBox box;
        m_box->AddPicture(Day, Stomach, 1, u"  염증 있음 "_s);
        LoadCaptureNote(On(Day), box);
        QCOMPARE(box.toPlainText(), u"염증 있음"_s);
        QVERIFY(box.IsLoaded() && !box.IsTouched());

        m_box->Run(u"ALTER TABLE ca RENAME TO ca_gone;"_s);
        QVERIFY_EXCEPTION_THROWN(LoadCaptureNote(On(Day, u"x"_s), box), PlatformError);
        QVERIFY(!box.IsLoaded() && box.isReadOnly());
        QCOMPARE(box.toPlainText(), QString());
    }

    void HistoryIsNewestFirstAndLeavesOldNotesBelow()
    {
        const auto pictures = MakeGrid(6, 50);
        const auto visits = MakeGrid(3, 2);
        RegisterHistoryGrids(pictures.get(), visits.get());
        m_box->AddPicture(u"20240105"_s, Stomach, 1, u"old"_s);
        m_box->AddPicture(u"20250607"_s, u"대장내시경"_s, 1, u"middle"_s);
        m_box->AddPicture(Day, Stomach, 1, u"new"_s);
        LoadVisitHistory(CurrentVisit(), u"A"_s);
        QCOMPARE(visits->MaxRows(), 3);
        QCOMPARE(CellText(*visits, 1, 1), Day);
        QCOMPARE(CellText(*visits, 2, 2), u"대장내시경"_s);
        QCOMPARE(CellText(*visits, 3, 3), u"old"_s);

        m_box->Run(u"DELETE FROM ca WHERE ca_ymd < '20260101';"_s);
        LoadVisitHistory(CurrentVisit(), u"A"_s);
        QCOMPARE(CellText(*visits, 1, 2), QString());
        QCOMPARE(CellText(*visits, 3, 2), u"middle"_s);
        QCOMPARE(visits->DataRowCnt(), 3);
    }

    void EndoIsMadeWhenItIsMissing()
    {
        QVERIFY(EnsureTable(Connection, {}, u"endo"_s, false));
        m_box->Run(u"DROP TABLE endo;"_s);
        QVERIFY(!EnsureTable(Connection, {}, u"endo"_s, false));
        QVERIFY(EnsureTable(Connection, {}, u"endo"_s, true));
        QVERIFY(EnsureTable(Connection, {}, u"endo"_s, false));
    }

    void PathsStayBelowTheRoot()
    {
        QCOMPARE((Visit{u"00001234"_s, {}, Day, Stomach, u"R\\2026\\"_s, u"jpg"_s}.PicturePath(7)),
                 u"R\\2026\\위내시경\\0000123420261124007.jpg"_s);
        QCOMPARE(LogFolder(u"R\\2026\\"_s, Stomach), u"R\\2026\\위내시경Log\\"_s);
        QVERIFY_EXCEPTION_THROWN(SectionFolder(u"R\\2026\\"_s, u".."_s), PlatformError);
        QVERIFY_EXCEPTION_THROWN(SectionFolder(u"R\\2026\\"_s, u"a/../../b"_s), PlatformError);
        QVERIFY_EXCEPTION_THROWN(YearFolder(u"R\\"_s, u"..\\.0101"_s), PlatformError);
        QVERIFY_EXCEPTION_THROWN(SectionFolder(u"R\\"_s, QString(10000, u'가')), PlatformError);
        const Visit hostile{u"../../x"_s, {}, Day, Stomach, u"R\\"_s, u"jpg"_s};
        QVERIFY_EXCEPTION_THROWN(hostile.PicturePath(1), PlatformError);
        const Visit visit{u"00001234"_s, {}, Day, Stomach, {}, u"jpg"_s};
        QCOMPARE(visit.PictureNumber(u"0000123420261124012.jpg"_s), 12);
        QCOMPARE(visit.PictureNumber(u"0000123420261124012.bmp"_s), 0);
        QCOMPARE(visit.PictureNumber(u"00001234202611240x2.jpg"_s), 0);
    }

private:
    static QString NumberTextOf(int number) { return QString::number(number).rightJustified(3, u'0'); }

    std::unique_ptr<StationInABox> m_box;
};

QTEST_MAIN(CaptureIndexTest)
#include "CaptureIndexTest.moc"
