#include "viewing/sheet_pictures.h"

#include "contracts/files.h"
#include "contracts/fpSpread.h"
#include "launch/context/VisitContext.h"
#include "records/capture_scheme.h"
#include "records/picture_grid.h"
#include "records/text/text_routines.h"

QStringList SheetPictures(fpSpread& grid, int gridNumber, const QString& yearFolder, const QString& etc,
                          const QString& chart, const QString& ymd)
{
    QStringList paths;
    const QStringList numbers = ChosenNumbers(grid, gridNumber);
    for (const QString& number : numbers) {
        if (!IsNumericText(number))
            continue;
        const QString path = PicturePath(yearFolder, etc, chart, ymd, WholeNumber(number), VisitContext.ImageExt);
        if (PictureExists(path))
            paths.append(path);
    }
    return paths;
}
