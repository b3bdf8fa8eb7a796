#include "platform/gstreamer/live/FrameMemory.h"

#include "platform/gstreamer/stills/GstStillFrame.h"
#include "platform/gstreamer/stills/JpegStillFrame.h"

#include <algorithm>
#include <iterator>
#include <optional>

using namespace std::chrono_literals;

namespace {
using Clock = FrameMemory::Clock;
using Entry = FrameMemory::Entry;

/// Frames that a camera compressed are kept at most so often; full ones, which are copied, at most so often.
constexpr auto CompressedInterval = 50ms;
constexpr auto FullInterval = 100ms;
/// All that may be kept: of larger frames than those of 1080p there are fewer.
constexpr qint64 MostBytes = 96'000'000;
constexpr auto Behind = std::chrono::milliseconds(FrameMoments::BehindMs);
/// Of the dozen, so many lie behind the press.
constexpr int BehindCount = 2;

/// For each time the nearest frame, each frame once; both in their order.
std::vector<Entry> Nearest(const std::vector<Entry>& entries, const std::vector<Clock::time_point>& times)
{
    std::vector<Entry> chosen;
    std::size_t next = 0;
    for (std::size_t i = 0; i < times.size(); ++i) {
        // Enough are left for the times behind it, where that can be.
        const std::size_t behind = times.size() - i - 1;
        const std::size_t last = entries.size() > next + behind ? entries.size() - behind : next + 1;
        std::optional<std::size_t> best;
        for (std::size_t at = next; at < std::min(last, entries.size()); ++at) {
            if (!best || std::chrono::abs(entries[at].at - times[i]) < std::chrono::abs(entries[*best].at - times[i]))
                best = at;
        }
        if (!best)
            break;
        chosen.push_back(entries[*best]);
        next = *best + 1;
    }
    return chosen;
}

/// So many times, the last one `end`.
std::vector<Clock::time_point> Evenly(Clock::time_point begin, Clock::time_point end, int count)
{
    std::vector<Clock::time_point> times;
    for (int i = 1; i <= count; ++i)
        times.push_back(begin + (end - begin) * i / count);
    return times;
}
} // namespace

class FrameMemory::HeldMoments final : public FrameMoments
{
public:
    HeldMoments(std::vector<Entry> before, Clock::time_point press, GstClockTime pressTime)
        : m_press(press), m_pressTime(pressTime), m_before(std::move(before))
    {
    }

    std::vector<Moment> Frames() const override
    {
        const std::lock_guard lock(m_mutex);
        std::vector<Moment> moments;
        const auto add = [&](const std::vector<Entry>& entries) {
            for (const Entry& entry : entries)
                moments.push_back(
                    {entry.frame, int(std::chrono::round<std::chrono::milliseconds>(entry.at - m_press).count())});
        };
        add(m_before);
        add(Nearest(m_behind, Evenly(m_press, m_press + Behind, BehindCount)));
        return moments;
    }

    bool IsComplete() const override
    {
        const std::lock_guard lock(m_mutex);
        return m_isClosed || Clock::now() > m_press + Behind;
    }

    qint64 Bytes() const override
    {
        const std::lock_guard lock(m_mutex);
        qint64 bytes = 0;
        for (const std::vector<Entry>* entries : {&m_before, &m_behind})
            for (const Entry& entry : *entries)
                bytes += entry.bytes;
        return bytes;
    }

    /// False when no more are wanted.
    bool Add(const Entry& entry)
    {
        const std::lock_guard lock(m_mutex);
        if (m_isClosed || entry.at > m_press + Behind)
            return false;
        const bool isPress = GST_CLOCK_TIME_IS_VALID(m_pressTime) && entry.time == m_pressTime;
        if (entry.at > m_press && !isPress)
            m_behind.push_back(entry);
        return true;
    }

    void Close()
    {
        const std::lock_guard lock(m_mutex);
        m_isClosed = true;
    }

private:
    const Clock::time_point m_press;
    const GstClockTime m_pressTime;
    mutable std::mutex m_mutex;
    const std::vector<Entry> m_before;
    std::vector<Entry> m_behind;
    bool m_isClosed = false;
};

class FrameMemory::Awaited final : public AwaitedFrame
{
public:
    std::shared_ptr<const StillFrame> Frame() const override
    {
        const std::lock_guard lock(m_mutex);
        return m_frame;
    }

    bool IsOver() const override
    {
        const std::lock_guard lock(m_mutex);
        return m_isClosed || Clock::now() > m_until;
    }

    void Take(GstSample* sample, Clock::time_point at)
    {
        const std::lock_guard lock(m_mutex);
        if (!m_isClosed && at <= m_until)
            m_frame = std::make_shared<GstStillFrame>(sample);
        m_isClosed = true;
    }

    void Close()
    {
        const std::lock_guard lock(m_mutex);
        m_isClosed = true;
    }

private:
    const Clock::time_point m_until = Clock::now() + std::chrono::milliseconds(PatienceMs);
    mutable std::mutex m_mutex;
    std::shared_ptr<const StillFrame> m_frame;
    bool m_isClosed = false;
};

void FrameMemory::SetSeconds(int seconds)
{
    std::deque<Entry> gone;
    const std::lock_guard lock(m_mutex);
    m_seconds = seconds;
    if (seconds == 0)
        gone.swap(m_entries);
}

bool FrameMemory::IsDue(Clock::time_point at, qint64 bytes, std::chrono::milliseconds interval)
{
    const std::lock_guard lock(m_mutex);
    if (m_seconds == 0 || at < m_next)
        return false;
    const qint64 windowMs = m_seconds * 1000LL;
    const auto step =
        std::max<std::chrono::milliseconds>(interval, std::chrono::milliseconds(windowMs * bytes / MostBytes));
    // On the average, where the frames come at other times.
    m_next = std::max(m_next + step, at + step / 2);
    return true;
}

void FrameMemory::Accept(GstSample* sample, Clock::time_point at, bool isCompressed)
{
    std::vector<std::weak_ptr<Awaited>> awaited;
    {
        const std::lock_guard lock(m_mutex);
        awaited.swap(m_awaited);
    }
    for (const std::weak_ptr<Awaited>& each : awaited) {
        if (const std::shared_ptr<Awaited> waits = each.lock())
            waits->Take(sample, at);
    }
    GstBuffer* buffer = gst_sample_get_buffer(sample);
    const auto bytes = static_cast<qint64>(gst_buffer_get_size(buffer));
    if (isCompressed || !IsDue(at, bytes, FullInterval))
        return;
    const GstPointer<GstBuffer> copy(gst_buffer_copy_deep(buffer));
    if (!copy)
        return;
    const GstPointer<GstSample> own(gst_sample_new(copy.get(), gst_sample_get_caps(sample), nullptr, nullptr));
    Keep({std::make_shared<GstStillFrame>(own.get()), at, GST_BUFFER_PTS(buffer), bytes});
}

void FrameMemory::AcceptCompressed(GstBuffer* buffer, Clock::time_point at)
{
    const auto bytes = static_cast<qint64>(gst_buffer_get_size(buffer));
    if (!IsDue(at, bytes, CompressedInterval))
        return;
    QByteArray content(bytes, Qt::Uninitialized);
    content.truncate(
        static_cast<qsizetype>(gst_buffer_extract(buffer, 0, content.data(), static_cast<gsize>(content.size()))));
    Keep({std::make_shared<JpegStillFrame>(content), at, GST_BUFFER_PTS(buffer), bytes});
}

void FrameMemory::Keep(Entry entry)
{
    std::vector<Entry> gone; // Freed behind the lock.
    const std::lock_guard lock(m_mutex);
    if (m_seconds == 0)
        return;
    std::erase_if(m_open, [&](const std::weak_ptr<HeldMoments>& each) {
        const std::shared_ptr<HeldMoments> held = each.lock();
        return !held || !held->Add(entry);
    });
    while (!m_entries.empty() && entry.at - m_entries.front().at > std::chrono::seconds(m_seconds)) {
        gone.push_back(std::move(m_entries.front()));
        m_entries.pop_front();
    }
    m_entries.push_back(std::move(entry));
}

std::shared_ptr<const FrameMoments> FrameMemory::Hold(GstClockTime press)
{
    const Clock::time_point now = Clock::now();
    const std::lock_guard lock(m_mutex);
    if (m_seconds == 0)
        return nullptr;
    std::vector<Entry> before;
    std::ranges::copy_if(m_entries, std::back_inserter(before), [&](const Entry& entry) {
        return now - entry.at <= std::chrono::seconds(m_seconds) &&
               !(GST_CLOCK_TIME_IS_VALID(press) && entry.time == press);
    });
    if (!before.empty()) {
        constexpr int Count = FrameMoments::Most - BehindCount;
        const Clock::time_point first = before.front().at;
        // The first one is the oldest there is, the last one as long before the press as they are apart.
        const auto step = (now - first) / Count;
        before = Nearest(before, Evenly(first - step, now - step, Count));
    }
    const auto held = std::make_shared<HeldMoments>(std::move(before), now, press);
    m_open.push_back(held);
    return held;
}

std::shared_ptr<const AwaitedFrame> FrameMemory::Await()
{
    const auto awaited = std::make_shared<Awaited>();
    const std::lock_guard lock(m_mutex);
    m_awaited.push_back(awaited);
    return awaited;
}

void FrameMemory::Clear()
{
    std::deque<Entry> gone;
    std::vector<std::weak_ptr<HeldMoments>> open;
    std::vector<std::weak_ptr<Awaited>> awaited;
    {
        const std::lock_guard lock(m_mutex);
        gone.swap(m_entries);
        open.swap(m_open);
        awaited.swap(m_awaited);
        m_next = {};
    }
    for (const std::weak_ptr<HeldMoments>& each : open) {
        if (const std::shared_ptr<HeldMoments> held = each.lock())
            held->Close();
    }
    for (const std::weak_ptr<Awaited>& each : awaited) {
        if (const std::shared_ptr<Awaited> waits = each.lock())
            waits->Close();
    }
}
