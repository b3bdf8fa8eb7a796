#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <optional>
#include <span>

/// A marker of a JPEG file and what belongs to it.
struct JpegSegment
{
    std::uint8_t marker; ///< The byte behind 0xFF.
    std::size_t begin;   ///< Of the marker.
    std::size_t end;     ///< Behind the segment; behind the header of a scan its data follow.

    static constexpr std::uint8_t BaselineFrame = 0xC0;
    static constexpr std::uint8_t LosslessFrame = 0xC3;
    static constexpr std::uint8_t JpegLsFrame = 0xF7;
    static constexpr std::uint8_t EndOfImage = 0xD9;
    static constexpr std::uint8_t Scan = 0xDA;
};

/// The first segment that begins at `from` or behind it, whatever lies before; nothing when none does. The end may lie
/// beyond a file that is cut short.
inline std::optional<JpegSegment> NextJpegSegment(std::span<const std::uint8_t> file, std::size_t from)
{
    for (std::size_t at = from; at + 4 <= file.size();) {
        if (file[at] != 0xFF) {
            const void* next = std::memchr(file.data() + at, 0xFF, file.size() - at);
            if (next == nullptr)
                return std::nullopt;
            at = static_cast<std::size_t>(static_cast<const std::uint8_t*>(next) - file.data());
            continue;
        }
        const std::uint8_t marker = file[at + 1];
        if (marker == 0xFF)
            ++at; // Filling.
        else if (marker <= 0x01 || (marker >= 0xD0 && marker <= 0xD8))
            at += 2; // Stands alone.
        else
            return JpegSegment{marker, at, at + 2 + (std::size_t{file[at + 2]} << 8 | file[at + 3])};
    }
    return std::nullopt;
}

/// Where the segments of a file begin, behind the mark of its start.
inline constexpr std::size_t FirstJpegSegment = 2;
