#pragma once

#include "contracts/cd.h"

/// The CD drives that can be written to: the image file when one is set, otherwise the drives of the machine, which
/// stand in the folder of devices, in the order of their numbers.
QList<DriveEntry> ListDiscDrives(const QString& image, const QString& devices);
