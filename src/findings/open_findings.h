#pragma once

#include "visit/Visit.h"

class fpSpread;
class StatusPanels;

/// What the findings screen takes from the screen that opens it.
struct FindingsOrigin
{
    fpSpread& pictures;   ///< The grid whose pictures go into a new report.
    StatusPanels& panels; ///< Patient data, as `ShowPatientPanels` fills them.
    Visit visit;          ///< The visit that the grid shows.
};

/// Brings up the findings screen for what the grid shows. Number 1 is the grid of the current visit, whose first six
/// pictures of columns 1 to 3 count; with 2 it is the history's, whose ticked pictures count. An empty grid opens
/// nothing. A screen that is open with text of its own is brought to the front as it is.
void OpenFindings(int gridNumber, const FindingsOrigin& origin);
