#pragma once

#include "contracts/dicom_services.h"

#include <QCborMap>

#include <utility>

/// What servers have told the process of the connections, out of its answers. These may hold anything: what isn't as
/// link_messages.h has it is left out, or empty.
namespace linkanswers {

/// False for a message that is no map, or isn't whole.
bool Read(const QByteArray& message, QCborMap& answer);

/// Pairs of class and transfer syntax.
using Taken = QList<std::pair<QString, QString>>;

Taken TakenOf(const QCborMap& answer);
/// Those of this identifier: a server may tell of more than it was asked for.
QList<DicomFoundStudy> StudiesOf(const QCborMap& answer, const QString& uid);
QList<DicomFound> PicturesOf(const QCborMap& answer);
/// Those of the patient and the day.
QList<DicomScheduled> ScheduledOf(const QCborMap& answer, const QString& patientId, const QString& ymd);
DicomCommitment ReportOf(const QCborMap& answer);

} // namespace linkanswers
