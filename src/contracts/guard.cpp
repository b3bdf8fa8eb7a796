#include "contracts/guard.h"

#include "contracts/desktop.h"
#include "contracts/PlatformError.h"

#include <exception>

using namespace Qt::StringLiterals;

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
    ShowInformation(text);
}
