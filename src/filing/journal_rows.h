#pragma once

#include "filing/PictureJournal.h"

class LocalDatabase;

/// The tables of a journal of pictures.
namespace journal_rows {

/// Statements that make those that aren't there.
QStringList Tables();
/// Makes those that aren't there, and what an earlier release's lack. Throws PlatformError.
void MakeTables(LocalDatabase& journal);
/// In the order in which they were written first. Throws PlatformError.
QList<PictureRecord> PictureRecords(LocalDatabase& journal);
QList<PictureJournal::Folder> Folders(LocalDatabase& journal);
QList<DeletionJob> Deletions(LocalDatabase& journal);
/// None of these in a journal of an earlier release.
QList<MovieJob> Movies(LocalDatabase& journal);
QList<RestoreJob> Restores(LocalDatabase& journal);
QList<MarkedJob> Marked(LocalDatabase& journal);

/// Statements.
QString Write(const PictureRecord& picture);
QString Remove(const QString& id);
QString Write(const DeletionJob& job);
QString RemoveDeletion(const QString& id);
QString Write(const MovieJob& job);
QString RemoveMovie(const QString& id);
QString Write(const RestoreJob& job);
QString RemoveRestore(const QString& id);
QString Write(const MarkedJob& job);
QString RemoveMarked(const QString& id);
/// `isLeft`: an earlier process's.
QString Write(const PictureJournal::Folder& folder, bool isLeft);
QString ForgetLeftFolders();

} // namespace journal_rows
