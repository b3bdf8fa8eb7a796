#include "capture/DateRefusal.h"

#include "contracts/PlatformError.h"
#include "screenparts/NoticeStrip.h"
#include "session/VisitContext.h"

#include <utility>

DateRefusal::DateRefusal(NoticeStrip& notices) : m_notices(notices)
{
    if (!VisitContext.YmdIsValid)
        m_notices.setNotice(NoticeStrip::Date, QString::fromUtf16(InvalidDateText));
}

bool DateRefusal::Refuses()
{
    if (VisitContext.YmdIsValid)
        return false;
    if (!std::exchange(m_isTold, true))
        throw PlatformError(QString::fromUtf16(InvalidDateText));
    m_notices.Flash();
    return true;
}
