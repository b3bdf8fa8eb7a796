#include "frame/event_loop.h"

#include <QCoreApplication>
#include <QTimer>

bool event_loop::ServeUntil(const Question& done, const Question& hasEnded)
{
    while (!done()) {
        if (hasEnded())
            return false;
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    return true;
}

bool event_loop::ServeUntil(const Question& done, const Question& hasEnded, int timeoutMs)
{
    bool expired = false;
    QTimer timer;
    timer.setSingleShot(true);
    QObject::connect(&timer, &QTimer::timeout, &timer, [&expired] { expired = true; });
    timer.start(qMax(0, timeoutMs));
    return ServeUntil(done, [&] { return hasEnded() || expired; });
}
