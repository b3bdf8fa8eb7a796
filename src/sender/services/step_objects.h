#pragma once

#include "contracts/dicom_services.h"
#include "pacs/PacsLine.h"

#include <QHash>
#include <QStringList>

#include <stop_token>

/// The series that entries of the queue are, or will be, at the server: what hasn't gone yet is read, so that its
/// identifier is known; `identities` are those of its pictures by number, as the table has them. To be asked on a
/// thread that may block. What can't be read is left out.
QList<DicomPerformedSeries> SeriesOf(const QList<PacsEntry>& entries, DicomPicture facts, const QString& captureRoot,
                                     const QHash<int, QStringList>& identities, const std::stop_token& stop);
/// The server has it.
bool IsAtServer(const PacsEntry& entry);
