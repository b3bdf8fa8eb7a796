#include "findings/register_popups.h"

#include "findings/ChartPicker.h"
#include "findings/OpinionPad.h"
#include "frame/components.h"

using namespace Qt::StringLiterals;

void RegisterFindingsPopups()
{
    RegisterComponent<clsOpinionPad>(u"prjOpinionPad.clsOpinionPad"_s, [] { return std::make_unique<OpinionPad>(); });
    RegisterComponent<clsChartPicker>(u"prjChartPicker.clsChartPicker"_s,
                                      [] { return std::make_unique<ChartPicker>(); });
}
