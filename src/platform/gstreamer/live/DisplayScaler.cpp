#include "platform/gstreamer/live/DisplayScaler.h"

#include <cstddef>
#include <cstring>

namespace {

/// Planes of bytes, each of whose sizes is even, at least twice as large as they are wanted.
bool CanBeHalved(const GstVideoInfo& info, QSize wanted)
{
    constexpr int Multiple = 4; // Half of it can still be halved for the colours.
    const GstVideoFormat format = GST_VIDEO_INFO_FORMAT(&info);
    const bool isPlanar = format == GST_VIDEO_FORMAT_I420 || format == GST_VIDEO_FORMAT_YV12 ||
                          format == GST_VIDEO_FORMAT_Y42B || format == GST_VIDEO_FORMAT_Y444;
    return isPlanar && info.width % Multiple == 0 && info.height % Multiple == 0 && info.width >= 2 * wanted.width() &&
           info.height >= 2 * wanted.height();
}

/// The average of each four pixels. Two of them are one word, so that the compiler makes vectors of it.
void HalveRow(const guint8* __restrict upper, const guint8* __restrict lower, guint8* __restrict half, int width)
{
    constexpr guint16 Low = 0xFF;
    for (int x = 0; x < width; ++x) {
        guint16 above = 0;
        guint16 below = 0;
        std::memcpy(&above, upper + 2 * x, sizeof above);
        std::memcpy(&below, lower + 2 * x, sizeof below);
        const auto sum = static_cast<guint16>((above & Low) + (above >> 8) + (below & Low) + (below >> 8) + 2);
        half[x] = static_cast<guint8>(sum >> 2);
    }
}

void Halve(GstVideoFrame& frame, GstVideoFrame& half)
{
    for (guint plane = 0; plane < GST_VIDEO_FRAME_N_PLANES(&frame); ++plane) {
        const auto* from = static_cast<const guint8*>(GST_VIDEO_FRAME_PLANE_DATA(&frame, plane));
        auto* to = static_cast<guint8*>(GST_VIDEO_FRAME_PLANE_DATA(&half, plane));
        const std::ptrdiff_t stride = GST_VIDEO_FRAME_PLANE_STRIDE(&frame, plane);
        for (int y = 0; y < GST_VIDEO_FRAME_COMP_HEIGHT(&half, plane); ++y) {
            const guint8* upper = from + 2 * y * stride;
            HalveRow(upper, upper + stride, to + std::ptrdiff_t{y} * GST_VIDEO_FRAME_PLANE_STRIDE(&half, plane),
                     GST_VIDEO_FRAME_COMP_WIDTH(&half, plane));
        }
    }
}

} // namespace

QSize ShapeOf(const GstVideoInfo& info)
{
    const QSize pixels(info.width, info.height);
    if (info.par_n <= 0 || info.par_d <= 0)
        return pixels;
    return {int(qint64(pixels.width()) * info.par_n / info.par_d), pixels.height()};
}

QImage DisplayScaler::Scale(GstSample* sample, QSize area, QImage canvas)
{
    if (!Prepare(sample, area))
        return {};
    MappedFrame frame(m_frameInfo, gst_sample_get_buffer(sample), GST_MAP_READ);
    if (!frame.IsMapped())
        return {};

    QImage image = std::move(canvas);
    if (image.size() != m_size || !image.isDetached())
        image = QImage(m_size, QImage::Format_RGB32);
    if (image.isNull())
        return {};
    const gsize bytes = gsize(image.sizeInBytes());
    const GstPointer<GstBuffer> pixels(
        gst_buffer_new_wrapped_full(GstMemoryFlags(0), image.bits(), bytes, 0, bytes, nullptr, nullptr));
    MappedFrame target(m_imageInfo, pixels.get(), GST_MAP_WRITE);
    if (!target.IsMapped())
        return {};

    if (!m_shrink) {
        gst_video_converter_frame(m_colour.get(), frame.Frame(), target.Frame());
        return image;
    }
    MappedFrame small(m_smallInfo, m_small.get(), GstMapFlags(GST_MAP_READWRITE));
    if (!small.IsMapped())
        return {};
    if (m_half) {
        MappedFrame half(m_halfInfo, m_half.get(), GstMapFlags(GST_MAP_READWRITE));
        if (!half.IsMapped())
            return {};
        Halve(*frame.Frame(), *half.Frame());
        gst_video_converter_frame(m_shrink.get(), half.Frame(), small.Frame());
    } else {
        gst_video_converter_frame(m_shrink.get(), frame.Frame(), small.Frame());
    }
    gst_video_converter_frame(m_colour.get(), small.Frame(), target.Frame());
    return image;
}

bool DisplayScaler::Prepare(GstSample* sample, QSize area)
{
    GstCaps* caps = gst_sample_get_caps(sample);
    if (caps != nullptr && caps == m_caps.get() && area == m_area)
        return m_colour != nullptr;

    m_colour.reset();
    m_shrink.reset();
    m_caps.reset(caps != nullptr ? gst_caps_ref(caps) : nullptr);
    m_area = area;
    if (!VideoInfoOf(sample, m_frameInfo))
        return false;
    m_size = ShapeOf(m_frameInfo).scaled(area, Qt::KeepAspectRatio).expandedTo({1, 1});

    const auto options = [] {
        return gst_structure_new("options", GST_VIDEO_CONVERTER_OPT_RESAMPLER_METHOD, GST_TYPE_VIDEO_RESAMPLER_METHOD,
                                 GST_VIDEO_RESAMPLER_METHOD_LINEAR, GST_VIDEO_CONVERTER_OPT_DITHER_METHOD,
                                 GST_TYPE_VIDEO_DITHER_METHOD, GST_VIDEO_DITHER_NONE, nullptr);
    };
    // Shrinking each plane as it is and then converting the few pixels that are left costs a quarter of doing both
    // at once, which unpacks every pixel of the full frame.
    m_smallInfo = VideoInfoAt(m_frameInfo, m_size);
    m_half.reset();
    if (m_size != QSize(m_frameInfo.width, m_frameInfo.height)) {
        // The resampler looks at seven pixels in each direction where the frame is three times too large, and takes
        // half of all that a live picture costs.
        const bool isHalved = CanBeHalved(m_frameInfo, m_size);
        if (isHalved) {
            m_halfInfo = VideoInfoAt(m_frameInfo, QSize(m_frameInfo.width, m_frameInfo.height) / 2);
            m_half.reset(gst_buffer_new_allocate(nullptr, m_halfInfo.size, nullptr));
            if (!m_half)
                return false;
        }
        m_shrink.reset(gst_video_converter_new(isHalved ? &m_halfInfo : &m_frameInfo, &m_smallInfo, options()));
        m_small.reset(gst_buffer_new_allocate(nullptr, m_smallInfo.size, nullptr));
        if (!m_shrink || !m_small)
            return false;
    }
    m_imageInfo = VideoInfoOf(GST_VIDEO_FORMAT_BGRx, m_size);
    m_colour.reset(gst_video_converter_new(&m_smallInfo, &m_imageInfo, options()));
    return m_colour != nullptr;
}
