#include "platform/imaging/reader/decoders.h"

#include <algorithm>
#include <cstring>
#include <memory>

#include <openjpeg.h>

namespace {

constexpr int Threads = 2;

template <class T, auto Destroy>
struct Release
{
    void operator()(T* owned) const { Destroy(owned); }
};
using OwnedCodec = std::unique_ptr<opj_codec_t, Release<opj_codec_t, &opj_destroy_codec>>;
using OwnedStream = std::unique_ptr<opj_stream_t, Release<opj_stream_t, &opj_stream_destroy>>;
using OwnedImage = std::unique_ptr<opj_image_t, Release<opj_image_t, &opj_image_destroy>>;

/// The content as the library reads it.
struct Source
{
    Bytes content;
    size_t at = 0;

    static Source& Of(void* source) { return *static_cast<Source*>(source); }

    static OPJ_SIZE_T Read(void* target, OPJ_SIZE_T bytes, void* user)
    {
        Source& source = Of(user);
        const size_t count = std::min<size_t>(bytes, source.content.size() - source.at);
        if (count == 0)
            return static_cast<OPJ_SIZE_T>(-1);
        std::memcpy(target, source.content.data() + source.at, count);
        source.at += count;
        return count;
    }
    static OPJ_BOOL Seek(OPJ_OFF_T place, void* user)
    {
        Source& source = Of(user);
        if (place < 0 || static_cast<size_t>(place) > source.content.size())
            return OPJ_FALSE;
        source.at = static_cast<size_t>(place);
        return OPJ_TRUE;
    }
    static OPJ_OFF_T Skip(OPJ_OFF_T bytes, void* user)
    {
        return Seek(static_cast<OPJ_OFF_T>(Of(user).at) + bytes, user) == OPJ_TRUE ? bytes : -1;
    }
};

/// Value of a component at a place of the picture, 0 to 255.
int ValueAt(const opj_image_comp_t& component, std::uint32_t x, std::uint32_t y)
{
    const std::uint32_t column = std::min(x / component.dx, component.w - 1);
    const std::uint32_t row = std::min(y / component.dy, component.h - 1);
    const int bits = static_cast<int>(component.prec);
    const int value = component.data[size_t{row} * component.w + column] + (component.sgnd != 0 ? 1 << (bits - 1) : 0);
    const int scaled = bits > 8 ? value >> (bits - 8) : value * 255 / ((1 << bits) - 1);
    return std::clamp(scaled, 0, 255);
}

std::uint32_t Word(int red, int green, int blue, int alpha)
{
    const auto byte = [](int value) { return static_cast<std::uint32_t>(std::clamp(value, 0, 255)); };
    return byte(alpha) << 24 | byte(red) << 16 | byte(green) << 8 | byte(blue);
}

bool IsLuminance(const opj_image_t& image)
{
    const opj_image_comp_t* components = image.comps;
    return image.color_space == OPJ_CLRSPC_SYCC || components[1].dx != components[0].dx ||
           components[1].dy != components[0].dy;
}

std::uint32_t PixelAt(const opj_image_t& image, bool luminance, std::uint32_t x, std::uint32_t y)
{
    const auto value = [&](std::uint32_t component) { return ValueAt(image.comps[component], x, y); };
    const int first = value(0);
    if (image.numcomps < 3)
        return Word(first, first, first, image.numcomps == 2 ? value(1) : 255);
    const int alpha = image.numcomps > 3 ? value(3) : 255;
    if (!luminance)
        return Word(first, value(1), value(2), alpha);
    // Of 1000, as for a JPEG.
    const int blueness = value(1) - 128;
    const int redness = value(2) - 128;
    return Word(first + 1402 * redness / 1000, first - (344 * blueness + 714 * redness) / 1000,
                first + 1772 * blueness / 1000, alpha);
}

bool IsUsable(const opj_image_t& image)
{
    const auto usable = [](const opj_image_comp_t& component) {
        return component.data != nullptr && component.w > 0 && component.h > 0 && component.dx > 0 &&
               component.dy > 0 && component.prec >= 1 && component.prec <= 24;
    };
    return image.numcomps >= 1 && std::all_of(image.comps, image.comps + image.numcomps, usable);
}

} // namespace

std::optional<Raster> DecodeJpeg2000(Bytes content)
{
    const bool bare = content[0] == 0xFF;
    Source source{content};
    const OwnedStream stream(opj_stream_default_create(OPJ_TRUE));
    const OwnedCodec codec(opj_create_decompress(bare ? OPJ_CODEC_J2K : OPJ_CODEC_JP2));
    if (stream == nullptr || codec == nullptr)
        return {};
    opj_stream_set_user_data(stream.get(), &source, nullptr);
    opj_stream_set_user_data_length(stream.get(), content.size());
    opj_stream_set_read_function(stream.get(), &Source::Read);
    opj_stream_set_seek_function(stream.get(), &Source::Seek);
    opj_stream_set_skip_function(stream.get(), &Source::Skip);
    opj_dparameters_t parameters;
    opj_set_default_decoder_parameters(&parameters);
    opj_image_t* header = nullptr;
    if (opj_setup_decoder(codec.get(), &parameters) == OPJ_FALSE)
        return {};
    opj_decoder_set_strict_mode(codec.get(), OPJ_TRUE);
    opj_codec_set_threads(codec.get(), Threads);
    const bool read = opj_read_header(stream.get(), codec.get(), &header) == OPJ_TRUE;
    const OwnedImage image(header);
    if (!read || !IsSizeWithinLimit(image->x1 - image->x0, image->y1 - image->y0) ||
        opj_decode(codec.get(), stream.get(), image.get()) == OPJ_FALSE || !IsUsable(*image))
        return {};
    Raster raster;
    raster.width = image->x1 - image->x0;
    raster.height = image->y1 - image->y0;
    raster.hasAlpha = image->numcomps == 2 || image->numcomps > 3;
    raster.pixels.reserve(size_t{raster.width} * raster.height);
    const bool luminance = image->numcomps >= 3 && IsLuminance(*image);
    for (std::uint32_t y = 0; y < raster.height; ++y) {
        for (std::uint32_t x = 0; x < raster.width; ++x)
            raster.pixels.push_back(PixelAt(*image, luminance, x, y));
    }
    return raster;
}
