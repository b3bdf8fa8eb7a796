#pragma once

#include <QString>

/// The rows of `caso` and `so` as the findings screen needs them. All work on `FindingsRecord`. A failing
/// statement is a PlatformError and leaves the record as it was.

/// Fills the record with the visit's report of the lowest number; the visit is the record's own chart, date, doctor
/// (any for a blank one) and section. False when there is none: the record then stays as it was.
bool ReadFindingsOfVisit();
/// Fills the record with that report. False when there is none: the record is then cleared.
bool ReadFindingsByNumber(const QString& number);

/// The number for the next report of a year of four digits.
QString NextFindingsNumber(const QString& year);
/// The number for the first one.
QString FirstFindingsNumber(const QString& year);

/// Writes the record's row, always whole. Another report under its number makes it take the next free one; where no
/// number can be counted on from, that is a PlatformError. Gives true when the number has changed.
bool StoreFindings();
/// Reads back what a column of the clinic's has kept of the record's texts; for the operator, empty when both are
/// whole.
QString CutTextsOfFindings();
/// Deletes the row of the record's number. Another report under it stays, with a PlatformError.
void RemoveFindings();

/// A ready-made findings phrase; null when there is none of that code.
QString OpinionText(const QString& code);
