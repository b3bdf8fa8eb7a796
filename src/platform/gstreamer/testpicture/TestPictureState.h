#pragma once

#include "platform/gstreamer/devices/PictureControl.h"

#include <QList>
#include <QObject>

#include <condition_variable>
#include <functional>
#include <mutex>

/// The one test device of the process: its properties, and whether it is there and delivers frames.
/// Thread-safe.
class TestPictureState : public QObject
{
    Q_OBJECT

public:
    struct Properties
    {
        int speed = 4;      ///< Steps of movement per frame, 0 to 20.
        int brightness = 0; ///< -100 to 100, added to the scene.
        int contrast = 100; ///< Percent, 0 to 200.
        int generation = 0; ///< Grows with each change of brightness or contrast.
    };

    bool IsPlugged() const;
    void SetPlugged(bool plugged);
    void SetFrozen(bool frozen);

    Properties Current() const;
    /// Properties of the movement, and of the scene.
    QList<PictureControl> StreamControls() const;
    QList<PictureControl> PictureControls() const;
    void SetControl(quint32 id, int value);

    /// Waits while the device is frozen. Returns when it isn't, when it is unplugged, or when `isCancelled` holds
    /// after `Wake`.
    void WaitWhileFrozen(const std::function<bool()>& isCancelled) const;
    void Wake();

Q_SIGNALS:
    /// The device was plugged in or out.
    void PluggedChanged();

private:
    mutable std::mutex m_mutex;
    mutable std::condition_variable m_changed;
    bool m_plugged = true;
    bool m_frozen = false;
    Properties m_properties;
};

TestPictureState& TestDevice();
