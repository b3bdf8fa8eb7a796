#include "platform/gstreamer/stills/YuvPlanes.h"

#include "contracts/PlatformError.h"
#include "platform/gstreamer/video_range.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {
[[noreturn]] void ThrowUnreadable()
{
    throw PlatformError(u"캡쳐 영상을 읽을수 없습니다.!!"_s);
}

/// The planar format that loses nothing of the given one but what JPEG can't hold.
GstVideoFormat PlanarFormat(const GstVideoInfo& info)
{
    switch (GST_VIDEO_INFO_FORMAT(&info)) {
    case GST_VIDEO_FORMAT_I420:
    case GST_VIDEO_FORMAT_YV12:
    case GST_VIDEO_FORMAT_Y42B:
    case GST_VIDEO_FORMAT_Y444:
    case GST_VIDEO_FORMAT_GRAY8:
        return GST_VIDEO_INFO_FORMAT(&info);
    case GST_VIDEO_FORMAT_YUY2:
    case GST_VIDEO_FORMAT_UYVY:
    case GST_VIDEO_FORMAT_YVYU:
    case GST_VIDEO_FORMAT_VYUY:
        return GST_VIDEO_FORMAT_Y42B;
    default:
        return GST_VIDEO_FORMAT_I420;
    }
}

bool HasJpegMatrix(const GstVideoInfo& info)
{
    return !GST_VIDEO_INFO_IS_RGB(&info) &&
           (info.colorimetry.matrix == GST_VIDEO_COLOR_MATRIX_BT601 ||
            info.colorimetry.matrix == GST_VIDEO_COLOR_MATRIX_UNKNOWN || GST_VIDEO_INFO_IS_GRAY(&info));
}

} // namespace

YuvPlanes::YuvPlanes(GstVideoFrame* frame) : m_width(frame->info.width), m_height(frame->info.height)
{
    const GstVideoInfo& info = frame->info;
    const GstVideoFormat planar = PlanarFormat(info);
    const bool keepColours = HasJpegMatrix(info);
    if (keepColours && planar == GST_VIDEO_INFO_FORMAT(&info))
        Use(frame);
    else
        Convert(frame, planar, keepColours);
    if (keepColours && info.colorimetry.range == GST_VIDEO_COLOR_RANGE_16_235)
        ExpandRange();
}

YuvPlanes::~YuvPlanes() = default;

void YuvPlanes::Use(GstVideoFrame* frame)
{
    const GstVideoFormatInfo* format = frame->info.finfo;
    // By component, not by plane: YV12 has its two chroma planes the other way round.
    for (guint component = 0; component < GST_VIDEO_FORMAT_INFO_N_COMPONENTS(format); ++component) {
        m_planes[component] = static_cast<const std::uint8_t*>(GST_VIDEO_FRAME_COMP_DATA(frame, component));
        m_strides[component] = GST_VIDEO_FRAME_COMP_STRIDE(frame, component);
    }
    if (GST_VIDEO_FORMAT_INFO_N_COMPONENTS(format) < 3)
        return;
    m_across = 1 << GST_VIDEO_FORMAT_INFO_W_SUB(format, 1);
    m_down = 1 << GST_VIDEO_FORMAT_INFO_H_SUB(format, 1);
}

void YuvPlanes::Convert(GstVideoFrame* frame, GstVideoFormat format, bool keepColours)
{
    GstVideoInfo source = frame->info;
    GstVideoInfo target;
    gst_video_info_set_format(&target, format, guint(m_width), guint(m_height));
    target.fps_n = source.fps_n;
    target.fps_d = source.fps_d;
    target.chroma_site = source.chroma_site;
    // The converter rearranges planes quickly but leaves their range alone then, so the range is a step of its own.
    if (keepColours)
        target.colorimetry = source.colorimetry;
    else
        gst_video_colorimetry_from_string(&target.colorimetry, "1:4:0:0");

    const GstPointer<GstVideoConverter> converter(gst_video_converter_new(&source, &target, nullptr));
    m_buffer.reset(gst_buffer_new_allocate(nullptr, target.size, nullptr));
    if (!converter || !m_buffer)
        ThrowUnreadable();
    m_mapped = std::make_unique<MappedFrame>(target, m_buffer.get(), GstMapFlags(GST_MAP_READWRITE));
    if (!m_mapped->IsMapped())
        ThrowUnreadable();
    gst_video_converter_frame(converter.get(), frame, m_mapped->Frame());
    Use(m_mapped->Frame());
}

void YuvPlanes::ExpandRange()
{
    const int chromaWidth = m_across == 0 ? 0 : (m_width + m_across - 1) / m_across;
    const int chromaHeight = m_down == 0 ? 0 : (m_height + m_down - 1) / m_down;
    const std::size_t lumaSize = std::size_t(m_width) * std::size_t(m_height);
    const std::size_t chromaSize = std::size_t(chromaWidth) * std::size_t(chromaHeight);
    m_expanded = std::make_unique_for_overwrite<std::uint8_t[]>(lumaSize + 2 * chromaSize);

    std::uint8_t* to = m_expanded.get();
    for (int plane = 0; plane < (chromaSize == 0 ? 1 : 3); ++plane) {
        const int width = plane == 0 ? m_width : chromaWidth;
        const int height = plane == 0 ? m_height : chromaHeight;
        std::uint8_t* const first = to;
        for (int y = 0; y < height; ++y, to += width) {
            const std::uint8_t* from = m_planes[plane] + std::ptrdiff_t(y) * m_strides[plane];
            if (plane == 0)
                videorange::ExpandLuma(from, to, width);
            else
                videorange::ExpandChroma(from, to, width);
        }
        m_planes[plane] = first;
        m_strides[plane] = width;
    }
}
