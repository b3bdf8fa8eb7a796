#include "frame/components.h"

#include "contracts/PlatformError.h"

#include <QHash>

using namespace Qt::StringLiterals;

namespace {
QHash<QString, std::any>& Makers()
{
    static QHash<QString, std::any> makers;
    return makers;
}
} // namespace

void components::Register(const QString& name, const std::any& maker)
{
    Makers().insert(name, maker);
}

std::any components::Find(const QString& name)
{
    return Makers().value(name);
}

void components::ThrowMissing(const QString& name)
{
    throw PlatformError(u"구성요소를 만들 수 없습니다.!! (%1)"_s.arg(name));
}
