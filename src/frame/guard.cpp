#include "frame/guard.h"

#include "contracts/PlatformError.h"
#include "frame/services.h"

using namespace Qt::StringLiterals;

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
