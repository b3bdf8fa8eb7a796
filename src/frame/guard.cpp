#include "frame/guard.h"

#include "contracts/PlatformError.h"
#include "frame/services.h"

#include <QCoreApplication>

#include <exception>
#include <vector>

using namespace Qt::StringLiterals;

namespace {

/// Number of guarded handlers that run at this moment, one inside the other.
int depth = 0;

std::vector<std::function<void()>> waiting;

void WorkOffWaiting()
{
    if (depth > 0)
        return;
    for (const std::function<void()>& work : std::exchange(waiting, {}))
        work();
}

} // namespace

void guard::WhenIdle(std::function<void()> work)
{
    waiting.push_back(std::move(work));
    QMetaObject::invokeMethod(qApp, &WorkOffWaiting, Qt::QueuedConnection);
}

guard::Entered::Entered()
{
    ++depth;
}

guard::Entered::~Entered()
{
    --depth;
    WorkOffWaiting();
}

void guard::AnswerFault()
{
    QString text;
    try {
        throw;
    } catch (const PlatformError& error) {
        text = error.Text();
    } catch (const std::bad_alloc&) {
        text = u"메모리가 부족합니다.!!"_s;
    } catch (const std::exception& error) {
        text = QString::fromUtf8(error.what());
    }
    SetMousePointer(PointerNormal);
    // Without a text there is nothing to be said: the operator has left.
    if (!text.isEmpty())
        ShowInformation(text);
}
