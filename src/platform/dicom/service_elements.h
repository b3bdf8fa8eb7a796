#pragma once

#include "contracts/dicom_services.h"
#include "platform/dicom/Dataset.h"

#include <optional>

/// What the hospital's servers are told and asked, and what they answer, as elements.
namespace serviceelements {

/// The worklist is asked for a patient and a day.
QList<DicomElement> Question(const QString& patientId, const QString& ymd, DicomCharacters characters);
/// An entry as link_messages.h has elements; nothing for one of another patient or day.
std::optional<DicomScheduled> ScheduledOf(const QCborArray& entry, const QString& patientId, const QString& ymd);

/// Of a step in progress.
QList<DicomElement> BegunStep(const DicomPerformedStep& step, const DicomPicture& facts, const QString& station);
/// What has changed at its end.
QList<DicomElement> EndedStep(const DicomPerformedStep& step, const DicomPicture& facts);

QList<DicomElement> CommitmentOf(const QString& transaction, const QList<DicomReference>& objects);

} // namespace serviceelements
