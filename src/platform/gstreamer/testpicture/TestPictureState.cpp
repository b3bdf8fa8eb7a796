#include "platform/gstreamer/testpicture/TestPictureState.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {
enum : quint32 {
    SpeedControl = 1,
    BrightnessControl,
    ContrastControl,
};
}

TestPictureState& TestDevice()
{
    static TestPictureState state;
    return state;
}

bool TestPictureState::IsPlugged() const
{
    const std::lock_guard lock(m_mutex);
    return m_plugged;
}

void TestPictureState::SetPlugged(bool plugged)
{
    {
        const std::lock_guard lock(m_mutex);
        if (m_plugged == plugged)
            return;
        m_plugged = plugged;
    }
    m_changed.notify_all();
    Q_EMIT PluggedChanged();
}

void TestPictureState::SetFrozen(bool frozen)
{
    {
        const std::lock_guard lock(m_mutex);
        m_frozen = frozen;
    }
    m_changed.notify_all();
}

TestPictureState::Properties TestPictureState::Current() const
{
    const std::lock_guard lock(m_mutex);
    return m_properties;
}

QList<PictureControl> TestPictureState::StreamControls() const
{
    return {{SpeedControl, u"움직임 속도"_s, 0, 20, 1, Current().speed, Properties().speed}};
}

QList<PictureControl> TestPictureState::PictureControls() const
{
    const Properties present = Current();
    return {{BrightnessControl, u"밝기"_s, -100, 100, 1, present.brightness, Properties().brightness},
            {ContrastControl, u"대비"_s, 0, 200, 1, present.contrast, Properties().contrast}};
}

void TestPictureState::SetControl(quint32 id, int value)
{
    const std::lock_guard lock(m_mutex);
    switch (id) {
    case SpeedControl:
        m_properties.speed = std::clamp(value, 0, 20);
        return;
    case BrightnessControl:
        m_properties.brightness = std::clamp(value, -100, 100);
        break;
    case ContrastControl:
        m_properties.contrast = std::clamp(value, 0, 200);
        break;
    default:
        return;
    }
    ++m_properties.generation;
}

void TestPictureState::WaitWhileFrozen(const std::function<bool()>& isCancelled) const
{
    std::unique_lock lock(m_mutex);
    m_changed.wait(lock, [&] { return !m_frozen || !m_plugged || isCancelled(); });
}

void TestPictureState::Wake()
{
    // The lock orders the caller's flag before the waiter's next look at it.
    {
        const std::lock_guard lock(m_mutex);
    }
    m_changed.notify_all();
}
