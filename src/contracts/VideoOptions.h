#pragma once

#include <QString>

/// What the video devices are to be like, set once the setup is known.
class VideoOptions
{
public:
    virtual ~VideoOptions() = default;

    /// A moving test picture stands in the list of devices beside the cameras. Once listed it keeps its position.
    virtual void OfferTestPicture(bool offered) = 0;
    /// Makes movies whole that a dead process of this machine left unfinished in the folder, under names that are free.
    /// Faults leave a file as it is. For a thread that may wait for the files.
    virtual void RepairMovies(const QString& folder) = 0;
};
