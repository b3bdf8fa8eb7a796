#include "platform/imaging/picture_limits.h"
#include "platform/imaging/reader/decoders.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavutil/pixdesc.h>
#include <libswscale/swscale.h>
}

#include <algorithm>
#include <limits>
#include <memory>

namespace {

struct Release
{
    void operator()(AVCodecContext* context) const { avcodec_free_context(&context); }
    void operator()(AVPacket* packet) const { av_packet_free(&packet); }
    void operator()(AVFrame* frame) const { av_frame_free(&frame); }
    void operator()(SwsContext* scaler) const { sws_freeContext(scaler); }
};
template <class T>
using Owned = std::unique_ptr<T, Release>;

bool HasAlpha(const AVFrame& frame)
{
    const AVPixFmtDescriptor* format = av_pix_fmt_desc_get(static_cast<AVPixelFormat>(frame.format));
    return format != nullptr && (format->flags & (AV_PIX_FMT_FLAG_ALPHA | AV_PIX_FMT_FLAG_PAL)) != 0;
}

std::optional<Raster> RasterOf(const AVFrame& frame)
{
    const int width = frame.width;
    const int height = frame.height;
    if (width <= 0 || height <= 0 ||
        !IsSizeWithinLimit(static_cast<std::uint64_t>(width), static_cast<std::uint64_t>(height)))
        return {};
    const Owned<SwsContext> scaler(
        sws_getContext(width, height, static_cast<AVPixelFormat>(frame.format), width, height, AV_PIX_FMT_BGRA,
                       SWS_POINT | SWS_ACCURATE_RND | SWS_FULL_CHR_H_INT, nullptr, nullptr, nullptr));
    if (scaler == nullptr)
        return {};
    if (frame.color_range == AVCOL_RANGE_JPEG) {
        const int* coefficients = sws_getCoefficients(SWS_CS_DEFAULT);
        sws_setColorspaceDetails(scaler.get(), coefficients, 1, coefficients, 1, 0, 1 << 16, 1 << 16);
    }
    Raster raster;
    raster.width = static_cast<std::uint32_t>(width);
    raster.height = static_cast<std::uint32_t>(height);
    raster.pixels.resize(size_t{raster.width} * raster.height);
    std::uint8_t* const planes[4] = {reinterpret_cast<std::uint8_t*>(raster.pixels.data()), nullptr, nullptr, nullptr};
    const int strides[4] = {width * 4, 0, 0, 0};
    if (sws_scale(scaler.get(), frame.data, frame.linesize, 0, height, planes, strides) != height)
        return {};
    // Many files fill the alpha with zeros and mean nothing by it.
    const auto transparent = [](std::uint32_t pixel) { return (pixel >> 24) == 0; };
    raster.hasAlpha = HasAlpha(frame) && !std::ranges::all_of(raster.pixels, transparent);
    return raster;
}

static_assert(PaddingBytes >= AV_INPUT_BUFFER_PADDING_SIZE);

std::optional<Raster> Decode(AVCodecID id, Bytes content, int threads = 1)
{
    const AVCodec* codec = avcodec_find_decoder(id);
    if (codec == nullptr || content.size() > std::numeric_limits<int>::max() / 2)
        return {};
    const Owned<AVCodecContext> context(avcodec_alloc_context3(codec));
    const Owned<AVPacket> packet(av_packet_alloc());
    const Owned<AVFrame> frame(av_frame_alloc());
    context->max_pixels = picturelimits::LargestPicture;
    context->err_recognition = AV_EF_EXPLODE;
    context->thread_count = threads;
    context->thread_type = FF_THREAD_SLICE;
    if (avcodec_open2(context.get(), codec, nullptr) < 0)
        return {};
    // The content stays the caller's; decoders neither write into it nor keep it.
    const auto keep = [](void*, std::uint8_t*) {};
    auto* data = const_cast<std::uint8_t*>(content.data());
    packet->buf = av_buffer_create(data, content.size(), +keep, nullptr, AV_BUFFER_FLAG_READONLY);
    packet->data = data;
    packet->size = static_cast<int>(content.size());
    if (avcodec_send_packet(context.get(), packet.get()) < 0)
        return {};
    avcodec_send_packet(context.get(), nullptr);
    if (avcodec_receive_frame(context.get(), frame.get()) < 0)
        return {};
    return RasterOf(*frame);
}

/// A PCX with a fourth plane for the alpha, which some programs write and the library leaves out.
std::optional<Raster> DecodeFourPlanePcx(Bytes content)
{
    constexpr size_t HeaderBytes = 128;
    constexpr size_t Planes = 4;
    if (content.size() <= HeaderBytes || content[2] != 1 || content[3] != 8 || content[65] != Planes)
        return {};
    const auto word = [content](size_t at) { return content[at] | std::uint32_t{content[at + 1]} << 8; };
    Raster raster;
    raster.width = word(8) - word(4) + 1;
    raster.height = word(10) - word(6) + 1;
    const size_t lineBytes = word(66);
    if (!IsSizeWithinLimit(raster.width, raster.height) || lineBytes < raster.width)
        return {};
    raster.hasAlpha = true;
    raster.pixels.resize(size_t{raster.width} * raster.height);
    constexpr int Shifts[Planes] = {16, 8, 0, 24};
    size_t at = HeaderBytes;
    for (std::uint32_t y = 0; y < raster.height; ++y) {
        std::uint32_t* row = raster.pixels.data() + size_t{y} * raster.width;
        for (size_t filled = 0; filled < lineBytes * Planes; ++at) {
            if (at + 1 >= content.size())
                return {};
            // The two upper bits mark a run.
            const size_t run = content[at] >= 0xC0 ? content[at] & 0x3F : 1;
            const std::uint32_t value = content[at] >= 0xC0 ? content[++at] : content[at];
            for (const size_t end = std::min(filled + run, lineBytes * Planes); filled < end; ++filled) {
                if (const size_t x = filled % lineBytes; x < raster.width)
                    row[x] |= value << Shifts[filled / lineBytes];
            }
        }
    }
    return raster;
}

} // namespace

bool IsSizeWithinLimit(std::uint64_t width, std::uint64_t height)
{
    if (width == 0 || height == 0)
        return false;
    if (width > picturelimits::LargestPicture / height)
        throw TooLarge{width, height};
    return true;
}

std::optional<Raster> DecodeLosslessJpeg(Bytes content)
{
    return Decode(AV_CODEC_ID_MJPEG, content);
}

std::optional<Raster> DecodeJpeg2000(Bytes content)
{
    constexpr int Threads = 2;
    return Decode(AV_CODEC_ID_JPEG2000, content, Threads);
}

std::optional<Raster> DecodePcx(Bytes content)
{
    std::optional<Raster> raster = Decode(AV_CODEC_ID_PCX, content);
    return raster ? std::move(raster) : DecodeFourPlanePcx(content);
}

std::optional<Raster> DecodeTarga(Bytes content)
{
    return Decode(AV_CODEC_ID_TARGA, content);
}
