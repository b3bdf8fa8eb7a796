#include "platform/grid/register_grid.h"

#include "frame/components.h"
#include "platform/grid/SpreadGrid.h"

using namespace Qt::StringLiterals;

void RegisterGrid()
{
    RegisterComponent<fpSpread>(u"FPSpreadADO.fpSpread"_s, [] { return std::make_unique<SpreadGrid>(); });
}
