#include "platform/desktop/ThemeShell.h"

#include "platform/desktop/look.h"

#include <QApplication>
#include <QWidget>

void ThemeShell::skinchang(QWidget& form, int, ConnectionPointer&)
{
    ApplyLook(*qApp);
    form.setAttribute(Qt::WA_StyledBackground);
}
