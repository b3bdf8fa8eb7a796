#include "platform/files/program_folder.h"

#include "contracts/files.h"
#include "contracts/PlatformError.h"
#include "frame/journal.h"
#include "frame/services.h"

#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>

#include <algorithm>
#include <pwd.h>
#include <unistd.h>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

/// Below the folder for settings.
const QString OwnName = u"/capture-station"_s;
const QString SettingsName = u"CapSet.ini"_s;
const QString ListNames = u"PendingRows"_s;
const QString SpoolNames = u"Spool-"_s;

bool BelongsToPackages(const QString& folder)
{
    const QString place = QFileInfo(folder).canonicalFilePath();
    return (place.isEmpty() ? QDir::cleanPath(folder) : place).startsWith(u"/usr/"_s);
}

bool IsHeld(const QString& list)
{
    const QString mark = QFileInfo(list.mid(ListNames.size() + 1)).completeBaseName();
    const Holder holder = Files().HolderOf(mark);
    return holder == Holder::Living || holder == Holder::Self;
}

void Move(const QString& from, const QString& to)
{
    Files().WritePrivateFile(to, Files().ReadFile(from));
    Files().DeleteFile(from);
}

} // namespace

QString ExecutableFolder()
{
    return QFileInfo(QFile::symLinkTarget(u"/proc/self/exe"_s)).path();
}

QString ProgramFolderHere()
{
    const QString executable = ExecutableFolder();
    QString folder = FindProgramFolder(qEnvironmentVariable("CAPTURE_STATION_FOLDER"), executable,
                                       QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation));
    // The start asks for the folder more than once.
    static bool isTakenOver = false;
    if (!std::exchange(isTakenOver, true) && BelongsToPackages(executable))
        TakeOverProgramFolder(executable, folder);
    return folder;
}

QString FindProgramFolder(const QString& chosen, const QString& executableFolder, const QString& configFolder)
{
    QString folder = chosen.trimmed();
    if (folder.isEmpty() && QFileInfo(executableFolder).isWritable())
        folder = executableFolder;
    if (folder.isEmpty() || BelongsToPackages(folder))
        folder = configFolder + OwnName;
    folder = QDir::cleanPath(QDir(folder).absolutePath());
    QDir().mkpath(folder);
    return folder;
}

void TakeOverProgramFolder(const QString& from, const QString& to)
{
    try {
        const QStringList lists = Files().FilesStartingWith(from, ListNames);
        if (std::ranges::any_of(lists, IsHeld))
            return;
        // The pictures first: a list names those that lie beside it.
        for (const QString& name : Files().FilesStartingWith(from, SpoolNames) + lists)
            Move(from + u'/' + name, to + u'/' + name);
        // Others may read theirs from here too.
        if (Files().FileExists(from + u'/' + SettingsName) && !Files().FileExists(to + u'/' + SettingsName))
            Files().WritePrivateFile(to + u'/' + SettingsName, Files().ReadFile(from + u'/' + SettingsName));
    } catch (const PlatformError& error) {
        journal::NoteFault(u"앞 프로그램 폴더(%1)의 파일을 옮기지 못함: %2"_s.arg(from, error.Text()));
    }
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
