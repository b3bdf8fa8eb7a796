#pragma once

/// Registers the grid, `FPSpreadADO.fpSpread`.
void RegisterGrid();
