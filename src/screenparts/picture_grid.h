#pragma once

#include "contracts/fpSpread.h"

#include <QPointer>

#include <functional>

class PictureBatch;

/// Picture columns of a grid that shows pictures above their numbers, from the left: columns 1 to 5 in layout 1, else
/// 2, 4 and 6.
QList<int> PictureColumns(int layout);

/// Text of a cell, trimmed; the grid's current cell goes there.
QString CellText(fpSpread& grid, int column, int row);

/// Has a batch of the files' pictures placed in their order, each once it is decoded; null when it can't be read, and
/// none for a file that isn't there. Serves events meanwhile, and goes on behind whatever these bring up, such as a
/// box. `filled` runs behind the last one. Neither is called any more when the fill has ended, because the grid is gone
/// or a newer one has begun. Gives how many files it came to. Throws FilesAway, and what they throw.
int PlacePictures(const QPointer<fpSpread>& grid, int fill, PictureBatch& batch, const QStringList& paths,
                  const std::function<void(int at, const QImage& picture)>& place,
                  const std::function<void()>& filled = {});

/// Makes the cell a picture cell that shows the picture in its middle, as large as fits.
void ShowPicture(fpSpread& grid, int row, int column, const QImage& picture);
