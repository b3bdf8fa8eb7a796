#pragma once

#include "contracts/OutsideChecks.h"

/// The folder of the captures: whether it answers, what carries it, what the station needs of it, and its room. A file
/// is made there and deleted again.
CheckLines CheckRootFolder(const ClientSetupRecord& client);
