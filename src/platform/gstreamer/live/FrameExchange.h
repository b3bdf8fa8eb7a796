#pragma once

#include "contracts/VideoCap.h"
#include "platform/gstreamer/live/DisplayScaler.h"
#include "platform/gstreamer/live/FrameMemory.h"

#include <chrono>
#include <deque>
#include <mutex>

/// What takes the full frames of a stream beside the screen. Called on the streaming thread.
class FrameTap
{
public:
    virtual ~FrameTap() = default;
    virtual void Accept(GstSample* sample) = 0;
};

/// Where the frames of one stream pass from the streaming thread to the others. It knows which frame is live, and
/// keeps the pictures for the screen that wait to be painted.
class FrameExchange
{
public:
    using Clock = std::chrono::steady_clock;

    /// A device has so long for its first frame, and each later one has to come so long behind the one before it: else
    /// the signal counts as lost.
    static constexpr std::chrono::milliseconds FirstFrameTimeout{4000};
    static constexpr std::chrono::milliseconds SignalTimeout{1000};
    /// No older frame passes for the picture of this moment.
    static constexpr std::chrono::milliseconds HeldAge{500};

    /// A picture to paint. The number counts the frames of the stream from 1.
    struct Picture
    {
        QImage image;
        int frame = 0;
    };

    /// `frames` were counted before this stream; `memory` may be null.
    FrameExchange(int frames, std::shared_ptr<FrameMemory> memory) : m_memory(std::move(memory)), m_frames(frames) {}

    /// On the streaming thread: the newest frame.
    void Accept(GstSample* sample);
    /// The same of a camera that compresses: the frame as it came, before it is decoded.
    void AcceptCompressed(GstBuffer* buffer);

    /// Any thread. Null takes the tap away; a frame may be on its way to it still.
    void SetTap(std::shared_ptr<FrameTap> tap);

    /// Any thread. From now on nothing is live, whatever may still arrive.
    void Close();
    /// The newest frame isn't older than the signal's timeout.
    bool IsLive() const;
    /// A frame has come.
    bool HasBegun() const;
    /// When the newest frame came; the beginning of the stream before the first one.
    Clock::time_point NewestAt() const;
    /// The newest frame, unless it is too old; then null.
    std::shared_ptr<const StillFrame> Hold() const;
    int Frames() const;

    /// Device pixels that the live picture may fill; empty when it isn't seen.
    void SetArea(QSize area);
    /// The picture that is next to be painted, oldest first; a null image when there is none. `painted` is handed
    /// back to be drawn into again.
    Picture TakePicture(QImage painted);
    bool HasPicture() const;
    void DropPictures();

private:
    bool IsYoungerLocked(std::chrono::milliseconds age) const;

    // So many pictures bridge a tenth of a second in which the user interface is busy; one that stays behind loses the
    // oldest.
    static constexpr std::size_t MostWaiting = 6;

    const std::shared_ptr<FrameMemory> m_memory;
    mutable std::mutex m_mutex;
    Clock::time_point m_newestAt = Clock::now();
    GstPointer<GstSample> m_newest;
    int m_frames;
    bool m_closed = false;
    bool m_isCompressed = false;
    QSize m_area;
    std::shared_ptr<FrameTap> m_tap;
    std::deque<Picture> m_waiting;
    std::vector<QImage> m_spare;
    DisplayScaler m_scaler; ///< Streaming thread only.
};
