#pragma once

#include "contracts/dicom_services.h"
#include "contracts/PacsSetup.h"
#include "pacs/service_rows.h"

/// Those of the entries that fit a section, the earliest first: by a code that the setup gives to sections, of an entry
/// with such a code; of any other by its modality.
QList<service_rows::Offer> FittingOffers(const QList<DicomScheduled>& entries, const QString& section,
                                         DicomModality modality, const PacsSetupRecord& setup);
