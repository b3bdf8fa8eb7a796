#include "platform/grid/register_grid.h"
#include "station_grids.h"

#include <QTest>

using namespace station_grids;

namespace {
enum class Do { Text, Picture, BadPicture, Tick, Untick, Empty, Clear, ClearData, Delete, Rows };

struct Step
{
    Do action;
    int column = 0;
    int row = 0;
    int column2 = 0;
    int row2 = 0;
};
using Steps = QList<Step>;

void Run(fpSpread& grid, const Step& step)
{
    grid.setCol(step.column);
    grid.setRow(step.row);
    switch (step.action) {
    case Do::Text:
        return grid.setText(u"007"_s);
    case Do::Empty:
        return grid.setText({});
    case Do::Picture:
        return PutPicture(grid, step.column, step.row, QImage(8, 8, QImage::Format_RGB32));
    case Do::BadPicture:
        return PutPicture(grid, step.column, step.row, {});
    case Do::Tick:
        return grid.setValue(u"1"_s);
    case Do::Untick:
        return grid.setValue(u"0"_s);
    case Do::Clear:
    case Do::ClearData:
        return grid.ClearRange(step.column, step.row, step.column2, step.row2, step.action == Do::ClearData);
    case Do::Delete:
        return grid.DeleteRows(step.row, step.row2);
    case Do::Rows:
        return grid.setMaxRows(step.row);
    }
}
} // namespace

Q_DECLARE_METATYPE(Steps)

class GridCellsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { RegisterGrid(); }

    void DataRowCnt_data();
    void DataRowCnt();
    void ClearedBoxesStayBoxes();
    void ClearGivesBackTheStoredTypes();
    void DeletedRowsMoveUp();
    void OutsideIsEmptyAndSwallows();
    void Geometry_data();
    void Geometry();
    void PictureIsKeptAtCellSize();
    void HundredThousandRows();
};

void GridCellsTest::DataRowCnt_data()
{
    QTest::addColumn<Steps>("steps");
    QTest::addColumn<int>("rows");

    const Steps twoPairs{{Do::Picture, 2, 1}, {Do::Text, 2, 2}, {Do::Picture, 2, 3}, {Do::Text, 2, 4}};
    QTest::newRow("nothing") << Steps{} << 0;
    QTest::newRow("text") << Steps{{Do::Text, 2, 4}} << 4;
    QTest::newRow("text emptied again") << Steps{{Do::Text, 2, 2}, {Do::Text, 2, 6}, {Do::Empty, 2, 6}} << 2;
    QTest::newRow("text written twice") << Steps{{Do::Text, 2, 4}, {Do::Text, 2, 4}, {Do::Empty, 2, 4}} << 0;
    QTest::newRow("picture alone") << Steps{{Do::Picture, 2, 3}} << 3;
    QTest::newRow("picture that can't be shown") << Steps{{Do::BadPicture, 2, 3}} << 3;
    QTest::newRow("tick below the pictures") << twoPairs + Steps{{Do::Tick, 1, 9}} << 9;
    QTest::newRow("tick taken away") << twoPairs + Steps{{Do::Tick, 1, 9}, {Do::Untick, 1, 9}} << 4;
    QTest::newRow("other columns keep the row") << twoPairs + Steps{{Do::Clear, 4, 1, 4, 50}} << 4;
    QTest::newRow("column by column") << twoPairs + Steps{{Do::Text, 4, 2}, {Do::Clear, 2, 1, 2, 4}} << 2;
    QTest::newRow("data only") << twoPairs + Steps{{Do::Tick, 1, 7}, {Do::ClearData, 1, 1, 6, 7}} << 0;
    QTest::newRow("limits beyond the grid") << twoPairs + Steps{{Do::Clear, 0, 0, 90, 900}} << 0;
    QTest::newRow("empty block") << twoPairs + Steps{{Do::Clear, 1, 1, 6, 0}} << 4;
    QTest::newRow("rows deleted above") << twoPairs + Steps{{Do::Delete, 0, 1, 0, 2}} << 2;
    QTest::newRow("last rows deleted") << twoPairs + Steps{{Do::Delete, 0, 3, 0, 99}} << 2;
    QTest::newRow("deleted around") << twoPairs + Steps{{Do::Text, 4, 20}, {Do::Delete, 0, 3, 0, 40}} << 2;
    QTest::newRow("grid shortened") << twoPairs + Steps{{Do::Rows, 0, 3}} << 3;
    QTest::newRow("shortened and grown") << twoPairs + Steps{{Do::Rows, 0, 1}, {Do::Rows, 0, 60}} << 1;
}

void GridCellsTest::DataRowCnt()
{
    QFETCH(Steps, steps);
    const auto grid = HistoryPictures();
    for (const Step& step : steps)
        Run(*grid, step);
    QTEST(grid->DataRowCnt(), "rows");
}

void GridCellsTest::ClearedBoxesStayBoxes()
{
    const auto grid = HistoryPictures();
    for (const int row : {1, 3, 49}) {
        grid->setRow(row);
        grid->setCol(3);
        QCOMPARE(grid->CellType(), CellTypeCheckBox);
        QCOMPARE(grid->Value(), u"0"_s);
        grid->setValue(u"1"_s);
        QCOMPARE(grid->Value(), u"1"_s);
    }
    grid->ClearRange(3, 1, 3, grid->DataRowCnt(), true);
    for (const int row : {1, 3, 49}) {
        grid->setRow(row);
        QCOMPARE(grid->CellType(), CellTypeCheckBox);
        QCOMPARE(grid->Value(), u"0"_s);
    }
}

void GridCellsTest::ClearGivesBackTheStoredTypes()
{
    const auto grid = VisitPictures();
    PutPicture(*grid, 1, 1, QImage(8, 8, QImage::Format_RGB32));
    Put(*grid, 1, 2, u"001"_s);
    grid->setMaxRows(22);
    grid->ClearRange(1, 1, 5, grid->DataRowCnt(), false);

    QCOMPARE(Get(*grid, 1, 2), QString());
    QCOMPARE(grid->CellType(), CellTypeStaticText);
    grid->setRow(1);
    QCOMPARE(grid->CellType(), CellTypeEdit);
    QVERIFY(grid->TypePictPicture().isNull());
    // Rows that came later have the stored types, too.
    grid->setRow(22);
    QCOMPARE(grid->CellType(), CellTypeStaticText);
}

void GridCellsTest::DeletedRowsMoveUp()
{
    const auto grid = HistoryList();
    for (int row = 1; row <= 10; ++row)
        Put(*grid, 1, row, QString::number(row));
    grid->DeleteRows(3, 4);
    QCOMPARE(grid->MaxRows(), 2000);
    QCOMPARE(Get(*grid, 1, 2), u"2"_s);
    QCOMPARE(Get(*grid, 1, 3), u"7"_s);
    QCOMPARE(Get(*grid, 1, 7), QString());
    grid->DeleteRows(0, 5);
    grid->DeleteRows(2001, 5);
    grid->DeleteRows(1, 2000);
    QCOMPARE(grid->MaxRows(), 2000);
    QCOMPARE(grid->DataRowCnt(), 0);
}

void GridCellsTest::OutsideIsEmptyAndSwallows()
{
    const auto grid = VisitPictures();
    for (const QPoint cell : {QPoint(1, 21), QPoint(6, 1), QPoint(0, 0), QPoint(-1, -1)}) {
        Put(*grid, cell.x(), cell.y(), u"x"_s);
        PutPicture(*grid, cell.x(), cell.y(), QImage(8, 8, QImage::Format_RGB32));
        QCOMPARE(grid->Text(), QString());
        QCOMPARE(grid->Value(), QString());
        QVERIFY(grid->CellRect(cell.x(), cell.y()).isEmpty());
        QVERIFY(grid->CellPixels(cell.x(), cell.y()).isEmpty());
        grid->SetActiveCell(cell.x(), cell.y());
        grid->FlashCell(cell.x(), cell.y());
    }
    QCOMPARE(grid->DataRowCnt(), 0);
    QCOMPARE(grid->ActiveRow(), 1);
    QCOMPARE(grid->ActiveCol(), 1);
}

void GridCellsTest::Geometry_data()
{
    QTest::addColumn<int>("element");
    QTest::addColumn<QPoint>("cell");
    QTest::addColumn<QRect>("place");

    QTest::newRow("first picture of the visit") << 1 << QPoint(1, 1) << QRect(0, 0, 107, 71);
    QTest::newRow("its number") << 1 << QPoint(1, 2) << QRect(0, 71, 107, 18);
    QTest::newRow("last of the second pair") << 1 << QPoint(5, 3) << QRect(428, 89, 107, 71);
    QTest::newRow("out of view") << 1 << QPoint(1, 19) << QRect(0, 801, 107, 71);
    QTest::newRow("tick box of the history") << 2 << QPoint(3, 1) << QRect(141, 0, 15, 83);
    QTest::newRow("picture of the history") << 2 << QPoint(6, 3) << QRect(298, 101, 127, 83);
    QTest::newRow("list line beside its number") << 3 << QPoint(1, 1) << QRect(41, 17, 71, 16);
    QTest::newRow("list note") << 3 << QPoint(3, 2) << QRect(251, 33, 359, 16);
}

void GridCellsTest::Geometry()
{
    QFETCH(int, element);
    QFETCH(QPoint, cell);
    QFETCH(QRect, place);
    const auto grid = element == 1 ? VisitPictures() : element == 2 ? HistoryPictures() : HistoryList();

    QCOMPARE(grid->CellRect(cell.x(), cell.y()), place);
    QCOMPARE(grid->CellPixels(cell.x(), cell.y()), place.size() - QSize(3, 3));
    grid->show();
    QVERIFY(QTest::qWaitForWindowExposed(grid.get()));
    QCOMPARE(grid->CellRect(cell.x(), cell.y()), place);
}

void GridCellsTest::PictureIsKeptAtCellSize()
{
    const auto grid = VisitPictures();
    const QSize room = grid->CellPixels(2, 1);
    PutPicture(*grid, 2, 1, QImage(1920, 1080, QImage::Format_RGB32));
    QCOMPARE(grid->TypePictPicture().size(), QSize(1920, 1080).scaled(room, Qt::KeepAspectRatio));

    grid->setTypePictStretch(false);
    grid->setTypePictPicture(QImage(1920, 1080, QImage::Format_RGB32));
    QCOMPARE(grid->TypePictPicture().size(), room);

    grid->setTypePictPicture(QImage(20, 10, QImage::Format_RGB32));
    QCOMPARE(grid->TypePictPicture().size(), QSize(20, 10));
    grid->setCellType(CellTypeStaticText);
    QVERIFY(grid->TypePictPicture().isNull());
}

void GridCellsTest::HundredThousandRows()
{
    const auto grid = New({540, 273}, 6, 100000);
    grid->show();
    QVERIFY(QTest::qWaitForWindowExposed(grid.get()));
    for (int row = 1; row <= 100000; ++row) {
        for (int column = 1; column <= 6; ++column)
            Put(*grid, column, row, QString::number(row));
        if (grid->DataRowCnt() != row)
            QFAIL("wrong number of data rows");
    }
    grid->SetActiveCell(1, 100000);
    QTRY_VERIFY(grid->rect().contains(grid->CellRect(1, 100000)));
    // A picture that comes and goes at the end, again and again, doesn't search the grid each time.
    for (int round = 0; round < 20000; ++round) {
        Put(*grid, 1, 100000, {});
        Put(*grid, 1, 100000, u"x"_s);
    }
    grid->DeleteRows(1, 99999);
    QCOMPARE(grid->DataRowCnt(), 1);
    QCOMPARE(Get(*grid, 6, 1), u"100000"_s);
    QCOMPARE(grid->ActiveRow(), 1);
}

QTEST_MAIN(GridCellsTest)
#include "GridCellsTest.moc"
