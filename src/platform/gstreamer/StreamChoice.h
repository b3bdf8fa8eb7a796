#pragma once

#include "platform/gstreamer/VideoMode.h"

#include <QHash>

/// Frame rates that the operator chose for a device's formats, in place of the format's own. Kept while the program
/// runs.
class StreamChoice
{
public:
    void Choose(const QString& device, const VideoMode& mode) { m_modes.insert(Key(device, mode), mode); }
    /// The mode with the chosen rate, or as it stands.
    VideoMode Applied(const QString& device, const VideoMode& mode) const
    {
        return m_modes.value(Key(device, mode), mode);
    }

private:
    static QString Key(const QString& device, VideoMode mode)
    {
        mode.rateNumerator = 0;
        return mode.Name() + QChar(u'\n') + device;
    }

    QHash<QString, VideoMode> m_modes;
};
