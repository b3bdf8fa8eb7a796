#include "platform/files/program_folder.h"

#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>

using namespace Qt::StringLiterals;

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
        folder = configFolder + u"/capture-station"_s;
    folder = QDir::cleanPath(QDir(folder).absolutePath());
    QDir().mkpath(folder);
    return folder;
}
