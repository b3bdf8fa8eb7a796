#pragma once

#include <QtGlobal>

#include <algorithm>

/// How long what couldn't be done waits for its next try, and whatever else the sender lets pass, in milliseconds.
namespace pauses {

/// All of them are so many hundredths of what is written down: `--pauses` of the program, for whoever tries it.
inline int percent = 100;
inline int Of(int ms)
{
    return static_cast<int>(qint64(ms) * percent / 100);
}

/// Of one that waits for something of its own: longer than a server's first pauses last, so that others have their
/// turn.
inline constexpr int FirstOwnMs = 4000;
inline constexpr int LongestMs = 5 * 60 * 1000;
/// What needs another setup isn't looked at again before that, nor what a server wants none of.
inline constexpr int LongMs = 60 * 60 * 1000;

/// Doubled each time, up to the longest; as it is for this process, like all that follows.
inline int Own(int times)
{
    constexpr int MostDoublings = 7;
    return Of(std::min(FirstOwnMs << std::min(times, MostDoublings), LongestMs));
}
inline int Long()
{
    return Of(LongMs);
}

} // namespace pauses
