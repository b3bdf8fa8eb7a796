#pragma once

#include "contracts/OutsideChecks.h"

/// The setup file, its secrets, the way to the database, and the server's clock.
OutsideChecks::Setup CheckSetup();

/// As `OutsideChecks` has it.
ConnectionPointer OpenForUpkeep(const QString& user, const QString& password, const QString& passwordFile);
