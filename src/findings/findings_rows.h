#pragma once

#include <QString>

#include <optional>

struct FindingsRecordFields;

/// The rows of `caso` and `so` as the findings screen needs them. A failing statement is a PlatformError and leaves
/// the record as it was.

/// Fills the record with the visit's report of the lowest number; the visit is the record's own chart, date, doctor
/// (any for a blank one) and section. False when there is none: the record then stays as it was.
bool ReadFindingsOfVisit(FindingsRecordFields& record);
/// Fills the record with that report. False when there is none: the record is then cleared.
bool ReadFindingsByNumber(FindingsRecordFields& record, const QString& number);

/// The number for the next report of a year of four digits.
QString NextFindingsNumber(const QString& year);
/// The number for the first one.
QString FirstFindingsNumber(const QString& year);

enum class FindingsStored {
    Done,
    Renumbered, ///< Another report had its number: it has the next free one.
    Changed,    ///< Nothing: the row isn't what it was when the record was read or stored last, or is gone.
};
/// Writes the record's row, always whole: in the place of the one that it was read from, while that is byte for byte
/// what it was; a record without one as a new row. Where no number can be counted on from, that is a PlatformError.
FindingsStored StoreFindings(FindingsRecordFields& record);
/// The row as it stands now is what the record will be stored in the place of. Without one, or with another report's
/// under its number, the record is a new one.
void TakePresentRow(FindingsRecordFields& record);
struct FindingsTexts
{
    QString findings;
    QString remark;
};
/// The long texts of the record's row as it was read or stored last; nothing without one.
std::optional<FindingsTexts> StoredFindingsTexts(const FindingsRecordFields& record);
/// The record, if it has a row, was begun from these: `StoreFindings` compares with them.
void ExpectFindingsTexts(FindingsRecordFields& record, const FindingsTexts& texts);
/// What a column of the clinic's has kept of the record's texts when it was stored; for the operator, empty when both
/// are whole.
QString CutTextsOfFindings(const FindingsRecordFields& record);
/// Deletes the row of the record's number. Another report under it stays, with a PlatformError.
void RemoveFindings(FindingsRecordFields& record);

/// A ready-made findings phrase; null when there is none of that code.
QString OpinionText(const QString& code);
