#include "launch/launch_string.h"
#include "contracts/desktop.h"
#include "fuzz.h"
#include "session/VisitContext.h"
#include "visit/Visit.h"

using namespace Qt::StringLiterals;

/// The first byte says what setup and environment are.
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const int kind = size > 0 ? data[0] : 0;
    ClientSetup.EtcList = u"위내시경,대장내시경"_s;
    ClientSetup.LaunchEncoding = (kind & 1) != 0 ? u"windows-949"_s : QString();
    const LaunchString launch = CutLaunchString({ContentOf(data, size).mid(1), (kind & 2) != 0});
    if (launch.chart.size() > 8 || launch.ymd.size() > 8 || launch.mode.size() > 1)
        __builtin_trap();
    return 0;
}
