#pragma once

#include <cstdint>

/// What the picture reader's process writes: this header, then, behind a picture's, the rows from the top, four bytes a
/// pixel (blue, green, red, alpha), all in the machine's byte order. Nothing at all when the file can't be read.
struct PixelStreamHeader
{
    static constexpr std::uint32_t Mark = 0x52435344;
    enum Content : std::uint32_t {
        Opaque,
        Alpha,
        PremultipliedAlpha,
        TooLargeJpeg, ///< As for the next, by the limit of a JPEG.
        TooLarge,     ///< No pixels follow; the size is the one that the file names.
        Unconfinable, ///< No pixels follow, no size: the kernel can't confine the program that reads the format.
        Turned,       ///< A JPEG follows that has been turned upright, of `bytes`; none where it stood so.
    };

    std::uint32_t mark = Mark;
    std::uint32_t content = Opaque;
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    /// Of the file, where the picture is a JPEG shown at a lower scale; else 0.
    std::uint32_t wholeWidth = 0;
    std::uint32_t wholeHeight = 0;
    std::uint32_t bytes = 0; ///< Of a turned JPEG.
    std::uint32_t cut = 0;   ///< 1 when the file's data end before the picture does.
};
