#pragma once

#include "contracts/OutsideChecks.h"

/// Cameras, sound, serial port, printer and disc drive, as far as the user who runs this may use them.
CheckLines CheckDevices(const ClientSetupRecord& client);
