#pragma once

#include <QStringList>

/// The folder that the program's own file lies in.
QString ExecutableFolder();
/// Path of one of the program's helpers, which lie in the folder `libexec` of a folder above its own file; empty when
/// it isn't there.
QString OwnProgram(const QString& name);

/// The program's own folder of this run: the one that CAPTURE_STATION_FOLDER names, else where `FindProgramFolder` puts
/// it. Takes over what an earlier version left in a folder of the system. Needs the file service and no application.
QString ProgramFolderHere();

/// The program's own folder, made when it isn't there, without a separator at its end: `chosen` unless that is empty,
/// else `executableFolder` if it can be written, else a folder of the program's name in `configFolder`. Never one below
/// /usr, which is the packages' own: that counts as one that can't be written.
QString FindProgramFolder(const QString& chosen, const QString& executableFolder, const QString& configFolder);

/// Brings the settings and the lists of pictures that wait from one program folder into another: a list is in one place
/// only, settings that are there already stay. Nothing is moved while a station that works in `from` lives. What can't
/// be moved stays where it is and is told on standard error.
void TakeOverProgramFolder(const QString& from, const QString& to);

/// Where pictures on their way lie.
struct StatePlace
{
    QString folder;        ///< This user's own.
    QString machineFolder; ///< That of all users, in which it lies; empty where it is the program's folder.
};
/// In the machine's folder that the package makes, where this user may write in it and hasn't chosen a program folder,
/// else the program's. Brings what lies in the program's folder there, and keeps the record of the machine's boots.
StatePlace StateFolderHere(const QString& programFolder);
/// The same for any machine's folder.
StatePlace FindStateFolder(const QString& machineFolder, const QString& programFolder);

/// Folders where the program keeps what belongs to other users of this machine, as far as this user can look into them:
/// root can, others hardly.
QStringList ProgramFoldersOfOthers();
