#pragma once

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

/// The caps format of a driver's pixel format, "image/jpeg" for motion JPEG, or empty for one that can't be shown.
QString CapsFormat(quint32 fourcc);
