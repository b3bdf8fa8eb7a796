#include "contracts/guard.h"

#include "contracts/desktop.h"
#include "contracts/forms.h"
#include "contracts/PlatformError.h"

#include <exception>

using namespace Qt::StringLiterals;

namespace {
int depth = 0;
} // namespace

int guard::Depth()
{
    return depth;
}

guard::Entered::Entered()
{
    ++depth;
}

guard::Entered::~Entered()
{
    if (--depth == 0)
        forms::DeleteUnloaded();
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
    ShowInformation(text);
}
