#pragma once

#include "contracts/PlatformError.h"
#include "filing/RestoreJob.h"

#include <QByteArray>
#include <QStringList>

/// The way of a picture back from the Log folder. Its file is taken by a rename, which only one of several gets,
/// whoever they are and whatever file system it is; then the number is claimed, the file written under it, its rows
/// follow, and the taken file goes before the claim does. So whoever comes to a job that was cut off sees how far it
/// has come, and every step may be repeated.
///
/// Every routine throws PlatformError, DatabaseAway and FilesAway among them.
namespace picture_restore {

/// The picture is back with its rows; its taken file, and the claim with it, are for a later run of the job.
class Unfinished : public PlatformError
{
public:
    using PlatformError::PlatformError;
};

enum class Taken {
    Yes,
    Gone,    ///< Somebody else was quicker.
    Another, ///< Another picture had come under the name, and is back there.
};

/// `version` is that of the picture that is meant. After a fault that isn't FilesAway nothing has changed.
Taken Take(const RestoreJob& job, const QByteArray& version);

/// Brings the picture under the number that it had or, if a file, a row or a claim has that, under one that no picture
/// of the visit has or had, and writes its rows. Gives the number, or 0 when nothing is left to do: the picture was
/// never taken, or is back already. `faults` gets what a disk reports of a file that stands. Throws Unfinished, and for
/// whatever comes before that, `GiveBack` may be called.
int Bring(const RestoreJob& job, QStringList& faults);

/// Takes back what has been done: the picture lies among the deleted ones again, under its name, or under one of its
/// own should another have come there.
void GiveBack(const RestoreJob& job);

/// A number's claim bears the name of a job that may be another user's: the picture stands there, its rows are in, and
/// what was taken for it goes from the Log folder.
void DropTaken(const Visit& visit, int number, const QString& id);

/// Name under which a file in the Log folder was taken; empty for the name of any other.
QString SourceOf(const QString& name);

} // namespace picture_restore
