#pragma once

#include "contracts/ClientSetup.h"
#include "contracts/dicom.h"

struct Visit;

/// What other systems are told of a visit's pictures, but for its identity, number and time. Empty where the tables
/// don't know. The clinic has the setup's name, else that of the first place of business. To be asked inside work on
/// the connection's thread, so setup and places come along; a failing statement is a PlatformError.
DicomPicture PictureFacts(const Visit& visit, const QString& doctor, const PacsSetupRecord& setup,
                          const SaupRecords& places);

/// The visit that the station was started for.
struct LaunchedVisit
{
    QString chart;
    QString ymd;
    QString doctor; ///< Code of the one who examines.

    /// The doctor of any visit, as far as the station knows: of this one's day alone.
    QString DoctorOf(const Visit& visit) const;
};
