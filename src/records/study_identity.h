#pragma once

#include "contracts/ClientSetup.h"
#include "contracts/dicom.h"

#include <optional>

struct Visit;

/// Under what the station's visits are known elsewhere. What was given once stands in the station's table `ca_uid`;
/// without that table it follows from the setup each time. All are to be called inside work on the connection's thread;
/// a failing statement is a PlatformError.

/// What the setup gives a visit that has none yet: nothing when it names neither an institution nor a root. The
/// institution is the setup's own, else the care institution number of the first place of business.
std::optional<DicomIdentity> NewIdentity(const Visit& visit, const PacsSetupRecord& setup, const SaupRecords& places);
/// As earlier releases had it, by the place of business of whoever examined: what a visit may be known under that was
/// sent by one, for each place of the setup, without repeats.
QList<DicomIdentity> FormerIdentities(const Visit& visit, const PacsSetupRecord& setup, const SaupRecords& places);

/// What has been given to the visit; nothing when that is nothing, or there is no table for it.
std::optional<DicomIdentity> KeptIdentity(const Visit& visit);
/// Gives it to the visit and returns what the visit has then: what another station gave a moment before stands. Without
/// the table it is `identity`.
DicomIdentity KeepIdentity(const Visit& visit, const DicomIdentity& identity);
