#include "records/text/date_routines.h"

#include "records/text/text_routines.h"

#include <QComboBox>

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

void FillDayCombo(const QString& year, const QString& month, const QString& currentDay, QComboBox& list)
{
    const QString last = LastDayOfMonth(year, month);
    if (!IsNumericText(last))
        return;
    const int days = WholeNumber(last);
    list.clear();
    for (int day = 1; day <= days; ++day)
        list.addItem(LayIntoMask(QString::number(day), u"00"));
    const int current = WholeNumber(currentDay);
    list.setCurrentIndex(current >= 1 && current <= days ? current - 1 : 0);
}
