#include "frame/guard.h"

#include "contracts/PlatformError.h"
#include "frame/services.h"

#include <QCoreApplication>

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

QString guard::TextOf(const std::exception_ptr& fault)
{
    try {
        std::rethrow_exception(fault);
    } catch (const PlatformError& error) {
        return error.Text();
    } catch (const std::bad_alloc&) {
        return u"메모리가 부족합니다.!!"_s;
    } catch (const std::exception& error) {
        return QString::fromUtf8(error.what());
    }
}

void guard::Rethrow(const std::exception_ptr& fault)
{
    if (fault != nullptr)
        std::rethrow_exception(fault);
}

void guard::AnswerFault()
{
    const QString text = TextOf(std::current_exception());
    SetMousePointer(PointerNormal);
    // Without a text there is nothing to be said: the operator has left.
    if (!text.isEmpty())
        ShowInformation(text);
}
