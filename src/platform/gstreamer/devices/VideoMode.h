#pragma once

#include <QHash>
#include <QString>

/// One way in which a device can deliver its picture.
struct VideoMode
{
    quint32 fourcc = 0; ///< The driver's pixel format; 0 for the test picture.
    int width = 0;      ///< Pixels.
    int height = 0;
    int rateNumerator = 0; ///< Frames per second as a fraction; 0/1 when the driver names no rate.
    int rateDenominator = 1;

    bool operator==(const VideoMode&) const = default;

    double FramesPerSecond() const { return double(rateNumerator) / rateDenominator; }
    /// The same picture at another rate.
    bool IsSamePicture(const VideoMode& other) const
    {
        return fourcc == other.fourcc && width == other.width && height == other.height;
    }
    /// For example "1920x1080 60fps MJPG"; the same for the same mode on every machine.
    QString Name() const;
};

/// The four letters of a driver's pixel format.
QString FourccText(quint32 fourcc);

/// The caps format of a driver's pixel format, "image/jpeg" for motion JPEG, or empty for one that can't be shown.
QString CapsFormat(quint32 fourcc);

/// The media library deinterlaces that pixel format.
bool CanDeinterlace(quint32 fourcc);

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
