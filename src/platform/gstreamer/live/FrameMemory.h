#pragma once

#include "contracts/VideoCap.h"
#include "platform/gstreamer/GstPointers.h"

#include <chrono>
#include <deque>
#include <mutex>

/// The last seconds of a session's frames, over all losses of the signal, and what presses wait for. No lock is held
/// for longer than it takes to hand references over: the streaming thread waits for nobody.
class FrameMemory
{
public:
    using Clock = std::chrono::steady_clock;

    /// 0 for none.
    void SetSeconds(int seconds);

    /// On the streaming thread: a full frame, which came at that time. Of a stream that isn't compressed some are kept,
    /// as copies: the devices' own buffers are few.
    void Accept(GstSample* sample, Clock::time_point at, bool isCompressed);
    /// On the streaming thread: a frame as the camera compressed it.
    void AcceptCompressed(GstBuffer* buffer, Clock::time_point at);

    /// The frames around now, but for the one of that time in the stream; null when none are kept.
    std::shared_ptr<const FrameMoments> Hold(GstClockTime press);
    std::shared_ptr<const AwaitedFrame> Await();
    /// The device was stopped: nothing is kept, and nobody waits any longer.
    void Clear();

    /// A frame that is kept.
    struct Entry
    {
        std::shared_ptr<const StillFrame> frame;
        Clock::time_point at;
        GstClockTime time = GST_CLOCK_TIME_NONE;
        qint64 bytes = 0;
    };

private:
    class HeldMoments;
    class Awaited;

    /// Whether a frame of that size is to be kept.
    bool IsDue(Clock::time_point at, qint64 bytes, std::chrono::milliseconds interval);
    void Keep(Entry entry);

    std::mutex m_mutex;
    int m_seconds = 0;
    Clock::time_point m_next; ///< The next frame is due then.
    std::deque<Entry> m_entries;
    std::vector<std::weak_ptr<HeldMoments>> m_open; ///< Those that frames are still to come for.
    std::vector<std::weak_ptr<Awaited>> m_awaited;
};
