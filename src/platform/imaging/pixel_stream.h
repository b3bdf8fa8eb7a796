#pragma once

#include <cstdint>

/// What the picture reader's process writes: this header, then the rows from the top, four bytes a pixel (blue, green,
/// red, alpha), all in the machine's byte order. Nothing at all when the file can't be read.
struct PixelStreamHeader
{
    static constexpr std::uint32_t Mark = 0x52435343;

    std::uint32_t mark = Mark;
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::uint32_t hasAlpha = 0;
};

/// Largest picture that the process decodes, in pixels.
inline constexpr std::int64_t LargestForeignPicture = 64'000'000;
