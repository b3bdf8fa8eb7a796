#include "platform/desktop/IconList.h"

#include "platform/desktop/look.h"

#include <QApplication>
#include <QWidget>

using namespace Qt::StringLiterals;

QStringList IconList::Keys() const
{
    return {u"Pen"_s,  u"Question"_s, u"Exit"_s,    u"Movie"_s, u"Happy"_s, u"Naraeon"_s, u"Tool"_s, u"Print"_s,
            u"Save"_s, u"Save2"_s,    u"Connect"_s, u"Clear"_s, u"ICon1"_s, u"Delete"_s,  u"Find"_s};
}

QIcon IconList::Picture(const QString& key) const
{
    if (!Keys().contains(key))
        return {};
    LoadLookResources();
    return QIcon(u":/station/pictures/%1.svg"_s.arg(key.toLower()));
}

void ThemeShell::skinchang(QWidget& form, int, ConnectionPointer&)
{
    ApplyLook(*qApp);
    form.setAttribute(Qt::WA_StyledBackground);
}
