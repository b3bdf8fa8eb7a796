#pragma once

#include <QString>
#include <QStringList>

#include <optional>

/// The rows of `doctor` that are valid on the date of capture of `FindingsRecord`. Reading changes nothing; a failing
/// statement is a PlatformError.

/// A doctor as his latest valid row tells.
struct FindingsDoctor
{
    QString Doctor;  ///< Name on the report.
    QString Myonheo; ///< Licence number.
    QString Saup;    ///< Number of the place of business.
};

/// Nothing when no row of that code is valid.
std::optional<FindingsDoctor> ReadDoctor(const QString& code);
/// Puts the doctor into the record, with hospital and institution of his place of business where the setup has it.
void TakeDoctor(const FindingsDoctor& doctor);
/// Name for lists of the doctor of that code; null when no row is valid.
QString DoctorListName(const QString& code);
/// All valid doctors: code, blank, name.
QStringList DoctorEntries();
