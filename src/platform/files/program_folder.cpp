#include "platform/files/program_folder.h"

#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>

#include <pwd.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {
/// Below the folder for settings.
const QString OwnName = u"/capture-station"_s;
} // namespace

QString ProgramFolderHere()
{
    return FindProgramFolder(qEnvironmentVariable("CAPTURE_STATION_FOLDER"),
                             QFileInfo(QFile::symLinkTarget(u"/proc/self/exe"_s)).path(),
                             QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation));
}

QString FindProgramFolder(const QString& chosen, const QString& executableFolder, const QString& configFolder)
{
    QString folder = chosen.trimmed();
    if (folder.isEmpty() && QFileInfo(executableFolder).isWritable())
        folder = executableFolder;
    if (folder.isEmpty())
        folder = configFolder + OwnName;
    folder = QDir::cleanPath(QDir(folder).absolutePath());
    QDir().mkpath(folder);
    return folder;
}

QStringList ProgramFoldersOfOthers()
{
    QStringList folders;
    setpwent();
    while (const passwd* user = getpwent()) {
        const QString folder = QFile::decodeName(user->pw_dir) + u"/.config"_s + OwnName;
        if (user->pw_uid != geteuid() && !folders.contains(folder) && QFileInfo(folder).isReadable())
            folders << folder;
    }
    endpwent();
    return folders;
}
