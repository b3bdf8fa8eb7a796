#pragma once

#include "contracts/cd.h"

/// The CD drives that can be written to: the image file when one is set, otherwise the drives of the machine in the
/// order of their numbers.
QList<DriveEntry> ListDiscDrives(const QString& image);
