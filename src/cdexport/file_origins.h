#pragma once

#include <QHash>
#include <QString>
#include <QStringList>

/// Where staged files come from, as it was when they were chosen: a small file of the station's own beside the staging
/// folder. A name alone tells too little: the section isn't in it, and a file under it may be another by now.
namespace file_origins {

struct Origin
{
    QString chart; ///< Eight columns.
    QString ymd;   ///< `yyyymmdd`
    QString etc;   ///< Examination section; empty for a movie, which is of a visit.
    int number = 0;
};

/// The files that stand in the folder, by name.
QStringList NamesIn(const QString& area);
/// Notes the origin of a file that has just been copied into the folder; `before` is what stood there then. A fault
/// leaves it without one.
void Record(const QString& area, const QStringList& before, const QString& source, const Origin& origin);
/// Origins of the files that are still the ones that were chosen, by name.
QHash<QString, Origin> Of(const QString& area);

} // namespace file_origins
