#include "frame/event_loop.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QTimer>

bool event_loop::ServeUntil(const Question& done, const Question& hasEnded, int patienceMs)
{
    const QDeadlineTimer deadline = patienceMs > 0 ? QDeadlineTimer(patienceMs) : QDeadlineTimer::Forever;
    QTimer wake;
    if (patienceMs > 0)
        wake.start(patienceMs);
    while (!done()) {
        if (hasEnded() || deadline.hasExpired())
            return false;
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    return true;
}
