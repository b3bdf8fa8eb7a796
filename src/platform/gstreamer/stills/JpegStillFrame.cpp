#include "platform/gstreamer/stills/JpegStillFrame.h"

#include "contracts/PlatformError.h"
#include "platform/imaging/jpeg_segments.h"

#include <turbojpeg.h>

#include <algorithm>
#include <cstdint>
#include <memory>

using namespace Qt::StringLiterals;

namespace {
constexpr int HuffmanTables = 0xc4;
/// More than any camera has; a broken header may tell of more.
constexpr qint64 MostPixels = 64'000'000;

struct TurboDestroyer
{
    void operator()(void* handle) const { tjDestroy(handle); }
};
using TurboHandle = std::unique_ptr<void, TurboDestroyer>;

/// Without what the device has filled its buffer up with.
QByteArray Trimmed(QByteArray bytes)
{
    qsizetype size = bytes.size();
    while (size > 0 && bytes.at(size - 1) == 0)
        --size;
    bytes.truncate(size);
    return bytes;
}

bool IsWholeFile(const QByteArray& bytes)
{
    if (!bytes.endsWith("\xff\xd9"))
        return false;
    const std::span<const std::uint8_t> content(reinterpret_cast<const std::uint8_t*>(bytes.constData()),
                                                static_cast<std::size_t>(bytes.size()));
    for (auto segment = NextJpegSegment(content, FirstJpegSegment); segment;
         segment = NextJpegSegment(content, segment->end)) {
        if (segment->marker == HuffmanTables)
            return true;
        if (segment->marker == JpegSegment::Scan)
            return false;
    }
    return false;
}
} // namespace

QByteArray JpegStillFrame::EncodeJPEG(int quality) const
{
    QByteArray bytes = Trimmed(m_bytes);
    if (IsWholeFile(bytes))
        return bytes;

    const auto* content = reinterpret_cast<const unsigned char*>(bytes.constData());
    const auto size = static_cast<unsigned long>(bytes.size());
    const TurboHandle reader(tjInitDecompress());
    const TurboHandle writer(tjInitCompress());
    int width = 0;
    int height = 0;
    int sampling = 0;
    int colours = 0;
    if (reader && writer &&
        tjDecompressHeader3(reader.get(), content, size, &width, &height, &sampling, &colours) == 0 && width > 0 &&
        height > 0 && sampling >= 0 && qint64{width} * height <= MostPixels) {
        constexpr int Pad = 4;
        const unsigned long planes = tjBufSizeYUV2(width, Pad, height, sampling);
        const auto yuv = std::make_unique_for_overwrite<unsigned char[]>(planes);
        unsigned long encodedSize = tjBufSize(width, height, sampling);
        QByteArray encoded(static_cast<qsizetype>(encodedSize), Qt::Uninitialized);
        auto* to = reinterpret_cast<unsigned char*>(encoded.data());
        if (tjDecompressToYUV2(reader.get(), content, size, yuv.get(), width, Pad, height, 0) == 0 &&
            tjCompressFromYUV(writer.get(), yuv.get(), width, Pad, height, sampling, &to, &encodedSize,
                              std::clamp(quality, 1, 100), TJFLAG_NOREALLOC) == 0) {
            encoded.truncate(static_cast<qsizetype>(encodedSize));
            encoded.squeeze();
            return encoded;
        }
    }
    throw PlatformError(u"캡쳐 영상을 읽을수 없습니다.!!"_s);
}
