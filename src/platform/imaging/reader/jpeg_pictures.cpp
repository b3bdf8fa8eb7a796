#include "platform/imaging/reader/decoders.h"

#include <charls/charls.h>

#include <memory>

namespace {

/// Samples of one component, as they lie in the decoded buffer.
struct Samples
{
    const std::uint8_t* at = nullptr;
    size_t step = 0; ///< Bytes from one pixel to the next.
    bool wide = false;
    int shift = 0; ///< Bits beyond eight; negative when there are fewer.

    std::uint32_t Value(size_t pixel) const
    {
        const std::uint8_t* sample = at + pixel * step;
        const std::uint32_t value = wide ? sample[0] | std::uint32_t{sample[1]} << 8 : sample[0];
        return (shift >= 0 ? value >> shift : value << -shift) & 0xFF;
    }
};

using Decoder = std::unique_ptr<charls_jpegls_decoder, decltype(&charls_jpegls_decoder_destroy)>;

} // namespace

std::optional<Raster> DecodeJpegLs(Bytes content)
{
    const Decoder decoder(charls_jpegls_decoder_create(), &charls_jpegls_decoder_destroy);
    charls_frame_info frame = {};
    charls_interleave_mode interleaving = {};
    size_t bytes = 0;
    const auto ok = [](charls_jpegls_errc result) { return result == charls_jpegls_errc::success; };
    if (decoder == nullptr ||
        !ok(charls_jpegls_decoder_set_source_buffer(decoder.get(), content.data(), content.size())) ||
        !ok(charls_jpegls_decoder_read_header(decoder.get())) ||
        !ok(charls_jpegls_decoder_get_frame_info(decoder.get(), &frame)) ||
        !IsSizeWithinLimit(frame.width, frame.height) || (frame.component_count != 1 && frame.component_count != 3) ||
        !ok(charls_jpegls_decoder_get_interleave_mode(decoder.get(), &interleaving)) ||
        !ok(charls_jpegls_decoder_get_destination_size(decoder.get(), 0, &bytes)))
        return {};
    std::vector<std::uint8_t> decoded(bytes);
    if (!ok(charls_jpegls_decoder_decode_to_buffer(decoder.get(), decoded.data(), decoded.size(), 0)))
        return {};

    Raster raster;
    raster.width = frame.width;
    raster.height = frame.height;
    const size_t count = size_t{frame.width} * frame.height;
    const bool wide = frame.bits_per_sample > 8;
    const size_t sampleBytes = wide ? 2 : 1;
    const bool planes = interleaving == charls_interleave_mode::none;
    const size_t components = static_cast<size_t>(frame.component_count);
    const auto component = [&](size_t which) {
        const size_t index = components == 1 ? 0 : which;
        const std::uint8_t* first = decoded.data() + index * sampleBytes * (planes ? count : 1);
        return Samples{first, sampleBytes * (planes ? 1 : components), wide, frame.bits_per_sample - 8};
    };
    const Samples red = component(0);
    const Samples green = component(1);
    const Samples blue = component(2);
    raster.pixels.resize(count);
    for (size_t pixel = 0; pixel < count; ++pixel)
        raster.pixels[pixel] = 0xFF000000U | red.Value(pixel) << 16 | green.Value(pixel) << 8 | blue.Value(pixel);
    return raster;
}
