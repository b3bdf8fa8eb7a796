#include "text/date_routines.h"

#include "text/text_routines.h"

using namespace Qt::StringLiterals;

QDate DateFromText(const QString& ymd)
{
    return ymd.size() == 8 ? QDate::fromString(ymd, u"yyyyMMdd"_s) : QDate();
}

QString TextFromDate(QDate date)
{
    return date.toString(u"yyyyMMdd"_s);
}

QString LastDayOfMonth(const QString& year, const QString& month)
{
    const QDate first = DateFromText(Trim(year) + Trim(month) + u"01"_s);
    return first.isValid() ? QString::number(first.daysInMonth()) : QString();
}
