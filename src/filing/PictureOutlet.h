#pragma once

#include <QString>

struct DeletionJob;
struct MovieJob;
struct PictureRecord;

/// Where a picture goes when the journal is done with it. Called on the journal's writing thread, so that what is
/// handed over is on the disk before the journal lets go of it. A call may come again for the same picture.
class PictureOutlet
{
public:
    virtual ~PictureOutlet() = default;

    /// Its file and rows are safe. Throws PlatformError: the journal then keeps it for the next start.
    virtual void HandOver(const PictureRecord& picture) = 0;
    /// The pictures of a deletion that has been begun aren't to go anywhere any more.
    virtual void Withdraw(const DeletionJob& job) = 0;
    /// The deletion has ended, and these of its pictures, or all of them, are still there.
    virtual void Restore(const DeletionJob& job) = 0;
    /// A file of a movie, by its name on the share, has come there whole.
    virtual void HandOverMovie(const MovieJob& job, const QString& fileName) = 0;
};
