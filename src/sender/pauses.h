#pragma once

#include <algorithm>

/// How long what couldn't be done waits for its next try, in milliseconds.
namespace pauses {

/// Of one that waits for something of its own: longer than a server's first pauses last, so that others have their
/// turn.
inline constexpr int FirstOwnMs = 4000;
inline constexpr int LongestMs = 5 * 60 * 1000;
/// What needs another setup isn't looked at again before that, nor what a server wants none of.
inline constexpr int LongMs = 60 * 60 * 1000;

/// Doubled each time, up to the longest.
inline int Own(int times)
{
    constexpr int MostDoublings = 7;
    return std::min(FirstOwnMs << std::min(times, MostDoublings), LongestMs);
}

} // namespace pauses
