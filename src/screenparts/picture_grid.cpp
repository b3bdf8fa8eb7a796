#include "screenparts/picture_grid.h"

#include "contracts/desktop.h"
#include "contracts/pictures.h"
#include "frame/components.h"
#include "frame/file_calls.h"
#include "frame/services.h"
#include "text/text_routines.h"
#include "visit/Visit.h"

#include <algorithm>

namespace {
/// A picture takes far less: from here on the fill waits as all work on files does.
constexpr int DecodeWaitMs = 500;

/// The last row in which a number stands, 0 when none does; a box ticked below it is no picture.
int LastNumberRow(fpSpread& grid, const QList<int>& columns)
{
    const auto isEmpty = [&](int row) {
        return std::ranges::all_of(columns, [&](int column) { return CellText(grid, column, row).isEmpty(); });
    };
    int row = grid.DataRowCnt();
    while (row > 0 && isEmpty(row))
        --row;
    return row;
}
} // namespace

QList<int> PictureColumns(int gridNumber)
{
    return gridNumber == 1 ? QList<int>{1, 2, 3, 4, 5} : QList<int>{2, 4, 6};
}

QString CellText(fpSpread& grid, int column, int row)
{
    return Trim(grid.TextAt(column, row));
}

QStringList ChosenNumbers(fpSpread& grid, int gridNumber)
{
    const auto isTicked = [&grid](int column, int row) {
        grid.setRow(row);
        grid.setCol(column);
        return WholeNumber(grid.Value()) == 1;
    };
    QStringList numbers;
    for (int row = 1; row < grid.DataRowCnt(); row += 2) {
        for (int pair = 1; pair <= 3; ++pair) {
            if (gridNumber == 1)
                numbers << CellText(grid, pair, row + 1);
            else if (isTicked(2 * pair - 1, row))
                numbers << CellText(grid, 2 * pair, row + 1);
        }
    }
    return numbers;
}

void ClearPictureGrid(fpSpread& grid, int gridNumber)
{
    if (gridNumber == 1) {
        grid.ClearRange(1, 1, 5, grid.DataRowCnt(), false);
        return;
    }
    for (int column = 1; column <= 6; ++column)
        grid.ClearRange(column, 1, column, grid.DataRowCnt(), column % 2 == 1);
}

void NextGridSlot(int /*pictureNumber*/, int& row, int& column, int gridNumber, fpSpread& grid)
{
    const QList<int> columns = PictureColumns(gridNumber);
    const int last = LastNumberRow(grid, columns);
    if (last == 0) {
        row = 1;
        column = columns.first();
        return;
    }
    for (const int candidate : columns) {
        if (CellText(grid, candidate, last).isEmpty()) {
            row = last - 1;
            column = candidate;
            return;
        }
    }
    row = last + 1;
    column = columns.first();
}

PicturePlace PlaceAfter(int pictures, int gridNumber)
{
    const QList<int> columns = PictureColumns(gridNumber);
    const int across = static_cast<int>(columns.size());
    return {2 * (pictures / across) + 1, columns[pictures % across]};
}

std::optional<QImage> AwaitPicture(const QPointer<fpSpread>& grid, int fill, PictureBatch& batch, int at)
{
    const auto isOver = [&] { return !grid || !grid->IsCurrentFill(fill); };
    Desktop& desktop = UseService<Desktop>();
    desktop.PumpEvents();
    const auto isReady = [&] { return isOver() || batch.IsReady(at); };
    if (!desktop.PumpEventsUntil(isReady, DecodeWaitMs) && !desktop.ProgramEnded())
        filecalls::AwaitUntil(isReady);
    // A handler that the pump let in may have closed the screen or begun a newer fill.
    if (isOver())
        return std::nullopt;
    return batch.IsReady(at) ? batch.Take(at) : QImage();
}

int PictureCount(fpSpread& grid)
{
    int pictures = 0;
    for (int row = 2; row <= grid.DataRowCnt(); row += 2) {
        for (const int column : PictureColumns(1))
            pictures += CellText(grid, column, row).isEmpty() ? 0 : 1;
    }
    return pictures;
}

void ShowPicture(fpSpread& grid, int row, int column, const QImage& picture)
{
    grid.setRow(row);
    grid.setCol(column);
    grid.setCellType(CellTypePicture);
    grid.setTypePictCenter(true);
    grid.setTypePictStretch(true);
    grid.setTypePictPicture(picture);
}

namespace {
void PlaceLabelled(fpSpread& grid, int row, int column, const QImage& picture, const QString& label)
{
    if (row + 1 > grid.MaxRows()) {
        grid.setMaxRows(row + 1);
        // A pair beyond the laid out ones looks like the pair above it.
        if (row > 2) {
            grid.setRowHeight(row, grid.RowHeight(row - 2));
            grid.setRowHeight(row + 1, grid.RowHeight(row - 1));
        }
    }
    ShowPicture(grid, row, column, picture);
    grid.setRow(row + 1);
    grid.setCol(column);
    grid.setCellType(CellTypeStaticText);
    grid.setText(label);
}
} // namespace

void PlacePicture(fpSpread& grid, int row, int column, const QImage& picture, int pictureNumber)
{
    PlaceLabelled(grid, row, column, picture, pictureNumber > 0 ? NumberText(pictureNumber) : AwaitedNumber);
}

QList<QPoint> PicturesWithoutNumber(fpSpread& grid)
{
    QList<QPoint> places;
    for (int row = 1; row < grid.DataRowCnt(); row += 2) {
        for (const int column : PictureColumns(1)) {
            if (CellText(grid, column, row + 1) == AwaitedNumber)
                places.append({column, row});
        }
    }
    return places;
}

void NumberPicture(fpSpread& grid, QPoint place, int pictureNumber)
{
    grid.setRow(place.y() + 1);
    grid.setCol(place.x());
    grid.setText(NumberText(pictureNumber));
}

QString PictureFileBehind(fpSpread& grid, int column, int row, const Visit& visit)
{
    const QString number = row % 2 == 1 ? CellText(grid, column, row + 1) : QString();
    if (!IsNumericText(number))
        return {};
    const QString path = visit.PicturePath(WholeNumber(number));
    return PictureExists(path) ? path : QString();
}

std::optional<QPoint> FindPicture(fpSpread& grid, int gridNumber, int pictureNumber)
{
    const QString number = NumberText(pictureNumber);
    for (int row = 1; row < grid.DataRowCnt(); row += 2) {
        for (const int column : PictureColumns(gridNumber)) {
            if (CellText(grid, column, row + 1) == number)
                return QPoint(column, row);
        }
    }
    return std::nullopt;
}

void MarkPicture(fpSpread& grid, int column, int row, const QString& mark)
{
    grid.setRow(row);
    grid.setCol(column);
    grid.setTypePictMark(mark);
}

void RemovePicture(fpSpread& grid, QPoint place)
{
    struct Shown
    {
        QImage picture;
        QString mark;
        QString label;
    };
    QList<Shown> left;
    for (int row = 1; row < grid.DataRowCnt(); row += 2) {
        for (const int column : PictureColumns(1)) {
            const QString label = CellText(grid, column, row + 1);
            if (label.isEmpty() || place == QPoint(column, row))
                continue;
            grid.setRow(row);
            left.append({grid.TypePictPicture(), grid.TypePictMark(), label});
        }
    }
    ClearPictureGrid(grid, 1);
    for (const Shown& shown : left) {
        int row = 0;
        int column = 0;
        NextGridSlot(0, row, column, 1, grid);
        PlaceLabelled(grid, row, column, shown.picture, shown.label);
        MarkPicture(grid, column, row, shown.mark);
    }
}
