#pragma once

#include "contracts/OutsideChecks.h"

/// What the clinic's server for pictures takes of what the setup sends, asked by agreeing on it: nothing is stored.
/// Nothing about a server that isn't there.
CheckLines CheckAbilities(const PacsSetupRecord& pacs);
