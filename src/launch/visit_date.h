#pragma once

#include <QString>

/// True for a text `yyyymmdd` that can be the date of a visit: a day of the calendar from 1990 on, and no later than a
/// year from today, by the station's clock or by the database's, whichever is later.
bool IsVisitDate(const QString& ymd);
