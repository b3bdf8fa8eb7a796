#pragma once

#include <QString>

/// The rows of `caso`, `doctor` and `so` as the findings screen needs them. All work on `FindingsRecord`. A failing
/// statement is a PlatformError and leaves the record as it was.

/// Fills the record with the visit's report of the lowest number; the visit is the record's own chart, date, doctor
/// (any for a blank one) and section. False when there is none: the record then stays as it was.
bool ReadFindingsOfVisit();
/// Fills the record with that report. False when there is none: the record is then cleared.
bool ReadFindingsByNumber(const QString& number);

/// The number for the next report of a year of four digits.
QString NextFindingsNumber(const QString& year);

/// Writes the record's row. Another report under its number makes it take the next free one. Gives true when the number
/// has changed.
bool StoreFindings();
/// Deletes the row of the record's number.
void RemoveFindings();

/// Fills doctor, licence, place of business, hospital and institution from the doctor's latest row that is valid on the
/// date of capture. False when there is none: nothing has changed.
bool ReadDoctor();
/// Name for lists of the record's doctor; null when no row is valid.
QString DoctorListName();
/// Doctors valid on the record's date of capture: code, blank, name.
QStringList DoctorEntries();

/// A ready-made findings phrase; null when there is none of that code.
QString OpinionText(const QString& code);
