#pragma once

#include "contracts/fpSpread.h"

#include <QPointer>

#include <optional>

class PictureBatch;
struct Visit;

/// Grids that show pictures in pairs of rows: the picture above, its number as text below. Number 1 is the layout of
/// the current visit with pictures in columns 1 to 5; any other number is the layout of a history line with pictures in
/// columns 2, 4 and 6 and a tick box before each.

/// Picture columns of a layout, from the left.
QList<int> PictureColumns(int gridNumber);

/// Text of a cell, trimmed; the grid's current cell goes there.
QString CellText(fpSpread& grid, int column, int row);

/// Texts of the number cells whose pictures go to a sheet or a report, in reading order, empty ones too. Layout 1 gives
/// columns 1 to 3, whatever is ticked; any other layout the ticked ones.
QStringList ChosenNumbers(fpSpread& grid, int gridNumber);

/// Empties the grid in the way of its layout; boxes before the pictures stay, unticked.
void ClearPictureGrid(fpSpread& grid, int gridNumber);

/// Where the next picture goes: the first free place in the last pair, else a new pair, which may lie beyond the grid's
/// rows. Read back from the grid, so each picture must have been placed with its number. The picture number plays no
/// part.
void NextGridSlot(int pictureNumber, int& row, int& column, int gridNumber, fpSpread& grid);

struct PicturePlace
{
    int row = 0;
    int column = 0;
};
/// Place of the picture that comes after so many others. A fill counts for itself: while it serves events the operator
/// may tick a box in a row that it hasn't come to.
PicturePlace PlaceAfter(int pictures, int gridNumber);

/// Serves events until that picture of a grid's fill is decoded. Nothing when the fill has ended meanwhile, because the
/// grid is gone or a newer one has begun; a null picture when it can't be read. Throws FilesAway.
std::optional<QImage> AwaitPicture(const QPointer<fpSpread>& grid, int fill, PictureBatch& batch, int at);

/// How many pictures a grid of layout 1 shows.
int PictureCount(fpSpread& grid);

/// Makes the cell a picture cell that shows the picture in its middle, as large as fits.
void ShowPicture(fpSpread& grid, int row, int column, const QImage& picture);

/// Puts a picture and its number into a place, and makes the grid longer when the place lies beyond it. One without a
/// number, below 1, waits for it.
void PlacePicture(fpSpread& grid, int row, int column, const QImage& picture, int pictureNumber);

/// Stands in the place of the number of a picture that waits for one.
inline const QString AwaitedNumber = QStringLiteral("대기");
/// Places of the pictures in a grid of layout 1 that wait for a number, in reading order.
QList<QPoint> PicturesWithoutNumber(fpSpread& grid);
/// The picture has got its number.
void NumberPicture(fpSpread& grid, QPoint place, int pictureNumber);

/// Path of the visit's picture file that a picture cell shows; empty when there is none.
QString PictureFileBehind(fpSpread& grid, int column, int row, const Visit& visit);
/// Column and row of the cell that shows the picture of that number; nothing when none does.
std::optional<QPoint> FindPicture(fpSpread& grid, int gridNumber, int pictureNumber);
/// Puts words of warning over the picture of a cell, or takes them away.
void MarkPicture(fpSpread& grid, int column, int row, const QString& mark);
/// Takes one picture out of a grid that shows pictures without boxes; those behind it move up.
void RemovePicture(fpSpread& grid, QPoint place);
