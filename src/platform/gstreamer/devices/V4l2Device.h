#pragma once

#include "platform/gstreamer/devices/PictureControl.h"
#include "platform/gstreamer/devices/V4l2Calls.h"
#include "platform/gstreamer/devices/VideoMode.h"

#include <QStringList>

#include <functional>

/// A television standard, by the driver's number and name.
struct VideoStandard
{
    quint64 id = 0;
    QString name;
};

/// A video node while it is open for questions. Streaming goes another way, so both can be open at once.
class V4l2Device
{
public:
    /// Throws PlatformError with the reason when the node can't be opened. `calls` must outlive the object.
    V4l2Device(V4l2Calls& calls, const QString& path);
    ~V4l2Device();
    V4l2Device(const V4l2Device&) = delete;
    V4l2Device& operator=(const V4l2Device&) = delete;

    /// False for a node that delivers something else than pictures, such as the metadata node of a camera. True also
    /// for one whose pictures can't be shown.
    bool CapturesVideo() const { return m_capturesVideo; }
    /// What the maker calls the device.
    QString Card() const { return m_card; }
    /// Where it is plugged in.
    QString Bus() const { return m_bus; }

    /// The modes that can be shown, the one that suits best first.
    QList<VideoMode> Modes() const;
    /// Names of the pixel formats that can't be shown.
    QStringList OtherFormats() const;
    QStringList Inputs() const;
    /// Throws PlatformError when the device refuses.
    void SelectInput(int input);

    /// Television standards of the present input; none for a device that has no use for one.
    QList<VideoStandard> Standards() const;
    /// Number of the standard that is set; 0 when there is none.
    quint64 Standard() const;
    /// Throws PlatformError when the device refuses.
    void SelectStandard(quint64 standard);

    QList<PictureControl> Controls() const;
    /// False when the driver refuses.
    bool SetControl(quint32 id, int value);

private:
    int Request(unsigned long request, void* argument) const;
    /// Calls for each pixel format that isn't emulated.
    void ForEachFormat(quint32 bufferType, const std::function<void(quint32 fourcc)>& call) const;
    void AppendSizes(quint32 fourcc, QList<VideoMode>& modes) const;
    void AppendRates(VideoMode mode, QList<VideoMode>& modes) const;

    V4l2Calls& m_calls;
    int m_descriptor;
    bool m_capturesVideo = false;
    bool m_isMultiPlanar = false; ///< Gives its pictures in several buffers each, which the station doesn't take.
    QString m_card;
    QString m_bus;
};
