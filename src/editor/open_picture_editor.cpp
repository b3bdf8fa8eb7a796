#include "editor/open_picture_editor.h"

#include "contracts/files.h"
#include "contracts/fpSpread.h"
#include "editor/frmImgEdit.h"
#include "launch/context/VisitContext.h"
#include "records/capture_scheme.h"
#include "records/text/text_routines.h"

void OpenPictureEditor(const QString& chart, const QString& /*yuhyung*/, const QString& ymd, const QString& captureDir,
                       const QString& etc, fpSpread& grid, int column, int row)
{
    const QString number = grid.TextAt(column, row + 1);
    if (!IsNumericText(number))
        return;
    const QString path = PicturePath(captureDir, etc, chart, ymd, WholeNumber(number), VisitContext.ImageExt);
    if (!PictureExists(path))
        return;
    VisitContext.ImageSaved = false;
    frmImgEdit& editor = Form<frmImgEdit>();
    editor.lblFilePath().setText(path);
    editor.ShowModal();
}
