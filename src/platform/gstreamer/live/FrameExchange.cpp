#include "platform/gstreamer/live/FrameExchange.h"

#include "platform/gstreamer/stills/GstStillFrame.h"

void FrameExchange::Accept(GstSample* sample)
{
    QSize area;
    QImage canvas;
    int frame = 0;
    bool isCompressed = false;
    const Clock::time_point now = Clock::now();
    GstPointer<GstSample> previous;
    std::shared_ptr<FrameTap> tap;
    {
        const std::lock_guard lock(m_mutex);
        if (m_closed)
            return;
        previous = std::move(m_newest);
        m_newest.reset(gst_sample_ref(sample));
        m_newestAt = now;
        isCompressed = m_isCompressed;
        frame = ++m_frames;
        area = m_area;
        tap = m_tap;
        if (!m_spare.empty()) {
            canvas = std::move(m_spare.back());
            m_spare.pop_back();
        }
    }
    previous.reset(); // Gives its memory back to the device before the work below.
    if (tap)
        tap->Accept(sample);
    if (m_memory)
        m_memory->Accept(sample, now, isCompressed);
    if (area.isEmpty())
        return;
    const QImage image = m_scaler.Scale(sample, area, std::move(canvas));
    if (image.isNull())
        return;

    const std::lock_guard lock(m_mutex);
    if (m_closed || m_area.isEmpty())
        return;
    m_waiting.push_back({image, frame});
    if (m_waiting.size() > MostWaiting) {
        m_spare.push_back(std::move(m_waiting.front().image));
        m_waiting.pop_front();
    }
}

void FrameExchange::AcceptCompressed(GstBuffer* buffer)
{
    {
        const std::lock_guard lock(m_mutex);
        if (m_closed)
            return;
        m_isCompressed = true;
    }
    if (m_memory)
        m_memory->AcceptCompressed(buffer, Clock::now());
}

void FrameExchange::SetTap(std::shared_ptr<FrameTap> tap)
{
    const std::lock_guard lock(m_mutex);
    m_tap = std::move(tap);
}

void FrameExchange::Close()
{
    const std::lock_guard lock(m_mutex);
    m_closed = true;
    m_newest.reset();
    m_waiting.clear();
    m_spare.clear();
}

bool FrameExchange::IsYoungerLocked(std::chrono::milliseconds age) const
{
    return m_newest != nullptr && Clock::now() - m_newestAt < age;
}

bool FrameExchange::IsLive() const
{
    const std::lock_guard lock(m_mutex);
    return IsYoungerLocked(SignalTimeout);
}

bool FrameExchange::HasBegun() const
{
    const std::lock_guard lock(m_mutex);
    return m_newest != nullptr;
}

FrameExchange::Clock::time_point FrameExchange::NewestAt() const
{
    const std::lock_guard lock(m_mutex);
    return m_newestAt;
}

std::shared_ptr<const StillFrame> FrameExchange::Hold() const
{
    const std::lock_guard lock(m_mutex);
    if (!IsYoungerLocked(HeldAge))
        return nullptr;
    return std::make_shared<GstStillFrame>(m_newest.get());
}

int FrameExchange::Frames() const
{
    const std::lock_guard lock(m_mutex);
    return m_frames;
}

void FrameExchange::SetArea(QSize area)
{
    const std::lock_guard lock(m_mutex);
    m_area = area;
    if (area.isEmpty())
        m_waiting.clear(); // They would be of the past when the picture is seen again.
}

FrameExchange::Picture FrameExchange::TakePicture(QImage painted)
{
    const std::lock_guard lock(m_mutex);
    if (m_waiting.empty())
        return {};
    if (!painted.isNull() && m_spare.size() < MostWaiting)
        m_spare.push_back(std::move(painted));
    Picture next = std::move(m_waiting.front());
    m_waiting.pop_front();
    return next;
}

bool FrameExchange::HasPicture() const
{
    const std::lock_guard lock(m_mutex);
    return !m_waiting.empty();
}

void FrameExchange::DropPictures()
{
    const std::lock_guard lock(m_mutex);
    m_waiting.clear();
}
