#pragma once

#include "contracts/ClientSetup.h"

/// What a setup is known by, as far as it matters to the sender: two that differ there have different ones.
QString SetupDigest(const ClientSetupRecord& setup, const SaupRecords& places);
