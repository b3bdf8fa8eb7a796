#include "screenparts/picture_grid.h"

#include "contracts/desktop.h"
#include "contracts/pictures.h"
#include "frame/components.h"
#include "frame/file_calls.h"
#include "frame/guard.h"
#include "frame/services.h"
#include "frame/waiting.h"
#include "text/text_routines.h"

#include <QScopeGuard>

#include <exception>
#include <utility>

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

int PlacePictures(const QPointer<fpSpread>& grid, int fill, PictureBatch& batch, const QStringList& paths,
                  const std::function<void(int at, const QImage& picture)>& place, const std::function<void()>& filled)
{
    const auto count = static_cast<int>(paths.size());
    int next = 0;
    bool isDone = false;
    bool isPlacing = false;
    std::exception_ptr fault;
    // A handler that came in may have closed the screen or begun a newer fill.
    const auto isOver = [&] { return isDone || fault != nullptr || !grid || !grid->IsCurrentFill(fill); };
    const auto step = [&](bool isLost) {
        // What is placed may wait for a file, and serve events.
        if (std::exchange(isPlacing, true))
            return;
        try {
            while (!isOver() && next < count && (isLost || batch.IsReady(next))) {
                const int at = next++;
                const QImage picture = std::exchange(isLost, false) ? QImage() : batch.Take(at);
                // What could be read was there.
                if ((!picture.isNull() || PictureExists(paths[at])) && !isOver())
                    place(at, picture);
            }
            if (!isOver() && next == count) {
                isDone = true;
                if (filled)
                    filled();
            }
        } catch (...) {
            fault = std::current_exception();
        }
        isPlacing = false;
    };
    // From here a box that stands over this routine's own loop lets the fill go on.
    const auto ready = QObject::connect(&batch, &PictureBatch::Ready, [&step] { step(false); });
    const auto over = qScopeGuard([&ready] { QObject::disconnect(ready); });
    if (count == 0)
        step(false);
    while (!isOver()) {
        PumpEvents();
        const int awaited = next;
        const auto goesOn = [&] { return isOver() || next > awaited || batch.IsReady(awaited); };
        if (!waiting::ServeFor(DecodeWaitMs, goesOn, WaitInput::Served) && !UseService<Desktop>().ProgramEnded())
            filecalls::AwaitUntil(goesOn);
        step(!goesOn());
    }
    guard::Rethrow(fault);
    return next;
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
