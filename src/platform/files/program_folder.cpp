#include "platform/files/program_folder.h"

#include "contracts/files.h"
#include "contracts/PlatformError.h"
#include "frame/journal.h"
#include "frame/services.h"
#include "platform/files/process_mark.h"

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
const QString MovieNames = u"Movie-"_s;
const QString JournalNames = u"Pictures-"_s;
const QString PacsNames = u"Pacs-"_s;
/// Made by the package, for the group of its name.
const QString MachineFolder = u"/var/lib/capture-station"_s;

bool BelongsToPackages(const QString& folder)
{
    const QString place = QFileInfo(folder).canonicalFilePath();
    return (place.isEmpty() ? QDir::cleanPath(folder) : place).startsWith(u"/usr/"_s);
}

/// Process mark in a name such as Pictures-MARK.journal.
QString MarkIn(const QString& name)
{
    return QFileInfo(name).completeBaseName().section(u'-', 1);
}

bool IsHeld(const QString& name)
{
    const Holder holder = Files().HolderOf(MarkIn(name));
    return holder == Holder::Living || holder == Holder::Self;
}

void Move(const QString& from, const QString& to)
{
    Files().WritePrivateFile(to, Files().ReadFile(from));
    Files().DeleteFile(from);
}

/// What waits, unless a station works with it there: an earlier release may. The pictures first: a journal or a list
/// names those that lie beside it.
bool MoveWaiting(const QString& from, const QString& to)
{
    QStringList lists;
    for (const QString& prefix : {JournalNames, ListNames, PacsNames})
        lists += Files().FilesStartingWith(from, prefix);
    if (std::ranges::any_of(lists, IsHeld))
        return false;
    QStringList names;
    for (const QString& prefix : {SpoolNames, MovieNames, u'.' + MovieNames})
        names += Files().FilesStartingWith(from, prefix);
    for (const QString& name : names + lists)
        Move(from + u'/' + name, to + u'/' + name);
    return true;
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
        if (!MoveWaiting(from, to))
            return;
        // Others may read theirs from here too.
        if (Files().FileExists(from + u'/' + SettingsName) && !Files().FileExists(to + u'/' + SettingsName))
            Files().WritePrivateFile(to + u'/' + SettingsName, Files().ReadFile(from + u'/' + SettingsName));
    } catch (const PlatformError& error) {
        journal::NoteFault(u"앞 프로그램 폴더(%1)의 파일을 옮기지 못함: %2"_s.arg(from, error.Text()));
    }
}

StatePlace FindStateFolder(const QString& machineFolder, const QString& programFolder)
{
    StatePlace beside{programFolder, {}};
    const QFileInfo machine(machineFolder);
    const passwd* user = getpwuid(geteuid());
    if (user == nullptr || !machine.isDir() || !machine.isWritable() || !machine.isExecutable())
        return beside;
    const QString folder = machineFolder + u'/' + QFile::decodeName(user->pw_name);
    if (!journal::NotingFaults([&] { Files().MakePrivateFolder(folder); }))
        return beside;
    journal::NotingFaults([&] { MoveWaiting(programFolder, folder); });
    return {folder, machineFolder};
}

StatePlace StateFolderHere(const QString& programFolder)
{
    const bool isChosen = !qEnvironmentVariable("CAPTURE_STATION_FOLDER").trimmed().isEmpty();
    StatePlace state = isChosen ? StatePlace{programFolder, {}} : FindStateFolder(MachineFolder, programFolder);
    const QString boots = (state.machineFolder.isEmpty() ? programFolder : state.machineFolder) + u"/boots"_s;
    process_mark::KeepBoots(boots, [&] {
        QStringList marks;
        for (const QString& folder : {programFolder, state.folder}) {
            for (const QString& prefix : {JournalNames, ListNames, PacsNames}) {
                for (const QString& name : Files().FilesStartingWith(folder, prefix))
                    marks << MarkIn(name);
            }
        }
        return marks;
    });
    return state;
}

QStringList ProgramFoldersOfOthers()
{
    QStringList folders;
    for (const QFileInfo& folder :
         QDir(MachineFolder).entryInfoList(QDir::Dirs | QDir::NoSymLinks | QDir::NoDotAndDotDot)) {
        if (folder.ownerId() != geteuid() && folder.isReadable() && folder.fileName() != u"boots")
            folders << folder.filePath();
    }
    setpwent();
    while (const passwd* user = getpwent()) {
        const QString folder = QFile::decodeName(user->pw_dir) + u"/.config"_s + OwnName;
        // A folder that is his own: he may have put a link to somebody else's there.
        if (user->pw_uid != geteuid() && !folders.contains(folder) && QFileInfo(folder).isReadable() &&
            QFileInfo(folder).ownerId() == user->pw_uid)
            folders << folder;
    }
    endpwent();
    return folders;
}
