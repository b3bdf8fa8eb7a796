#include "platform/gstreamer/devices/VideoMode.h"

#include <linux/videodev2.h>

#include <array>

using namespace Qt::StringLiterals;

namespace {
struct PixelFormat
{
    quint32 fourcc;
    const char16_t* caps;
};

constexpr std::array PixelFormats = {
    PixelFormat{V4L2_PIX_FMT_YUYV, u"YUY2"},        PixelFormat{V4L2_PIX_FMT_UYVY, u"UYVY"},
    PixelFormat{V4L2_PIX_FMT_NV12, u"NV12"},        PixelFormat{V4L2_PIX_FMT_NV21, u"NV21"},
    PixelFormat{V4L2_PIX_FMT_YUV420, u"I420"},      PixelFormat{V4L2_PIX_FMT_YVU420, u"YV12"},
    PixelFormat{V4L2_PIX_FMT_RGB24, u"RGB"},        PixelFormat{V4L2_PIX_FMT_BGR24, u"BGR"},
    PixelFormat{V4L2_PIX_FMT_GREY, u"GRAY8"},       PixelFormat{V4L2_PIX_FMT_XBGR32, u"BGRx"},
    PixelFormat{V4L2_PIX_FMT_MJPEG, u"image/jpeg"}, PixelFormat{V4L2_PIX_FMT_JPEG, u"image/jpeg"},
};
} // namespace

QString FourccText(quint32 fourcc)
{
    QString text;
    for (int shift = 0; shift < 32; shift += 8)
        text += QChar(ushort((fourcc >> shift) & 0x7f));
    return text.trimmed();
}

QString CapsFormat(quint32 fourcc)
{
    for (const PixelFormat& format : PixelFormats)
        if (format.fourcc == fourcc)
            return QString::fromUtf16(format.caps);
    return {};
}

bool CanDeinterlace(quint32 fourcc)
{
    return fourcc != V4L2_PIX_FMT_GREY;
}

QString VideoMode::Name() const
{
    QString name = u"%1x%2"_s.arg(width).arg(height);
    if (rateNumerator > 0) {
        // Two places tell 59.94 from 60; whole rates stay bare.
        const double hundredths = qRound(FramesPerSecond() * 100) / 100.0;
        name += u" %1fps"_s.arg(hundredths, 0, 'g', 6);
    }
    if (fourcc != 0)
        name += u" "_s + FourccText(fourcc);
    return name;
}
