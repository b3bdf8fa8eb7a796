#include "cdexport/open_cd_writing.h"

#include "cdexport/frmCapCDWrite.h"
#include "frame/forms.h"
#include "text/text_routines.h"

#include <QPoint>

void OpenCdWriting(const QPoint& place)
{
    const QString name = QString::fromUtf16(frmCapCDWrite::FormName);
    if (IsFormLoaded(name)) {
        StationForm* screen = FindForm(name);
        screen->showNormal();
        screen->raise();
        screen->activateWindow();
        return;
    }
    frmCapCDWrite& screen = Form<frmCapCDWrite>();
    screen.move(place);
    screen.Show();
}
