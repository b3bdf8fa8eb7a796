#pragma once

#include <QStringList>

class fpSpread;
struct Visit;

/// Paths of the pictures that a sheet takes from a grid, in the grid's order, as far as their files exist. Layout 1
/// gives the pictures of columns 1 to 3, whatever is ticked; any other layout the ticked ones.
QStringList SheetPictures(fpSpread& grid, int gridNumber, const Visit& visit);
