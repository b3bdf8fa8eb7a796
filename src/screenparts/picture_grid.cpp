#include "screenparts/picture_grid.h"

#include "contracts/desktop.h"
#include "contracts/pictures.h"
#include "frame/components.h"
#include "frame/file_calls.h"
#include "frame/services.h"
#include "frame/waiting.h"
#include "text/text_routines.h"

namespace {
/// A picture takes far less: from here on the fill waits as all work on files does.
constexpr int DecodeWaitMs = 500;
} // namespace

QList<int> PictureColumns(int layout)
{
    return layout == 1 ? QList<int>{1, 2, 3, 4, 5} : QList<int>{2, 4, 6};
}

QString CellText(fpSpread& grid, int column, int row)
{
    return Trim(grid.TextAt(column, row));
}

std::optional<QImage> AwaitPicture(const QPointer<fpSpread>& grid, int fill, PictureBatch& batch, int at)
{
    const auto isOver = [&] { return !grid || !grid->IsCurrentFill(fill); };
    PumpEvents();
    const auto isReady = [&] { return isOver() || batch.IsReady(at); };
    if (!waiting::ServeFor(DecodeWaitMs, isReady, WaitInput::Served) && !UseService<Desktop>().ProgramEnded())
        filecalls::AwaitUntil(isReady);
    // A handler that the pump let in may have closed the screen or begun a newer fill.
    if (isOver())
        return std::nullopt;
    return batch.IsReady(at) ? batch.Take(at) : QImage();
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
