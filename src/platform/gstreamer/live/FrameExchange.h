#pragma once

#include "contracts/VideoCap.h"
#include "platform/gstreamer/live/DisplayScaler.h"

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

    /// A signal without a frame for this long is lost.
    static constexpr std::chrono::milliseconds SignalTimeout{500};

    /// A picture to paint. The number counts the frames of the stream from 1.
    struct Picture
    {
        QImage image;
        int frame = 0;
    };

    /// `frames` were counted before this stream.
    explicit FrameExchange(int frames) : m_frames(frames) {}

    /// On the streaming thread: the newest frame.
    void Accept(GstSample* sample);

    /// Any thread. Null takes the tap away; a frame may be on its way to it still.
    void SetTap(std::shared_ptr<FrameTap> tap);

    /// Any thread. From now on nothing is live, whatever may still arrive.
    void Close();
    bool IsLive() const;
    /// When the newest frame came; the beginning of the stream before the first one.
    Clock::time_point NewestAt() const;
    /// The newest frame if it is live; otherwise null.
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
    bool IsLiveLocked() const;

    // So many pictures bridge a tenth of a second in which the user interface is busy; one that stays behind loses the
    // oldest.
    static constexpr std::size_t MostWaiting = 6;

    mutable std::mutex m_mutex;
    Clock::time_point m_newestAt = Clock::now();
    GstPointer<GstSample> m_newest;
    int m_frames;
    bool m_closed = false;
    QSize m_area;
    std::shared_ptr<FrameTap> m_tap;
    std::deque<Picture> m_waiting;
    std::vector<QImage> m_spare;
    DisplayScaler m_scaler; ///< Streaming thread only.
};
