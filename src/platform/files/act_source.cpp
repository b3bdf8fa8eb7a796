#include "platform/files/act_source.h"

#include "contracts/ActSource.h"

#include <QFile>
#include <QSysInfo>

#include <pwd.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

QString UserName(uid_t user)
{
    const passwd* entry = getpwuid(user);
    return entry != nullptr ? QFile::decodeName(entry->pw_name) : QString::number(user);
}

} // namespace

ActSource ActSourceHere(QStringView program)
{
    QString user = UserName(getuid());
    const QString behind = qEnvironmentVariable("SUDO_USER");
    if (getuid() == 0 && !behind.isEmpty() && behind != user)
        user += u" (%1)"_s.arg(behind);
    return {program.toString(), QSysInfo::machineHostName(), user};
}
