#pragma once

#include "platform/gstreamer/live/FrameExchange.h"
#include "platform/gstreamer/live/LivePipeline.h"

#include <QTimer>

#include <functional>

/// The live picture from a start to its stop, through all losses of the signal between. After a loss the device is
/// opened again as soon as it answers.
class LiveSession : public QObject
{
    Q_OBJECT

public:
    enum class State {
        Idle,
        Starting, ///< No frame yet, and none missed.
        Live,
        Lost,
    };

    LiveSession();
    ~LiveSession() override;

    /// Makes the device ready and tells where its stream comes from. Throws PlatformError.
    using Prepare = std::function<LiveSource()>;

    /// Ends what runs and starts anew. On PlatformError, which it passes on, the session is idle.
    void Start(Prepare prepare);
    void Stop();
    State Present() const { return m_state; }

    /// The device is gone: nothing is live from now on.
    void Lose();
    /// A good moment to open a lost device again.
    void RetryNow();

    /// Device pixels of the live picture; empty when it isn't seen.
    void SetArea(QSize area);

    /// Takes the full frames of this session over all losses of the signal; null for none.
    void SetTap(const std::shared_ptr<FrameTap>& tap);

    /// What is kept of the session's frames.
    FrameMemory& Memory() const { return *m_memory; }
    /// The next frame; null when idle or lost.
    std::shared_ptr<const AwaitedFrame> Await() const;

    /// The live frame of this moment, or null. Any thread.
    std::shared_ptr<const StillFrame> Hold() const;
    /// Null when idle.
    std::shared_ptr<FrameExchange> Frames() const;
    /// Counted from the start, over all losses of the signal.
    int FrameCount() const;
    /// Time of the newest frame since the start, in milliseconds.
    int FrameTimeMs() const;

Q_SIGNALS:
    void FrameReady();
    void StateChanged();

private:
    using Clock = FrameExchange::Clock;

    void OpenPipeline(std::chrono::milliseconds patience);
    void ClosePipeline();
    void SetState(State state);
    /// Time without a frame in which this session could have seen one.
    std::chrono::milliseconds Silence();
    void Watch();
    void Reopen();

    Prepare m_prepare;
    State m_state = State::Idle;
    bool m_isOpening = false;
    LivePipeline* m_pipeline = nullptr; ///< Deleted by the event loop: its own signal may be what closes it.
    QSize m_area;
    std::shared_ptr<FrameTap> m_tap;
    int m_framesBefore = 0;
    Clock::time_point m_startedAt;
    Clock::time_point m_nextTry;
    std::chrono::milliseconds m_pause{0};
    QTimer m_watch;
    Clock::time_point m_watchedAt;
    Clock::time_point m_newestSeen;
    std::chrono::milliseconds m_silence{0};
    const std::shared_ptr<FrameMemory> m_memory = std::make_shared<FrameMemory>();

    mutable std::mutex m_mutex;
    std::shared_ptr<FrameExchange> m_frames; ///< Guarded by the mutex.
};
