#include "viewing/sheet_pictures.h"

#include "contracts/files.h"
#include "contracts/fpSpread.h"
#include "launch/context/VisitContext.h"
#include "records/capture_scheme.h"
#include "records/text/text_routines.h"

using namespace Qt::StringLiterals;

namespace {

QString TextAt(fpSpread& grid, int column, int row)
{
    grid.setRow(row);
    grid.setCol(column);
    return Trim(grid.Text());
}

bool IsTicked(fpSpread& grid, int column, int row)
{
    grid.setRow(row);
    grid.setCol(column);
    return grid.Value() == u"1"_s;
}

} // namespace

QStringList SheetPictures(fpSpread& grid, int gridNumber, const QString& yearFolder, const QString& etc,
                          const QString& chart, const QString& ymd)
{
    QStringList numbers;
    for (int row = 1; row < grid.DataRowCnt(); row += 2) {
        for (int pair = 1; pair <= 3; ++pair) {
            if (gridNumber == 1)
                numbers.append(TextAt(grid, pair, row + 1));
            else if (IsTicked(grid, 2 * pair - 1, row))
                numbers.append(TextAt(grid, 2 * pair, row + 1));
        }
    }
    QStringList paths;
    for (const QString& number : numbers) {
        if (!IsNumericText(number))
            continue;
        const QString path = PicturePath(yearFolder, etc, chart, ymd, WholeNumber(number), VisitContext.ImageExt);
        if (FileExists(path))
            paths.append(path);
    }
    return paths;
}
