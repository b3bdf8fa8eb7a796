#include "records/history_grids.h"

namespace {
HistoryGrids& Registered()
{
    static HistoryGrids grids;
    return grids;
}
} // namespace

void RegisterHistoryGrids(fpSpread* pictures, fpSpread* visits)
{
    Registered() = {pictures, visits};
}

const HistoryGrids& RegisteredHistoryGrids()
{
    return Registered();
}
