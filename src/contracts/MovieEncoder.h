#pragma once

#include "contracts/PlatformError.h"

#include <QString>

#include <stop_token>

/// A movie as it was made ready.
struct EncodedMovie
{
    int columns = 0;
    int rows = 0;
    int frames = 0;
    double frameMs = 0; ///< From one frame to the next.
};

/// It never will be made ready on this machine as it is.
class MovieUnusable : public PlatformError
{
public:
    using PlatformError::PlatformError;
};

/// Makes movies for other systems: H.264, High Profile at level 4.1, in an MP4 file, of the size and the rate that the
/// movie has.
class MovieEncoder
{
public:
    virtual ~MovieEncoder() = default;

    /// Writes `target`, whole or not at all, in place of what stands there. Takes its time, at a low priority, and
    /// blocks the calling thread. Throws PlatformError, MovieUnusable among them; also when a stop is asked for.
    virtual EncodedMovie Encode(const QString& source, const QString& target, bool hasSound,
                                const std::stop_token& stop) = 0;
};
