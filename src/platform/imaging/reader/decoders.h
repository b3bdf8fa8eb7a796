#pragma once

#include "platform/imaging/reader/content_kind.h"
#include "platform/imaging/reader/OutsideDecoder.h"

#include <memory>
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

/// Each gives nothing when the content can't be read, and throws TooLarge when it is more than the limit.
std::optional<Raster> DecodeJpegLs(Bytes content);
std::optional<Raster> DecodeJpeg2000(Bytes content);
std::optional<Raster> DecodeCals(Bytes content);
/// The first page.
std::optional<Raster> DecodeTiff(Bytes content);

/// Starts the program that decodes that kind; null for a kind that is decoded here.
std::unique_ptr<OutsideDecoder> StartOutsideDecoder(ContentKind kind, Bytes content);
/// The picture from the program that was started for it.
std::optional<Raster> DecodeOutside(ContentKind kind, Bytes content, OutsideDecoder* program);

/// True for a size of at least one pixel. Throws TooLarge beyond the limit.
bool IsSizeWithinLimit(std::uint64_t width, std::uint64_t height);
