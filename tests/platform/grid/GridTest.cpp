#include "contracts/fpSpread.h"
#include "frame/colours.h"
#include "frame/components.h"
#include "frame/twips.h"
#include "platform/grid/register_grid.h"
#include "screenparts/picture_grid.h"
#include "support/testing.h"

using namespace Qt::StringLiterals;

namespace {

/// The three grids of the capture screen in their sizes there.
enum GridKind { VisitPictures, HistoryPictures, HistoryList };

std::unique_ptr<fpSpread> New(GridKind kind)
{
    static const QList<double> widths[] = {
        {13.33, 13.37, 13.37, 13.37, 13.37}, {1.75, 15.9, 1.87, 15.87, 1.87, 15.87}, {8.88, 17.37, 44.85}};
    constexpr QSize sizes[] = {{560, 231}, {450, 336}, {450, 213}};
    constexpr int rows[] = {20, 50, 2000};
    auto grid = CreateObject<fpSpread>(u"FPSpreadADO.fpSpread"_s);
    grid->resize(sizes[kind]);
    grid->setMaxCols(static_cast<int>(widths[kind].size()));
    grid->setMaxRows(rows[kind]);
    grid->setHeadingsVisible(kind == HistoryList, kind == HistoryList);
    grid->setDefaultRowHeight(kind == HistoryList ? 11.9 : 13.3);
    for (int column = 1; column <= widths[kind].size(); ++column) {
        grid->setColWidth(column, widths[kind][column - 1]);
        if (kind != HistoryList)
            grid->setStoredCellType(column, 0, CellTypeStaticText);
        if (kind == HistoryPictures && column % 2 == 1)
            grid->setStoredCellType(column, 1, CellTypeCheckBox);
    }
    for (int row = 1; kind != HistoryList && row <= rows[kind]; row += 2)
        grid->setRowHeight(row, kind == VisitPictures ? 53.2 : 62.3);
    return grid;
}

void Put(fpSpread& grid, int column, int row, const QString& text)
{
    grid.setRow(row);
    grid.setCol(column);
    grid.setText(text);
}

QString Get(fpSpread& grid, int column, int row)
{
    grid.setRow(row);
    grid.setCol(column);
    return grid.Text();
}

} // namespace

class GridTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { RegisterGrid(); }

    void ClearedBoxesStayBoxes()
    {
        const auto grid = New(HistoryPictures);
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

    void ClearGivesBackTheStoredTypes()
    {
        const auto grid = New(VisitPictures);
        ShowPicture(*grid, 1, 1, QImage(8, 8, QImage::Format_RGB32));
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

    void DeletedRowsMoveUp()
    {
        const auto grid = New(HistoryList);
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

    void OutsideIsEmptyAndSwallows()
    {
        const auto grid = New(VisitPictures);
        for (const QPoint cell : {QPoint(1, 21), QPoint(6, 1), QPoint(0, 0), QPoint(-1, -1)}) {
            Put(*grid, cell.x(), cell.y(), u"x"_s);
            ShowPicture(*grid, cell.y(), cell.x(), QImage(8, 8, QImage::Format_RGB32));
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

    void PictureIsKeptAtCellSize()
    {
        const auto grid = New(VisitPictures);
        const QSize room = grid->CellPixels(2, 1);
        ShowPicture(*grid, 1, 2, QImage(1920, 1080, QImage::Format_RGB32));
        QCOMPARE(grid->TypePictPicture().size(), QSize(1920, 1080).scaled(room, Qt::KeepAspectRatio));

        grid->setTypePictStretch(false);
        grid->setTypePictPicture(QImage(1920, 1080, QImage::Format_RGB32));
        QCOMPARE(grid->TypePictPicture().size(), room);

        grid->setTypePictPicture(QImage(20, 10, QImage::Format_RGB32));
        QCOMPARE(grid->TypePictPicture().size(), QSize(20, 10));
        grid->setCellType(CellTypeStaticText);
        QVERIFY(grid->TypePictPicture().isNull());
    }

    void ClickTicksABox()
    {
        const auto grid = New(HistoryPictures);
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

    void RightClick_data()
    {
        Columns<int, QPoint, QPoint>("element", "place", "cell");

        QTest::newRow("picture") << 1 << QPoint(120, 30) << QPoint(2, 1);
        QTest::newRow("right of the columns") << 1 << QPoint(538, 30) << QPoint(6, 1);
        QTest::newRow("line of the list") << 3 << QPoint(60, 40) << QPoint(1, 2);
        QTest::newRow("heading") << 3 << QPoint(41, 5) << QPoint(1, 0);
        QTest::newRow("row number") << 3 << QPoint(20, 40) << QPoint(0, 2);
        QTest::newRow("below the list") << 4 << QPoint(60, 150) << QPoint(1, 6);
    }

    void RightClick()
    {
        QFETCH3(int, element, QPoint, place, QPoint, cell);
        const auto grid = New(element == 1 ? VisitPictures : HistoryList);
        if (element == 4)
            grid->setMaxRows(5);
        Show(*grid);
        QSignalSpy spy(grid.get(), &fpSpread::RightClick);

        Click(*grid, Qt::RightButton, place);
        QCOMPARE(spy.size(), 1);
        QCOMPARE(spy.first(),
                 QVariantList({0, cell.x(), cell.y(), place.x() * TwipsPerPixel, place.y() * TwipsPerPixel}));
    }

    void DoubleClick_data()
    {
        Columns<QPoint, QPoint>("place", "cell");

        QTest::newRow("line") << QPoint(60, 40) << QPoint(1, 2);
        QTest::newRow("heading") << QPoint(60, 5) << QPoint(1, 0);
        QTest::newRow("row number") << QPoint(20, 40) << QPoint(0, 2);
        QTest::newRow("below the list") << QPoint(130, 150) << QPoint(2, 6);
    }

    void DoubleClick()
    {
        QFETCH2(QPoint, place, QPoint, cell);
        const auto grid = New(HistoryList);
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

    void EnterIsToldAndMovesNothing()
    {
        const auto grid = New(HistoryList);
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

    void BlocksAreSelected()
    {
        const auto grid = New(VisitPictures);
        Show(*grid);
        const auto centre = [&](int column, int row) { return grid->CellRect(column, row).center(); };
        grid->SetActiveCell(2, 1);
        QCOMPARE(grid->SelectionCount(), 0);

        Click(*grid, Qt::LeftButton, centre(2, 1));
        Click(*grid, Qt::LeftButton, centre(3, 3), Qt::ShiftModifier);
        QCOMPARE(grid->SelectionCount(), 1);
        const SpreadBlock block = grid->GetSelection(0);
        QCOMPARE(QRect(QPoint(block.Col, block.Row), QPoint(block.Col2, block.Row2)),
                 QRect(QPoint(2, 1), QPoint(3, 3)));
        // A grid of one block begins anew.
        Click(*grid, Qt::LeftButton, centre(5, 1));
        QVERIFY(!grid->IsCellSelected(2, 1) && grid->IsCellSelected(5, 1));

        grid->setMultipleSelection(true);
        Click(*grid, Qt::LeftButton, centre(1, 1));
        Click(*grid, Qt::LeftButton, centre(3, 1), Qt::ControlModifier);
        QCOMPARE(grid->SelectionCount(), 2);
        QCOMPARE(grid->GetSelection(0).Col, 1);
        QCOMPARE(grid->GetSelection(1).Col, 3);
        QCOMPARE(grid->GetSelection(2).Col, 0);

        grid->DeleteRows(1, 20);
        QCOMPARE(grid->SelectionCount(), 0);
    }

    void ActiveCellComesIntoView()
    {
        const auto grid = New(VisitPictures);
        for (int row = 1; row < 20; row += 2)
            ShowPicture(*grid, row, 1, QImage(8, 8, QImage::Format_RGB32));
        // Before the grid shows, as the first fill may be.
        grid->SetActiveCell(1, 9);
        Show(*grid);
        QTRY_VERIFY(grid->rect().contains(grid->CellRect(1, 9)));
        grid->SetActiveCell(1, 19);
        QTRY_VERIFY(grid->rect().contains(grid->CellRect(1, 19)));
        // The number below it is in view with it.
        QVERIFY(grid->rect().contains(grid->CellRect(1, 20)));
        // No picture is cut above, though there is nothing left below.
        QTRY_COMPARE(grid->CellRect(1, 17).top(), 0);
        grid->SetActiveCell(1, 1);
        QTRY_COMPARE(grid->CellRect(1, 1).top(), 0);
        // Whole rows go on the way down.
        grid->SetActiveCell(1, 7);
        QTRY_COMPARE(grid->CellRect(1, 5).top(), 0);

        // The active cell of the history's pictures is a box beside the picture.
        const auto history = New(HistoryPictures);
        for (int row = 1; row < 12; row += 2)
            ShowPicture(*history, row, 2, QImage(8, 8, QImage::Format_RGB32));
        Show(*history);
        history->SetActiveCell(1, 9);
        QTRY_VERIFY(history->rect().contains(history->CellRect(2, 10)));
    }

    void AMeantPictureHasAFrameOfItsOwn()
    {
        const auto grid = New(VisitPictures);
        for (const int column : {1, 2})
            ShowPicture(*grid, 1, column, QImage(8, 8, QImage::Format_RGB32));
        Show(*grid);
        const auto edge = [&](int column) {
            return grid->grab(grid->CellRect(column, 1)).toImage().pixel(2, grid->CellRect(column, 1).height() / 2);
        };
        grid->SetActiveCell(2, 1);
        grid->FlashCell(2, 1);
        grid->setRow(1);
        grid->setCol(1);
        grid->setTypePictMeant(true);
        QCOMPARE(edge(1), MeantColour);
        QVERIFY(edge(2) != MeantColour);
        // It outshines the others, and goes with its picture.
        grid->FlashCell(1, 1);
        QCOMPARE(edge(1), MeantColour);
        ShowPicture(*grid, 1, 1, QImage(8, 8, QImage::Format_RGB32));
        QVERIFY(!grid->TypePictMeant() && edge(1) != MeantColour);
    }

    void LensStandsOverAFilledCellAndPassesTheRestOn()
    {
        const auto grid = New(VisitPictures);
        for (const int column : {1, 2})
            ShowPicture(*grid, 1, column, QImage(8, 8, QImage::Format_RGB32));
        Put(*grid, 2, 2, u"001"_s);
        grid->setLens(true);
        Show(*grid);
        auto* lens = grid->findChild<QAbstractButton*>(u"lens"_s);
        QSignalSpy lensClicks(grid.get(), &fpSpread::LensClicked);
        QSignalSpy doubleClicks(grid.get(), &fpSpread::DblClick);
        QSignalSpy rightClicks(grid.get(), &fpSpread::RightClick);
        const auto point = [&](int column, int row) {
            const auto [child, there] = Under(*grid, grid->CellRect(column, row).center());
            QMouseEvent move(QEvent::MouseMove, there, child->mapToGlobal(there), Qt::NoButton, {}, {});
            QCoreApplication::sendEvent(child, &move);
        };
        // A picture without a number, a number, and an empty cell have none.
        for (const auto& [column, row] : {std::pair(1, 1), {2, 2}, {3, 1}}) {
            point(2, 1);
            QVERIFY(lens->isVisible());
            point(column, row);
            QVERIFY(!lens->isVisible());
        }
        point(2, 1);
        QVERIFY(lens->width() <= 24 && grid->CellRect(2, 1).contains(lens->geometry()));
        QTest::mouseClick(lens, Qt::LeftButton);
        QTest::mouseDClick(lens, Qt::LeftButton);
        QCOMPARE(lensClicks.value(0), QVariantList({2, 1}));
        QTest::mouseClick(lens, Qt::RightButton);
        QCOMPARE(rightClicks.size(), 1);
        QCOMPARE(rightClicks[0].mid(1, 2), QVariantList({2, 1}));
        QCOMPARE(doubleClicks.size(), 0);
        const auto [child, there] = Under(*grid, grid->CellRect(2, 1).center());
        QTest::mouseDClick(child, Qt::LeftButton, {}, there);
        QCOMPARE(doubleClicks.size(), 1);
        // A screen reader finds it, and presses it for the cell that the keyboard is at.
        grid->SetActiveCell(2, 1);
        point(3, 1);
        QEvent leave(QEvent::Leave);
        QCoreApplication::sendEvent(child, &leave);
        lensClicks.clear();
        QAccessibleInterface* spoken = QAccessible::queryAccessibleInterface(lens);
        QVERIFY(QAccessible::queryAccessibleInterface(grid.get())->indexOfChild(spoken) >= 0);
        QCOMPARE(spoken->text(QAccessible::Name), u"크게 보기"_s);
        spoken->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
        QTRY_COMPARE(lensClicks.value(0), QVariantList({2, 1}));
    }

    void BadPictureShowsAMark()
    {
        const auto grid = New(VisitPictures);
        Show(*grid);
        const auto cell = [&] { return grid->grab(grid->CellRect(1, 1)).toImage(); };
        const QImage empty = cell();
        ShowPicture(*grid, 1, 1, {});
        const QImage marked = cell();
        QVERIFY(marked != empty);
        grid->ClearRange(1, 1, 5, 2, false);
        QCOMPARE(cell(), empty);
    }

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

QTEST_MAIN(GridTest)
#include "GridTest.moc"
