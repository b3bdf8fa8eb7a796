#pragma once

#include <atomic>
#include <ctime>
#include <sys/syscall.h>
#include <sys/time.h>
#include <unistd.h>

/// The clock on the wall of this test program, which somebody sets while it runs; the machine's own stays. For one
/// source file of a program: its definitions stand before those of the C library.
namespace WallClock {
inline std::atomic<int> behind = 0;

inline void SetBack(int seconds)
{
    behind = seconds;
}
} // namespace WallClock

extern "C" {
int clock_gettime(clockid_t clock, timespec* time) noexcept
{
    const long result = syscall(SYS_clock_gettime, clock, time);
    if (clock == CLOCK_REALTIME || clock == CLOCK_REALTIME_COARSE)
        time->tv_sec -= WallClock::behind;
    return int(result);
}

int gettimeofday(timeval* time, void*) noexcept
{
    timespec now = {};
    clock_gettime(CLOCK_REALTIME, &now);
    *time = {now.tv_sec, now.tv_nsec / 1000};
    return 0;
}

time_t time(time_t* into) noexcept
{
    timespec now = {};
    clock_gettime(CLOCK_REALTIME, &now);
    if (into != nullptr)
        *into = now.tv_sec;
    return now.tv_sec;
}
}
