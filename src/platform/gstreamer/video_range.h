#pragma once

#include <algorithm>
#include <cstdint>

/// From the limited range of video (16 to 235, chroma 16 to 240) to the full one of JPEG, value by value. `from` and
/// `to` may be the same.
namespace videorange {

/// 255/219 and 255/224 as fractions of 2^14. Plain arithmetic instead of a table: the compiler makes it a vector loop.
inline constexpr int LumaScale = 19077;
inline constexpr int ChromaScale = 18651;

inline void Expand(const std::uint8_t* from, std::uint8_t* to, std::int64_t count, int offset, int scale, int base)
{
    for (std::int64_t i = 0; i < count; ++i) {
        const int value = (((int(from[i]) - offset) * scale + (1 << 13)) >> 14) + base;
        to[i] = std::uint8_t(std::clamp(value, 0, 255));
    }
}

inline void ExpandLuma(const std::uint8_t* from, std::uint8_t* to, std::int64_t count)
{
    Expand(from, to, count, 16, LumaScale, 0);
}

inline void ExpandChroma(const std::uint8_t* from, std::uint8_t* to, std::int64_t count)
{
    Expand(from, to, count, 128, ChromaScale, 128);
}

} // namespace videorange
