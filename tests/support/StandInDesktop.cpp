#include "support/StandInDesktop.h"

#include <QCoreApplication>
#include <QTest>

bool StandInDesktop::AskYesNo(const QString& question)
{
    questions.append(question);
    return answer;
}

void StandInDesktop::PumpEvents()
{
    QCoreApplication::processEvents();
}

bool StandInDesktop::PumpEventsUntil(const std::function<bool()>& done, int timeoutMs)
{
    return QTest::qWaitFor(done, timeoutMs);
}
