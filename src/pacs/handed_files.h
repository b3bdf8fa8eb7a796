#pragma once

#include <QString>
#include <QStringList>

/// Files on this machine that wait for the sender beside the queue, named by their entries' identities.
namespace handed_files {

QString ReportPath(const QString& id);
/// A movie as it goes to the server.
QString MoviePath(const QString& id);
/// Held while a picture from a device is shown on this machine: nothing is made ready meanwhile.
QString LiveLockPath();

/// Takes away what the entry has, in this user's folder. Throws PlatformError.
void Remove(const QString& id);
/// The same in the folder of another queue.
void Remove(const QString& id, const QString& folder);
/// Takes away the files of all others but these, and what is being written, unless it is younger than a day. Throws
/// PlatformError.
void RemoveAllBut(const QStringList& ids);

} // namespace handed_files
