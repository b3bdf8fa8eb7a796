#include "admin/upkeep_connection.h"

#include "admin/commands.h"
#include "frame/components.h"

using namespace Qt::StringLiterals;

QString OptionValue(const QStringList& options, const QString& name)
{
    for (const QString& option : options) {
        if (option.startsWith(name))
            return option.sliced(name.size());
    }
    return {};
}

ConnectionPointer OpenForUpkeep(const OutsideChecks::Setup& setup, const QStringList& options,
                                const QString& userOption)
{
    auto& outside = UseService<OutsideChecks>();
    if (!setup.isServer)
        return outside.OpenForUpkeep({}, {}, {});
    const QString user = OptionValue(options, userOption);
    const QString passwordFile = OptionValue(options, u"--password-file="_s);
    const QString password = user.isEmpty() || !passwordFile.isEmpty()
                                 ? QString()
                                 : Surroundings.askSecret(u"%1의 데이터베이스 암호:"_s.arg(user));
    return outside.OpenForUpkeep(user, password, passwordFile);
}
