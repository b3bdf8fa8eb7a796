#pragma once

#include "contracts/fpSpread.h"

#include <QPointer>

/// The two grids of the capture screen that `LoadVisitHistory` fills. The screen registers them when it loads; null
/// while no such screen is there.
struct HistoryGrids
{
    QPointer<fpSpread> pictures; ///< `sprCap(2)`
    QPointer<fpSpread> visits;   ///< `sprCap(3)`
};

void RegisterHistoryGrids(fpSpread* pictures, fpSpread* visits);
const HistoryGrids& RegisteredHistoryGrids();
