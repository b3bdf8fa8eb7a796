#pragma once

#include <QDateTime>
#include <QList>
#include <QString>
#include <QStringList>

/// A file of the staging folder as it stood when its burn began.
struct StagedFile
{
    QString path; ///< Below the staging folder, with slashes.
    qint64 bytes = 0;
    QDateTime changed;
};

/// A name on the disc that can't be the one in the folder.
struct DiscRename
{
    QString from; ///< Both from the disc's root, beginning with a slash, with all earlier renames done.
    QString to;
};

struct StagedFiles
{
    QList<StagedFile> files;
    QStringList folders; ///< Each after the one that holds it.
    QList<DiscRename> renames;
    QStringList unreadable; ///< Files and folders whose names can't stand on a disc as they are.

    /// What they take on a disc: whole sectors, folder records, and the volume's own tables.
    qint64 DiscBytes() const;
    /// Path of a file on the disc, from its root.
    QString OnDisc(const StagedFile& file) const;
    /// Paths and sizes of the files as the disc has to hold them, from its root.
    QHash<QString, qint64> OnDisc() const;
};

/// What is written to takes other names than Windows does: a disc's second set of names sees to that, a stick has none.
enum class DiscNames { Disc, Stick };

/// What lies in the folder. Links and other things that are no files are left out. Names that only differ in case,
/// which Windows takes for one, get a number; characters that break a line become an underline, and on a stick those
/// that its file system doesn't take. Throws PlatformError.
StagedFiles ListStagedFiles(const QString& folder, DiscNames names = DiscNames::Disc);

/// Paths of those files that are no longer as they were.
QStringList ChangedSince(const QString& folder, const StagedFiles& staged);
/// Deletes those files that are still as they were, and the folders that then are empty. Throws PlatformError.
void DeleteStagedFiles(const QString& folder, const StagedFiles& staged);

/// Lines of a long listing of regular files, as xorriso writes them: path and size. Other lines are passed over.
QHash<QString, qint64> FilesOfListing(const QStringList& lines);

/// A name with a number before its extension: "a.jpg" and 2 are "a (2).jpg". What becomes too long loses the end of
/// its stem.
QString NumberedName(const QString& name, int number);
