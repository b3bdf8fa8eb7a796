#include "platform/desktop/program_folder.h"

#include <QDir>
#include <QFileInfo>

using namespace Qt::StringLiterals;

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
