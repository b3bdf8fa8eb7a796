#pragma once

#include <cstdint>

/// What a picture file may ask of the station. The operator's guide names the same numbers.
namespace picturelimits {
/// Largest picture that is decoded, by what its header says, in millions of pixels.
inline constexpr std::int64_t LargestMegapixels = 64;
/// A JPEG up to here is shown all the same, at half or a quarter of its size, which its decoder reaches cheaply.
inline constexpr std::int64_t LargestJpegMegapixels = 200;
inline constexpr std::int64_t LargestPicture = LargestMegapixels * 1'000'000;
inline constexpr std::int64_t LargestJpeg = LargestJpegMegapixels * 1'000'000;
/// What takes more memory than this to decode does so in the reader's process. In bytes.
inline constexpr std::int64_t LargestInStation = 100'000'000;
/// How long that process may compute for a picture.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
inline constexpr int LongestDecodingMs = 10000; // It computes several times as slowly.
#else
inline constexpr int LongestDecodingMs = 2000;
#endif
/// How long it may take in all, on a machine that has other things to do.
inline constexpr int LongestWaitMs = 4 * LongestDecodingMs;
} // namespace picturelimits
