#include "platform/gstreamer/movies/MovieFrameMaker.h"

#include "contracts/PlatformError.h"
#include "platform/gstreamer/live/DisplayScaler.h"
#include "platform/gstreamer/video_range.h"

#include <array>
#include <cstring>
#include <turbojpeg.h>

using namespace Qt::StringLiterals;

namespace {
constexpr int MovieQuality = 85;

GstStructure* Options(QRect place)
{
    return gst_structure_new("options", GST_VIDEO_CONVERTER_OPT_RESAMPLER_METHOD, GST_TYPE_VIDEO_RESAMPLER_METHOD,
                             GST_VIDEO_RESAMPLER_METHOD_LINEAR, GST_VIDEO_CONVERTER_OPT_DEST_X, G_TYPE_INT, place.x(),
                             GST_VIDEO_CONVERTER_OPT_DEST_Y, G_TYPE_INT, place.y(), GST_VIDEO_CONVERTER_OPT_DEST_WIDTH,
                             G_TYPE_INT, place.width(), GST_VIDEO_CONVERTER_OPT_DEST_HEIGHT, G_TYPE_INT, place.height(),
                             GST_VIDEO_CONVERTER_OPT_FILL_BORDER, G_TYPE_BOOLEAN, FALSE, nullptr);
}

} // namespace

MovieFrameMaker::MovieFrameMaker(QSize size)
    : m_size(size), m_movieInfo(VideoInfoOf(GST_VIDEO_FORMAT_I420, size)), m_encoder(tjInitCompress())
{
}

MovieFrameMaker::~MovieFrameMaker()
{
    tjDestroy(m_encoder);
}

bool MovieFrameMaker::Prepare(GstSample* sample)
{
    GstCaps* caps = gst_sample_get_caps(sample);
    if (caps != nullptr && caps == m_caps.get())
        return m_place != nullptr;
    m_shrink.reset();
    m_place.reset();
    m_caps.reset(caps != nullptr ? gst_caps_ref(caps) : nullptr);
    if (!VideoInfoOf(sample, m_frameInfo))
        return false;
    // Even sizes and places, so that the colours of both have the same grid.
    QSize small = ShapeOf(m_frameInfo).scaled(m_size, Qt::KeepAspectRatio);
    small = QSize(qMax(2, small.width() & ~1), qMax(2, small.height() & ~1));
    QRect place(QPoint((m_size.width() - small.width()) / 2 & ~1, (m_size.height() - small.height()) / 2 & ~1), small);
    m_smallInfo = VideoInfoAt(m_frameInfo, small);
    // What a JPEG file holds is BT.601 of the full range. The converter leaves the range of YUV frames as it is.
    m_isLimited = m_frameInfo.colorimetry.range != GST_VIDEO_COLOR_RANGE_0_255 || GST_VIDEO_INFO_IS_RGB(&m_frameInfo);
    gst_video_colorimetry_from_string(&m_movieInfo.colorimetry, m_isLimited ? "2:4:0:0" : "1:4:0:0");
    m_shrink.reset(gst_video_converter_new(&m_frameInfo, &m_smallInfo, Options(QRect(QPoint(), small))));
    m_place.reset(gst_video_converter_new(&m_smallInfo, &m_movieInfo, Options(place)));
    m_small.reset(gst_buffer_new_allocate(nullptr, m_smallInfo.size, nullptr));
    if (!m_shrink || !m_small)
        m_place.reset();
    return m_place != nullptr;
}

QByteArray MovieFrameMaker::Shrink(GstSample* sample)
{
    if (!Prepare(sample))
        return {};
    MappedFrame frame(m_frameInfo, gst_sample_get_buffer(sample), GST_MAP_READ);
    MappedFrame small(m_smallInfo, m_small.get(), GstMapFlags(GST_MAP_READWRITE));
    const auto lumaSize = qsizetype(GST_VIDEO_INFO_PLANE_OFFSET(&m_movieInfo, 1));
    QByteArray planes(qsizetype(m_movieInfo.size), char(128));
    std::memset(planes.data(), m_isLimited ? 16 : 0, size_t(lumaSize));
    const GstPointer<GstBuffer> pixels(gst_buffer_new_wrapped_full(GstMemoryFlags(0), planes.data(), m_movieInfo.size,
                                                                   0, m_movieInfo.size, nullptr, nullptr));
    MappedFrame target(m_movieInfo, pixels.get(), GST_MAP_WRITE);
    if (!frame.IsMapped() || !small.IsMapped() || !target.IsMapped())
        return {};
    gst_video_converter_frame(m_shrink.get(), frame.Frame(), small.Frame());
    gst_video_converter_frame(m_place.get(), small.Frame(), target.Frame());
    if (m_isLimited) {
        auto* bytes = reinterpret_cast<std::uint8_t*>(planes.data());
        videorange::ExpandLuma(bytes, bytes, lumaSize);
        videorange::ExpandChroma(bytes + lumaSize, bytes + lumaSize, planes.size() - lumaSize);
    }
    return planes;
}

QByteArray MovieFrameMaker::Encode(const QByteArray& planes)
{
    const auto* bytes = reinterpret_cast<const unsigned char*>(planes.constData());
    const unsigned char* starts[3];
    int strides[3];
    for (int plane = 0; plane < 3; ++plane) {
        starts[plane] = bytes + GST_VIDEO_INFO_PLANE_OFFSET(&m_movieInfo, plane);
        strides[plane] = GST_VIDEO_INFO_PLANE_STRIDE(&m_movieInfo, plane);
    }
    QByteArray jpeg(qsizetype(tjBufSize(m_size.width(), m_size.height(), TJSAMP_420)), Qt::Uninitialized);
    auto* out = reinterpret_cast<unsigned char*>(jpeg.data());
    auto size = static_cast<unsigned long>(jpeg.size());
    if (tjCompressFromYUVPlanes(m_encoder, starts, m_size.width(), strides, m_size.height(), TJSAMP_420, &out, &size,
                                MovieQuality, TJFLAG_NOREALLOC) != 0)
        throw PlatformError(u"동영상을 압축할수 없습니다.!!"_s);
    jpeg.resize(qsizetype(size));
    return jpeg;
}
