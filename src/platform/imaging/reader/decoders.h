#pragma once

#include "platform/imaging/reader/content_kind.h"

#include <optional>
#include <vector>

/// A decoded picture: rows from the top, a pixel a number with blue in the low byte, then green, red and alpha.
struct Raster
{
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    bool hasAlpha = false;
    std::vector<std::uint32_t> pixels;
};

/// Thrown for a picture beyond the limit.
struct TooLarge
{
    std::uint64_t width = 0;
    std::uint64_t height = 0;
};

/// Zeros that the decoders want behind the content, since they read ahead.
inline constexpr std::size_t PaddingBytes = 64;

/// Each gives nothing when the content can't be read, and throws TooLarge when it is more than the limit.
std::optional<Raster> DecodeLosslessJpeg(Bytes content);
std::optional<Raster> DecodeJpegLs(Bytes content);
std::optional<Raster> DecodeJpeg2000(Bytes content);
std::optional<Raster> DecodePcx(Bytes content);
std::optional<Raster> DecodeTarga(Bytes content);
std::optional<Raster> DecodeJbig2(Bytes content);
std::optional<Raster> DecodeCals(Bytes content);
/// The first page.
std::optional<Raster> DecodeTiff(Bytes content);

/// True for a size of at least one pixel. Throws TooLarge beyond the limit.
bool IsSizeWithinLimit(std::uint64_t width, std::uint64_t height);
