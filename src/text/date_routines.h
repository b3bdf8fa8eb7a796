#pragma once

#include <QDate>
#include <QString>

/// The date of an eight-digit text `yyyymmdd`; invalid when the text is no date.
QDate DateFromText(const QString& ymd);
/// A date as eight digits of text.
QString TextFromDate(QDate date);

/// Last day of a month as plain number text, "28" to "31"; the month has two digits. Empty when year and month make
/// no date.
QString LastDayOfMonth(const QString& year, const QString& month);
