#pragma once

#include "platform/gstreamer/devices/VideoMode.h"

#include <QHash>

/// What the operator chose for a device's stream beyond its format: the frame rate of a format in place of its own, and
/// the television standard. Kept while the program runs.
class StreamChoice
{
public:
    void Choose(const QString& device, const VideoMode& mode) { m_modes.insert(Key(device, mode), mode); }
    /// The mode with the chosen rate, or as it stands.
    VideoMode Applied(const QString& device, const VideoMode& mode) const
    {
        return m_modes.value(Key(device, mode), mode);
    }

    void ChooseStandard(const QString& device, quint64 standard) { m_standards.insert(device, standard); }
    /// The driver's number; 0 leaves the device as it is.
    quint64 Standard(const QString& device) const { return m_standards.value(device); }

private:
    static QString Key(const QString& device, VideoMode mode)
    {
        mode.rateNumerator = 0;
        return mode.Name() + QChar(u'\n') + device;
    }

    QHash<QString, VideoMode> m_modes;
    QHash<QString, quint64> m_standards;
};
