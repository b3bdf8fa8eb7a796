#pragma once

#include <QStringList>

/// Where lies what is on its way: this user's own folder on this machine's disk, with a separator at its end.
QString LocalFolder();

/// The capture root and the folders of a date's year and its sections, each behind the one that it lies in.
QStringList CaptureFolders(const QString& root, const QString& ymd, const QStringList& sections);
/// In that order. Throws PlatformError when one can't be made.
void MakeMissingFolders(const QStringList& folders);

/// Makes a folder inside a year's folder when it is missing. The year's folder itself is made only at the start: if it
/// is gone later, so is the share, and a folder made now would lie on the disk under it. Throws PlatformError then.
void EnsureFolderOfYear(const QString& yearFolder, const QString& folder);
