#pragma once

#include "pacs/PacsLine.h"
#include "visit/Visit.h"

#include <QDateTime>
#include <QList>

class Report;
class TerminalOutput;

/// A picture in a Log folder, by its name: the plain one, the one with an identity behind the number, or one that was
/// given by hand.
struct DeletedPicture
{
    Visit visit; ///< With the extension of the file's name, and no patient type.
    int number = 0;
    QString name; ///< Of the file.
    qint64 size = 0;
    QDateTime movedAt;     ///< Local time.
    bool wasSwept = false; ///< Nobody has deleted it: it had no row. Files moved by earlier releases don't tell.
    bool isTaken = false;  ///< It is on its way back.

    QString Path() const { return visit.LogFolder() + name; }
};

/// Pictures in the Log folders below the capture root, by section, date, chart and number; of one chart or one date of
/// it where those aren't empty. Throws PlatformError.
QList<DeletedPicture> DeletedPictures(const QString& chart = {}, const QString& ymd = {});

/// Years that have a folder below the capture root, oldest first. Throws PlatformError.
QStringList ArchiveYears();
/// Sections among the folders of a year, whatever the setup lists. A Log folder or that of the movies is none.
QStringList SectionsAmong(const QStringList& folderNames);
/// Sections that have a Log folder in the year's folder. Throws PlatformError.
QStringList SectionsWithLog(const QString& yearFolder);
/// Log folders among the names of folders.
QStringList LogsAmong(const QStringList& folderNames);

/// `list-deleted [CHART [DATE]]`. Gives an `ExitCode`.
int ListDeleted(const QStringList& arguments, Report& report);
/// `restore CHART DATE SECTION NUMBER [FILE]`. Gives an `ExitCode`.
int RestorePicture(const QStringList& arguments, TerminalOutput& out);
/// A picture is back in its place: it goes to the clinic's server, where there is one. A fault is told.
void SendAgain(const Visit& visit, int number, PacsLine::Kind kind);
