#pragma once

#include <QString>

#include <optional>

class Statement;

/// The rows of `doctor`. A failing statement is a PlatformError.

/// A doctor as his latest row tells that is valid on a date.
struct DoctorRow
{
    QString Name;    ///< On reports.
    QString Licence; ///< Number.
    QString Saup;    ///< Number of the place of business.
};

/// Nothing when no row of that code is valid on the date `yyyymmdd`.
std::optional<DoctorRow> LookupDoctor(const QString& code, const QString& ymd);

/// A statement on the valid rows of a doctor, the latest first: `columns` is all that stands before its condition.
Statement DoctorStatement(QStringView columns, const QString& code, const QString& ymd);
/// Adds the condition that a row is valid on the date, and what ends it.
Statement& ValidOnDate(Statement& statement, const QString& ymd, QStringView end);
