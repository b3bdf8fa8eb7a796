#include "viewing/sheet_pictures.h"

#include "contracts/fpSpread.h"
#include "frame/services.h"
#include "screenparts/picture_grid.h"
#include "text/text_routines.h"
#include "visit/Visit.h"

QStringList SheetPictures(fpSpread& grid, int gridNumber, const Visit& visit)
{
    QStringList paths;
    const QStringList numbers = ChosenNumbers(grid, gridNumber);
    for (const QString& number : numbers) {
        if (!IsNumericText(number))
            continue;
        const QString path = visit.PicturePath(WholeNumber(number));
        if (PictureExists(path))
            paths.append(path);
    }
    return paths;
}
