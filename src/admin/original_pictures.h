#pragma once

#include "visit/Visit.h"

#include <QDateTime>
#include <QList>

class Report;
class TerminalOutput;

/// A picture as it was before it was marked up, kept in a Log folder.
struct OriginalPicture
{
    Visit visit;      ///< With the extension of the file's name, and no patient type.
    QString picture;  ///< Identity.
    QString name;     ///< Of the file.
    QDateTime keptAt; ///< Local time.

    QString Path() const { return visit.LogFolder() + name; }
};

/// The originals of one chart or, unless empty, one date of it. Throws PlatformError.
QList<OriginalPicture> OriginalPictures(const QString& chart, const QString& ymd = {});

/// `originals CHART [DATE]`. Gives an `ExitCode`.
int ListOriginals(const QStringList& arguments, Report& report);
/// `restore-original CHART DATE SECTION NUMBER`: the marked picture goes to the Log folder, as a deleted one. Gives an
/// `ExitCode`.
int RestoreOriginal(const QStringList& arguments, TerminalOutput& out);
