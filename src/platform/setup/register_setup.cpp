#include "platform/setup/register_setup.h"

#include "frame/components.h"
#include "platform/setup/StartProfile.h"

using namespace Qt::StringLiterals;

void RegisterSetup(MissingRoot missingRoot)
{
    RegisterComponent<clsStartProfile>(u"prjStartProfile.clsStartProfile"_s,
                                       [missingRoot] { return std::make_unique<StartProfile>(missingRoot); });
}
