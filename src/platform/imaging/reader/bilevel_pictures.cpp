#include "platform/imaging/reader/decoders.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstring>
#include <memory>
#include <string_view>

#include <tiffio.h>

using namespace std::string_view_literals;

namespace {

constexpr std::uint32_t Black = 0xFF000000;

/// A file in memory as libtiff reads and writes one.
struct MemoryFile
{
    std::vector<std::uint8_t> bytes;
    size_t at = 0;

    static MemoryFile& Of(thandle_t handle) { return *static_cast<MemoryFile*>(handle); }

    static tmsize_t Read(thandle_t handle, void* target, tmsize_t size)
    {
        MemoryFile& file = Of(handle);
        if (size <= 0 || file.at >= file.bytes.size())
            return 0;
        const size_t count = std::min(static_cast<size_t>(size), file.bytes.size() - file.at);
        std::memcpy(target, file.bytes.data() + file.at, count);
        file.at += count;
        return static_cast<tmsize_t>(count);
    }
    static tmsize_t Write(thandle_t handle, void* source, tmsize_t size)
    {
        MemoryFile& file = Of(handle);
        const size_t count = static_cast<size_t>(std::max<tmsize_t>(size, 0));
        file.bytes.resize(std::max(file.bytes.size(), file.at + count));
        std::memcpy(file.bytes.data() + file.at, source, count);
        file.at += count;
        return size;
    }
    static toff_t Seek(thandle_t handle, toff_t offset, int whence)
    {
        MemoryFile& file = Of(handle);
        const size_t base = whence == SEEK_SET ? 0 : whence == SEEK_CUR ? file.at : file.bytes.size();
        file.at = base + static_cast<size_t>(offset);
        return file.at;
    }
    static int Close(thandle_t) { return 0; }
    static toff_t Size(thandle_t handle) { return Of(handle).bytes.size(); }

    std::unique_ptr<TIFF, decltype(&TIFFClose)> Open(const char* mode)
    {
        at = 0;
        return {TIFFClientOpen("picture", mode, this, &Read, &Write, &Seek, &Close, &Size, nullptr, nullptr),
                &TIFFClose};
    }
};

std::optional<Raster> ReadFirstPage(MemoryFile& file)
{
    TIFFSetErrorHandler(nullptr);
    TIFFSetWarningHandler(nullptr);
    const auto tiff = file.Open("rm"); // No mapping: the file is in memory already.
    Raster raster;
    if (tiff == nullptr || TIFFGetField(tiff.get(), TIFFTAG_IMAGEWIDTH, &raster.width) != 1 ||
        TIFFGetField(tiff.get(), TIFFTAG_IMAGELENGTH, &raster.height) != 1 ||
        !IsSizeWithinLimit(raster.width, raster.height))
        return {};
    raster.pixels.resize(size_t{raster.width} * raster.height);
    constexpr int StopAtFault = 1;
    if (TIFFReadRGBAImageOriented(tiff.get(), raster.width, raster.height, raster.pixels.data(), ORIENTATION_TOPLEFT,
                                  StopAtFault) != 1)
        return {};
    // libtiff's pixels have red in the low byte.
    for (std::uint32_t& pixel : raster.pixels)
        pixel = (pixel & 0xFF00FF00) | (pixel & 0xFF) << 16 | (pixel >> 16 & 0xFF);
    raster.hasAlpha = std::ranges::any_of(raster.pixels, [](std::uint32_t pixel) { return pixel < Black; });
    return raster;
}

/// The numbers behind a record's name in the header, such as "rpelcnt: 000640,000480".
std::array<unsigned, 2> CalsNumbers(std::string_view header, std::string_view name)
{
    std::array<unsigned, 2> numbers = {};
    const size_t found = header.find(name);
    if (found == std::string_view::npos)
        return numbers;
    const char* at = header.data() + found + name.size();
    const char* end = header.data() + header.size();
    for (unsigned& number : numbers) {
        at = std::find_if(at, end, [](char letter) { return letter != ' ' && letter != ','; });
        at = std::from_chars(at, end, number).ptr;
    }
    return numbers;
}

} // namespace

std::optional<Raster> DecodeTiff(Bytes content)
{
    MemoryFile file{{content.begin(), content.end()}};
    return ReadFirstPage(file);
}

std::optional<Raster> DecodeCals(Bytes content)
{
    constexpr size_t HeaderBytes = 2048;
    const std::string_view header(reinterpret_cast<const char*>(content.data()), HeaderBytes);
    const auto [width, height] = CalsNumbers(header, "rpelcnt:"sv);
    const unsigned type = CalsNumbers(header, "rtype:"sv)[0];
    const auto [across, down] = CalsNumbers(header, "rorient:"sv);
    if (type != 1 || !IsSizeWithinLimit(width, height))
        return {};
    // Behind the header stand the bare bits of Group 4 facsimile, which libtiff decodes inside a TIFF.
    const Bytes coded = content.subspan(HeaderBytes);
    MemoryFile file;
    {
        const auto tiff = file.Open("w");
        if (tiff == nullptr)
            return {};
        TIFFSetField(tiff.get(), TIFFTAG_IMAGEWIDTH, width);
        TIFFSetField(tiff.get(), TIFFTAG_IMAGELENGTH, height);
        TIFFSetField(tiff.get(), TIFFTAG_ROWSPERSTRIP, height);
        TIFFSetField(tiff.get(), TIFFTAG_BITSPERSAMPLE, 1);
        TIFFSetField(tiff.get(), TIFFTAG_SAMPLESPERPIXEL, 1);
        TIFFSetField(tiff.get(), TIFFTAG_COMPRESSION, COMPRESSION_CCITTFAX4);
        TIFFSetField(tiff.get(), TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISWHITE);
        std::vector<std::uint8_t> bits(coded.begin(), coded.end());
        TIFFWriteRawStrip(tiff.get(), 0, bits.data(), static_cast<tmsize_t>(bits.size()));
    }
    std::optional<Raster> raster = ReadFirstPage(file);
    // Upside down scans: the pixels of a line then run leftwards, the lines upwards.
    if (raster && across == 180 && down == 90)
        std::ranges::reverse(raster->pixels);
    return raster;
}
