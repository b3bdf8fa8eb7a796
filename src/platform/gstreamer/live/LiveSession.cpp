#include "platform/gstreamer/live/LiveSession.h"

#include "contracts/PlatformError.h"

#include <QPointer>
#include <QScopeGuard>

#include <algorithm>

using namespace std::chrono_literals;

namespace {
// Long enough for most faults of a device to show, short enough not to be felt.
constexpr auto StartPatience = 250ms;
constexpr auto WatchInterval = 50ms;
// A stream that stays silent for so long is opened anew: some cameras need it.
constexpr auto StallTimeout = 5s;
constexpr auto ShortestPause = 500ms;
constexpr auto LongestPause = 3s;
} // namespace

LiveSession::LiveSession()
{
    m_watch.setInterval(WatchInterval);
    connect(&m_watch, &QTimer::timeout, this, &LiveSession::Watch);
}

LiveSession::~LiveSession()
{
    ClosePipeline();
}

void LiveSession::Start(Prepare prepare)
{
    Stop();
    m_framesBefore = 0;
    m_startedAt = Clock::now();
    m_pause = ShortestPause;
    m_prepare = std::move(prepare);
    OpenPipeline(StartPatience);
    m_watch.start();
    SetState(State::Starting);
}

void LiveSession::Stop()
{
    m_watch.stop();
    ClosePipeline();
    m_memory->Clear();
    SetState(State::Idle);
}

void LiveSession::OpenPipeline(std::chrono::milliseconds patience)
{
    m_isOpening = true;
    const auto opened = qScopeGuard([this] { m_isOpening = false; });
    const LiveSource source = m_prepare();
    m_pipeline = new LivePipeline(m_framesBefore, m_memory);
    m_newestSeen = m_watchedAt = Clock::now();
    m_silence = {};
    connect(m_pipeline, &LivePipeline::FrameReady, this, [this] {
        const QPointer<LiveSession> self(this);
        if (m_state != State::Live && Frames()->IsLive())
            SetState(State::Live);
        if (self)
            Q_EMIT FrameReady();
    });
    connect(m_pipeline, &LivePipeline::Failed, this, &LiveSession::Lose);
    m_pipeline->Frames()->SetArea(m_area);
    m_pipeline->Frames()->SetTap(m_tap);
    {
        const std::lock_guard lock(m_mutex);
        m_frames = m_pipeline->Frames();
    }
    try {
        m_pipeline->Open(source, patience);
    } catch (const PlatformError&) {
        ClosePipeline();
        throw;
    }
}

void LiveSession::ClosePipeline()
{
    if (m_pipeline != nullptr) {
        m_framesBefore = m_pipeline->Frames()->Frames();
        m_pipeline->disconnect(this);
        m_pipeline->Close();
        m_pipeline->deleteLater();
        m_pipeline = nullptr;
    }
    const std::lock_guard lock(m_mutex);
    m_frames.reset();
}

void LiveSession::SetState(State state)
{
    if (m_state == state)
        return;
    m_state = state;
    if (state == State::Live)
        m_pause = ShortestPause;
    if (state == State::Lost && m_pipeline != nullptr)
        m_pipeline->Frames()->DropPictures();
    Q_EMIT StateChanged();
}

void LiveSession::Lose()
{
    if (m_state == State::Idle)
        return;
    ClosePipeline();
    m_nextTry = Clock::now() + m_pause;
    SetState(State::Lost);
}

void LiveSession::RetryNow()
{
    // Making the device ready may be what finds out that the devices have changed.
    if (m_state == State::Lost && m_pipeline == nullptr && !m_isOpening)
        Reopen();
}

std::chrono::milliseconds LiveSession::Silence()
{
    const Clock::time_point now = Clock::now();
    const Clock::time_point before = std::exchange(m_watchedAt, now);
    if (const Clock::time_point newest = m_pipeline->Frames()->NewestAt(); newest != m_newestSeen) {
        m_newestSeen = newest;
        m_silence = {};
        return m_silence;
    }
    // A machine that gives this program no time gives the device's thread none either: that is no silence of the
    // device.
    m_silence += std::min(std::chrono::duration_cast<std::chrono::milliseconds>(now - before),
                          std::chrono::milliseconds(2 * WatchInterval));
    return m_silence;
}

void LiveSession::Watch()
{
    const Clock::time_point now = Clock::now();
    if (m_pipeline == nullptr) {
        if (now >= m_nextTry)
            Reopen();
        return;
    }
    const auto silence = Silence();
    if (silence < (m_pipeline->Frames()->HasBegun() ? FrameExchange::SignalTimeout : FrameExchange::FirstFrameTimeout))
        return;
    if (silence >= StallTimeout)
        Lose();
    else
        SetState(State::Lost);
}

void LiveSession::Reopen()
{
    m_pause = std::min<std::chrono::milliseconds>(2 * m_pause, LongestPause);
    m_nextTry = Clock::now() + m_pause;
    try {
        OpenPipeline(0ms);
    } catch (const PlatformError&) {
        // Still away: the next try comes by itself.
    }
}

void LiveSession::SetArea(QSize area)
{
    m_area = area;
    if (m_pipeline != nullptr)
        m_pipeline->Frames()->SetArea(area);
}

void LiveSession::SetTap(const std::shared_ptr<FrameTap>& tap)
{
    m_tap = tap;
    if (m_pipeline != nullptr)
        m_pipeline->Frames()->SetTap(tap);
}

std::shared_ptr<const AwaitedFrame> LiveSession::Await() const
{
    return m_state == State::Starting || m_state == State::Live ? m_memory->Await() : nullptr;
}

std::shared_ptr<const StillFrame> LiveSession::Hold() const
{
    const std::shared_ptr<FrameExchange> frames = Frames();
    return frames ? frames->Hold() : nullptr;
}

std::shared_ptr<FrameExchange> LiveSession::Frames() const
{
    const std::lock_guard lock(m_mutex);
    return m_frames;
}

int LiveSession::FrameCount() const
{
    return m_pipeline != nullptr ? m_pipeline->Frames()->Frames() : m_framesBefore;
}

int LiveSession::FrameTimeMs() const
{
    if (m_pipeline == nullptr)
        return 0;
    const auto time = m_pipeline->Frames()->NewestAt() - m_startedAt;
    return int(std::chrono::duration_cast<std::chrono::milliseconds>(time).count());
}
