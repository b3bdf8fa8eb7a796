#pragma once

#include "contracts/OutsideChecks.h"

/// The setup file, its secrets, the way to the database, and the server's clock.
OutsideChecks::Setup CheckSetup();
