#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

using Bytes = std::span<const std::uint8_t>;

enum class ContentKind {
    None,
    LosslessJpeg,
    JpegLs,
    Jpeg2000,
    Pcx,
    Dcx,
    Targa,
    Jbig2,
    Cals,
    Tiff,
};

/// What a file is, by its content alone.
ContentKind KindOf(Bytes content);

struct NamedSize
{
    std::uint32_t width = 0;
    std::uint32_t height = 0;
};

/// The size that the header names, for the kinds whose decoders don't tell it; zeros for the others.
NamedSize SizeOf(ContentKind kind, Bytes content);

/// The first picture of a DCX file, which is a PCX of its own; empty when there is none.
Bytes FirstPictureOfDcx(Bytes content);
