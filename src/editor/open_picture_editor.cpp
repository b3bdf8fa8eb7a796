#include "editor/open_picture_editor.h"

#include "editor/frmImgEdit.h"
#include "screenparts/picture_grid.h"
#include "visit/VisitContext.h"

void OpenPictureEditor(const Visit& visit, fpSpread& grid, int column, int row)
{
    VisitContext.ImageSaved = false;
    const QString path = PictureFileBehind(grid, column, row, visit);
    if (path.isEmpty())
        return;
    frmImgEdit& editor = Form<frmImgEdit>();
    editor.lblFilePath().setText(path);
    editor.ShowModal();
}
