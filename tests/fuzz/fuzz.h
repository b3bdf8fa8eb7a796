#pragma once

#include <QByteArray>

#include <cstddef>
#include <cstdint>

/// What a target is given to read.
inline QByteArray ContentOf(const std::uint8_t* data, std::size_t size)
{
    return {reinterpret_cast<const char*>(data), static_cast<qsizetype>(size)};
}

/// The entry that libFuzzer calls; it ends in a crash, an endless loop, or not at all.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);
