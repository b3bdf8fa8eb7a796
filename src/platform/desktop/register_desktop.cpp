#include "platform/desktop/register_desktop.h"

#include "frame/components.h"
#include "platform/desktop/IconList.h"
#include "platform/desktop/PanelBar.h"
#include "platform/desktop/QtDesktop.h"

using namespace Qt::StringLiterals;

void RegisterDesktop(const CommandString& command)
{
    InstallService<Desktop>(std::make_unique<QtDesktop>(command));
    InstallService<ImageList>(std::make_unique<IconList>());
    RegisterComponent<StatusPanels>(u"MSComctlLib.StatusBar"_s, [] { return std::make_unique<PanelBar>(); });
    RegisterComponent<clsThemeShell>(u"prjThemeShell.clsThemeShell"_s, [] { return std::make_unique<ThemeShell>(); });
}
