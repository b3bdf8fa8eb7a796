#pragma once

#include "contracts/OutsideChecks.h"

/// The tables of the database that `Connection` reaches: there, with the station's columns in their order, long enough,
/// in a character set that holds Korean, with the keys of the lists, and open to what the station does with them.
/// Changes nothing. `isServer` is false for a database that is a file, whose columns have no lengths.
CheckLines CheckTables(const ClientSetupRecord& client, bool isServer);
