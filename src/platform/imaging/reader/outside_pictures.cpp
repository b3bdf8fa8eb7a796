#include "platform/imaging/picture_limits.h"
#include "platform/imaging/reader/decoders.h"

#include <algorithm>
#include <cstdio>

namespace {

constexpr std::uint32_t White = 0xFFFFFFFF;
constexpr std::uint32_t Black = 0xFF000000;

/// ffmpeg on one picture, whose pixels come out one behind the other.
std::unique_ptr<OutsideDecoder> Ffmpeg(const char* codec, size_t bytes, size_t offset = 0)
{
    return std::make_unique<OutsideDecoder>(std::vector<std::string>{"/usr/bin/ffmpeg",
                                                                     "-v",
                                                                     "quiet",
                                                                     "-nostdin",
                                                                     "-threads",
                                                                     "1",
                                                                     "-err_detect",
                                                                     "explode",
                                                                     "-xerror",
                                                                     "-f",
                                                                     "image2pipe",
                                                                     "-frame_size",
                                                                     std::to_string(bytes),
                                                                     "-c:v",
                                                                     codec,
                                                                     "-i",
                                                                     "pipe:0",
                                                                     "-frames:v",
                                                                     "1",
                                                                     "-f",
                                                                     "rawvideo",
                                                                     "-pix_fmt",
                                                                     "bgra",
                                                                     "-sws_flags",
                                                                     "neighbor+accurate_rnd+full_chroma_int",
                                                                     "pipe:1"},
                                            offset);
}

bool HasFourPlanes(Bytes pcx)
{
    constexpr size_t PlanesAt = 65;
    return pcx.size() > PlanesAt && pcx[PlanesAt] == 4;
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

/// The page as a bitmap with a line of numbers in front, one bit a pixel and black as 1.
std::optional<Raster> ReadBitmap(OutsideDecoder& program)
{
    std::string head;
    for (int lines = 0; lines < 2 && head.size() < 64;) {
        char letter = 0;
        if (!program.Read(&letter, 1))
            return {};
        head += letter;
        lines += letter == '\n' ? 1 : 0;
    }
    Raster raster;
    if (std::sscanf(head.c_str(), "P4 %u %u", &raster.width, &raster.height) != 2 ||
        !IsSizeWithinLimit(raster.width, raster.height))
        return {};
    raster.pixels.reserve(size_t{raster.width} * raster.height);
    std::vector<std::uint8_t> row((size_t{raster.width} + 7) / 8);
    for (std::uint32_t y = 0; y < raster.height; ++y) {
        if (!program.Read(row.data(), row.size()))
            return {};
        for (std::uint32_t x = 0; x < raster.width; ++x)
            raster.pixels.push_back((row[x / 8] >> (7 - x % 8) & 1) != 0 ? Black : White);
    }
    return raster;
}

std::optional<Raster> ReadPixels(OutsideDecoder& program, NamedSize size)
{
    if (!IsSizeWithinLimit(size.width, size.height))
        return {};
    Raster raster;
    raster.width = size.width;
    raster.height = size.height;
    raster.pixels.resize(size_t{size.width} * size.height);
    if (!program.Read(raster.pixels.data(), raster.pixels.size() * 4))
        return {};
    // Many files fill the alpha with zeros and mean nothing by it.
    const auto alpha = [](std::uint32_t pixel) { return pixel >> 24; };
    raster.hasAlpha = std::ranges::any_of(raster.pixels, [&](auto pixel) { return alpha(pixel) < 0xFF; }) &&
                      std::ranges::any_of(raster.pixels, [&](auto pixel) { return alpha(pixel) > 0; });
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

std::unique_ptr<OutsideDecoder> StartOutsideDecoder(ContentKind kind, Bytes content)
{
    switch (kind) {
    case ContentKind::LosslessJpeg:
        return Ffmpeg("mjpeg", content.size());
    case ContentKind::Targa:
        return Ffmpeg("targa", content.size());
    case ContentKind::Pcx:
        return HasFourPlanes(content) ? nullptr : Ffmpeg("pcx", content.size());
    case ContentKind::Dcx: {
        const Bytes first = FirstPictureOfDcx(content);
        if (first.empty() || HasFourPlanes(first))
            return nullptr;
        return Ffmpeg("pcx", first.size(), static_cast<size_t>(first.data() - content.data()));
    }
    case ContentKind::Jbig2:
        return std::make_unique<OutsideDecoder>(
            std::vector<std::string>{"/usr/bin/jbig2dec", "-q", "-t", "pbm", "-o", "-", "/dev/stdin"});
    default:
        return nullptr;
    }
}

std::optional<Raster> DecodeOutside(ContentKind kind, Bytes content, OutsideDecoder* program)
{
    if (program != nullptr)
        return kind == ContentKind::Jbig2 ? ReadBitmap(*program) : ReadPixels(*program, SizeOf(kind, content));
    if (kind == ContentKind::Dcx)
        return DecodeFourPlanePcx(FirstPictureOfDcx(content));
    return kind == ContentKind::Pcx ? DecodeFourPlanePcx(content) : std::nullopt;
}
