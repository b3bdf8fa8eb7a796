#pragma once

#include "contracts/fpSpread.h"

#include <QPointer>

#include <optional>

class PictureBatch;

/// Picture columns of a grid that shows pictures above their numbers, from the left: columns 1 to 5 in layout 1, else
/// 2, 4 and 6.
QList<int> PictureColumns(int layout);

/// Text of a cell, trimmed; the grid's current cell goes there.
QString CellText(fpSpread& grid, int column, int row);

/// Serves events until that picture of a grid's fill is decoded. Nothing when the fill has ended meanwhile, because the
/// grid is gone or a newer one has begun; a null picture when it can't be read. Throws FilesAway.
std::optional<QImage> AwaitPicture(const QPointer<fpSpread>& grid, int fill, PictureBatch& batch, int at);

/// Makes the cell a picture cell that shows the picture in its middle, as large as fits.
void ShowPicture(fpSpread& grid, int row, int column, const QImage& picture);
