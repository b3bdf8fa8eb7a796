#include "frame/colours.h"
#include "frame/twips.h"
#include "platform/grid/register_grid.h"
#include "station_grids.h"

#include <QAccessible>
#include <QApplication>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTableView>
#include <QTest>

using namespace station_grids;

class GridOperatorTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { RegisterGrid(); }

    void ClickTicksABox();
    void RightClick_data();
    void RightClick();
    void RightClickKeepsTheSelection();
    void DoubleClick_data();
    void DoubleClick();
    void EnterIsToldAndMovesNothing();
    void KeysMoveTheActiveCell();
    void BlocksAreSelected();
    void ActiveCellComesIntoView();
    void FlashShowsAndGoes();
    void BadPictureShowsAMark();
    void ReaderHearsTheCells();

private:
    /// The child of the grid under a place, and the same place there: where a mouse event of the window ends.
    static std::pair<QWidget*, QPoint> Under(fpSpread& grid, QPoint place)
    {
        QWidget* child = grid.childAt(place);
        return {child, child->mapFrom(&grid, place)};
    }

    static void Click(fpSpread& grid, Qt::MouseButton button, QPoint place, Qt::KeyboardModifiers modifiers = {})
    {
        const auto [child, there] = Under(grid, place);
        QTest::mouseClick(child, button, modifiers, there);
    }

    static void Show(fpSpread& grid)
    {
        grid.show();
        QVERIFY(QTest::qWaitForWindowExposed(&grid));
        grid.activateWindow();
        grid.setFocus();
    }
};

void GridOperatorTest::ClickTicksABox()
{
    const auto grid = HistoryPictures();
    Show(*grid);
    QSignalSpy clicked(grid.get(), &fpSpread::ButtonClicked);
    const QPoint box = grid->CellRect(3, 1).center();
    grid->setCol(3);
    grid->setRow(1);

    Click(*grid, Qt::LeftButton, box);
    QCOMPARE(grid->Value(), u"1"_s);
    Click(*grid, Qt::LeftButton, box);
    QCOMPARE(grid->Value(), u"0"_s);
    const auto [child, there] = Under(*grid, box);
    // The second click of a quick pair counts, too.
    QTest::mouseClick(child, Qt::LeftButton, {}, there);
    QTest::mouseDClick(child, Qt::LeftButton, {}, there);
    QTest::mouseRelease(child, Qt::LeftButton, {}, there);
    QCOMPARE(grid->Value(), u"0"_s);
    QCOMPARE(clicked.size(), 4);

    // Pressed on the box and released elsewhere; and the number below has no box.
    QTest::mousePress(child, Qt::LeftButton, {}, there);
    QTest::mouseRelease(child, Qt::LeftButton, {}, there + QPoint(60, 0));
    Click(*grid, Qt::LeftButton, grid->CellRect(3, 2).center());
    QCOMPARE(clicked.size(), 4);

    grid->SetActiveCell(3, 1);
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Space);
    QCOMPARE(grid->Value(), u"1"_s);
    QCOMPARE(clicked.last(), QVariantList({3, 1, true}));
}

void GridOperatorTest::RightClick_data()
{
    QTest::addColumn<int>("element");
    QTest::addColumn<QPoint>("place");
    QTest::addColumn<QPoint>("cell");

    QTest::newRow("picture") << 1 << QPoint(120, 30) << QPoint(2, 1);
    QTest::newRow("number") << 1 << QPoint(120, 80) << QPoint(2, 2);
    QTest::newRow("right of the columns") << 1 << QPoint(538, 30) << QPoint(6, 1);
    QTest::newRow("line of the list") << 3 << QPoint(60, 40) << QPoint(1, 2);
    QTest::newRow("heading") << 3 << QPoint(41, 5) << QPoint(1, 0);
    QTest::newRow("second heading") << 3 << QPoint(112, 16) << QPoint(2, 0);
    QTest::newRow("row number") << 3 << QPoint(20, 40) << QPoint(0, 2);
    QTest::newRow("corner") << 3 << QPoint(20, 5) << QPoint(0, 0);
    QTest::newRow("below the list") << 4 << QPoint(60, 150) << QPoint(1, 6);
}

void GridOperatorTest::RightClick()
{
    QFETCH(int, element);
    QFETCH(QPoint, place);
    QFETCH(QPoint, cell);
    const auto grid = element == 1 ? VisitPictures() : HistoryList();
    if (element == 4)
        grid->setMaxRows(5);
    Show(*grid);
    QSignalSpy spy(grid.get(), &fpSpread::RightClick);

    Click(*grid, Qt::RightButton, place);
    QCOMPARE(spy.size(), 1);
    QCOMPARE(spy.first(), QVariantList({0, cell.x(), cell.y(), place.x() * TwipsPerPixel, place.y() * TwipsPerPixel}));
}

void GridOperatorTest::RightClickKeepsTheSelection()
{
    const auto grid = VisitPictures();
    Show(*grid);
    Click(*grid, Qt::LeftButton, grid->CellRect(1, 1).center());
    Click(*grid, Qt::RightButton, grid->CellRect(3, 1).center());
    QVERIFY(grid->IsCellSelected(1, 1));
    QCOMPARE(grid->SelectionCount(), 1);
}

void GridOperatorTest::DoubleClick_data()
{
    QTest::addColumn<QPoint>("place");
    QTest::addColumn<QPoint>("cell");

    QTest::newRow("line") << QPoint(60, 40) << QPoint(1, 2);
    QTest::newRow("heading") << QPoint(60, 5) << QPoint(1, 0);
    QTest::newRow("edge between two headings") << QPoint(111, 5) << QPoint(1, 0);
    QTest::newRow("row number") << QPoint(20, 40) << QPoint(0, 2);
    QTest::newRow("below the list") << QPoint(130, 150) << QPoint(2, 6);
}

void GridOperatorTest::DoubleClick()
{
    QFETCH(QPoint, place);
    QFETCH(QPoint, cell);
    const auto grid = HistoryList();
    grid->setMaxRows(5);
    Show(*grid);
    QSignalSpy spy(grid.get(), &fpSpread::DblClick);
    const auto [child, there] = Under(*grid, place);

    QTest::mouseDClick(child, Qt::RightButton, {}, there);
    QCOMPARE(spy.size(), 0);
    QTest::mouseDClick(child, Qt::LeftButton, {}, there);
    QCOMPARE(spy.size(), 1);
    QCOMPARE(spy.first(), QVariantList({cell.x(), cell.y()}));
    QCOMPARE(grid->CellRect(1, 1).width(), 71);
}

void GridOperatorTest::EnterIsToldAndMovesNothing()
{
    const auto grid = HistoryList();
    Show(*grid);
    grid->SetActiveCell(2, 7);
    QSignalSpy spy(grid.get(), &fpSpread::KeyDown);
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
    QCOMPARE(spy.last(), QVariantList({13, 0}));
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Enter, Qt::ShiftModifier);
    QCOMPARE(spy.last(), QVariantList({13, 1}));
    QCOMPARE(grid->ActiveRow(), 7);
    QCOMPARE(grid->ActiveCol(), 2);
}

void GridOperatorTest::KeysMoveTheActiveCell()
{
    const auto grid = HistoryList();
    Show(*grid);
    grid->SetActiveCell(1, 1);
    for (const Qt::Key key : {Qt::Key_Down, Qt::Key_Down, Qt::Key_Right})
        QTest::keyClick(QApplication::focusWidget(), key);
    QCOMPARE(grid->ActiveRow(), 3);
    QCOMPARE(grid->ActiveCol(), 2);
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_End, Qt::ControlModifier);
    QCOMPARE(grid->ActiveRow(), 2000);
}

void GridOperatorTest::BlocksAreSelected()
{
    const auto grid = VisitPictures();
    Show(*grid);
    const auto centre = [&](int column, int row) { return grid->CellRect(column, row).center(); };
    grid->SetActiveCell(2, 1);
    QCOMPARE(grid->SelectionCount(), 0);

    Click(*grid, Qt::LeftButton, centre(2, 1));
    Click(*grid, Qt::LeftButton, centre(3, 3), Qt::ShiftModifier);
    QCOMPARE(grid->SelectionCount(), 1);
    const SpreadBlock block = grid->GetSelection(0);
    QCOMPARE(QRect(QPoint(block.Col, block.Row), QPoint(block.Col2, block.Row2)), QRect(QPoint(2, 1), QPoint(3, 3)));
    // A grid of one block begins anew.
    Click(*grid, Qt::LeftButton, centre(5, 1));
    QVERIFY(!grid->IsCellSelected(2, 1) && grid->IsCellSelected(5, 1));

    grid->setMultipleSelection(true);
    Click(*grid, Qt::LeftButton, centre(1, 1));
    Click(*grid, Qt::LeftButton, centre(3, 1), Qt::ControlModifier);
    const auto [child, from] = Under(*grid, centre(4, 3));
    QTest::mousePress(child, Qt::LeftButton, Qt::ControlModifier, from);
    QMouseEvent drag(QEvent::MouseMove, from + QPoint(107, 0), child->mapToGlobal(from + QPoint(107, 0)), Qt::NoButton,
                     Qt::LeftButton, Qt::ControlModifier);
    QApplication::sendEvent(child, &drag);
    QTest::mouseRelease(child, Qt::LeftButton, Qt::ControlModifier, from + QPoint(107, 0));
    QCOMPARE(grid->SelectionCount(), 3);
    QCOMPARE(grid->GetSelection(0).Col, 1);
    QCOMPARE(grid->GetSelection(1).Col, 3);
    QCOMPARE(grid->GetSelection(2).Col, 4);
    QCOMPARE(grid->GetSelection(2).Col2, 5);
    QVERIFY(grid->IsCellSelected(5, 3) && !grid->IsCellSelected(2, 1) && !grid->IsCellSelected(6, 1));
    QCOMPARE(grid->GetSelection(3).Col, 0);

    grid->DeleteRows(1, 20);
    QCOMPARE(grid->SelectionCount(), 0);
}

void GridOperatorTest::ActiveCellComesIntoView()
{
    const auto grid = VisitPictures();
    for (int row = 1; row < 20; row += 2)
        PutPicture(*grid, 1, row, QImage(8, 8, QImage::Format_RGB32));
    // Before the grid shows, as the first fill may be.
    grid->SetActiveCell(1, 9);
    Show(*grid);
    QTRY_VERIFY(grid->rect().contains(grid->CellRect(1, 9)));
    grid->SetActiveCell(1, 19);
    QTRY_VERIFY(grid->rect().contains(grid->CellRect(1, 19)));
    // The number below it is in view with it.
    QVERIFY(grid->rect().contains(grid->CellRect(1, 20)));
    grid->SetActiveCell(1, 1);
    QTRY_COMPARE(grid->CellRect(1, 1).top(), 0);
}

void GridOperatorTest::FlashShowsAndGoes()
{
    const auto grid = VisitPictures();
    Show(*grid);
    const QPoint corner = grid->CellRect(2, 1).topLeft() + QPoint(1, 1);
    const auto colour = [&] { return grid->grab().toImage().pixel(corner * grid->devicePixelRatioF()); };
    grid->FlashCell(2, 1);
    QCOMPARE(colour(), AccentColour);
    grid->FlashCell(3, 1);
    QVERIFY(colour() != AccentColour);
    grid->FlashCell(2, 1);
    QCOMPARE(colour(), AccentColour);
    QTRY_VERIFY(colour() != AccentColour);
}

void GridOperatorTest::BadPictureShowsAMark()
{
    const auto grid = VisitPictures();
    Show(*grid);
    const auto cell = [&] { return grid->grab(grid->CellRect(1, 1)).toImage(); };
    const QImage empty = cell();
    PutPicture(*grid, 1, 1, {});
    const QImage marked = cell();
    QVERIFY(marked != empty);
    grid->ClearRange(1, 1, 5, 2, false);
    QCOMPARE(cell(), empty);
}

void GridOperatorTest::ReaderHearsTheCells()
{
    const auto grid = HistoryPictures();
    grid->setAccessibleName(u"과거 사진"_s);
    Put(*grid, 2, 2, u"007"_s);
    PutPicture(*grid, 2, 1, {});
    Show(*grid);
    auto* view = grid->findChild<QTableView*>();
    QAccessibleInterface* table = QAccessible::queryAccessibleInterface(view);
    QVERIFY(table != nullptr && table->tableInterface() != nullptr);
    QCOMPARE(table->text(QAccessible::Name), u"과거 사진"_s);
    QCOMPARE(table->tableInterface()->cellAt(1, 1)->text(QAccessible::Name), u"007"_s);
    QCOMPARE(table->tableInterface()->cellAt(0, 1)->text(QAccessible::Name), u"그림 없음"_s);
    QCOMPARE(table->tableInterface()->cellAt(0, 0)->text(QAccessible::Name), u"선택 안 됨"_s);
}

QTEST_MAIN(GridOperatorTest)
#include "GridOperatorTest.moc"
