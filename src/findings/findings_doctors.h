#pragma once

#include <QString>
#include <QStringList>

struct DoctorRow;
struct FindingsRecordFields;

/// The doctors of a report: the rows of `doctor` that are valid on its date of capture, `yyyymmdd`. A failing statement
/// is a PlatformError.

/// Puts the doctor into the record, with hospital and institution of his place of business where the setup has it.
void TakeDoctor(FindingsRecordFields& record, const DoctorRow& doctor);
/// Name for lists of the doctor of that code; null when no row is valid.
QString DoctorListName(const QString& code, const QString& ymd);
/// All valid doctors: code, blank, name.
QStringList DoctorEntries(const QString& ymd);
