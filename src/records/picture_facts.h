#pragma once

#include "contracts/ClientSetup.h"
#include "contracts/dicom.h"

struct Visit;

/// What other systems are told of a visit's pictures, but for number and time. Empty where the tables don't know. The
/// clinic is that of the doctor's place of business; where there is none, the first of the setup. To be asked inside
/// work on the connection's thread, so setup and places come along; a failing statement is a PlatformError.
DicomPicture PictureFacts(const Visit& visit, const QString& doctor, const PacsSetupRecord& setup,
                          const SaupRecords& places);

/// Code of the doctor who examines on the visit, as far as the station knows: of the launched visit's day alone.
QString DoctorOf(const Visit& visit);
