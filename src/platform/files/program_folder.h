#pragma once

#include <QStringList>

/// The program's own folder of this run: the one that CAPTURE_STATION_FOLDER names, else where `FindProgramFolder` puts
/// it. Needs no application.
QString ProgramFolderHere();

/// The program's own folder, made when it isn't there, without a separator at its end: `chosen` unless that is empty,
/// else `executableFolder` if it can be written, else a folder of the program's name in `configFolder`.
QString FindProgramFolder(const QString& chosen, const QString& executableFolder, const QString& configFolder);

/// Folders where the program keeps what belongs to other users of this machine, as far as this user can look into them:
/// root can, others hardly.
QStringList ProgramFoldersOfOthers();
