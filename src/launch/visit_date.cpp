#include "launch/visit_date.h"

#include "contracts/desktop.h"
#include "contracts/PlatformError.h"
#include "frame/components.h"
#include "frame/waiting.h"
#include "records/Statement.h"
#include "text/date_routines.h"

#include <algorithm>

namespace {

/// No clinic has had a station for longer.
const QDate FirstDay(1990, 1, 1);
/// The screen isn't up yet: nobody could give the wait up.
constexpr int DatabasePatienceMs = 2000;

bool IsDigits(const QString& text)
{
    return std::ranges::all_of(text, [](QChar character) { return character >= u'0' && character <= u'9'; });
}

/// Invalid when the database doesn't say.
QDate DatabaseDate()
{
    try {
        const waiting::Patience patience(DatabasePatienceMs);
        const auto rows = OpenRows(Statement(u" SELECT CURRENT_DATE "));
        return HasRow(*rows) ? rows->Fields(0).toDate() : QDate();
    } catch (const PlatformError&) {
        return {};
    }
}

bool IsWithinAYear(QDate date, QDate today)
{
    return today.isValid() && date <= today.addYears(1);
}

} // namespace

bool IsVisitDate(const QString& ymd)
{
    const QDate date = IsDigits(ymd) ? DateFromText(ymd) : QDate();
    if (!date.isValid() || date < FirstDay)
        return false;
    // A machine that has lost its clock lives in the past.
    return IsWithinAYear(date, UseService<Desktop>().Today()) || IsWithinAYear(date, DatabaseDate());
}
