#include "platform/dicom/jpeg_frame.h"

#include "platform/imaging/jpeg_segments.h"

#include <array>

using namespace Qt::StringLiterals;

namespace {

constexpr std::uint8_t FirstApplication = 0xE0; ///< JFIF
constexpr std::uint8_t AdobeApplication = 0xEE;
constexpr std::uint8_t LastApplication = 0xEF;
constexpr std::uint8_t Comment = 0xFE;
constexpr std::size_t SegmentHead = 4; ///< Marker and length.

bool IsFrameHeader(std::uint8_t marker)
{
    // Tables of Huffman codes, arithmetic conditioning and the reserved one lie in the same range.
    return marker >= 0xC0 && marker <= 0xCF && marker != 0xC4 && marker != 0xC8 && marker != 0xCC;
}

bool IsForeign(std::uint8_t marker)
{
    const bool isApplication = marker >= FirstApplication && marker <= LastApplication;
    return marker == Comment || (isApplication && marker != FirstApplication && marker != AdobeApplication);
}

/// What the file says of its colours, apart from its frame.
struct Colours
{
    bool isJfif = false;
    int adobeTransform = -1; ///< -1 without Adobe's segment.
};

void ReadColours(std::span<const std::uint8_t> segment, std::uint8_t marker, Colours& colours)
{
    constexpr std::size_t TransformAt = 11;
    const auto begins = [&](const char* name) {
        const std::size_t length = std::strlen(name);
        return segment.size() > length && std::memcmp(segment.data(), name, length) == 0;
    };
    if (marker == FirstApplication && begins("JFIF"))
        colours.isJfif = true;
    if (marker == AdobeApplication && begins("Adobe") && segment.size() > TransformAt)
        colours.adobeTransform = segment[TransformAt];
}

bool IsRgb(const Colours& colours, const std::array<char, 3>& components)
{
    if (colours.adobeTransform >= 0)
        return colours.adobeTransform == 0;
    return !colours.isJfif && components == std::array{'R', 'G', 'B'};
}

/// Gives the problem, empty when there is none.
QString ReadFrameHeader(std::span<const std::uint8_t> header, std::uint8_t marker, const Colours& colours,
                        JpegFrame& frame)
{
    constexpr std::size_t FirstComponentAt = 6;
    constexpr std::size_t ComponentBytes = 3;
    if (marker != JpegSegment::BaselineFrame)
        return u"기본(baseline) 방식의 JPEG가 아닙니다.!!"_s;
    if (header.size() < FirstComponentAt)
        return u"JPEG의 머리 부분이 깨져 있습니다.!!"_s;
    if (header[0] != 8)
        return u"8비트 JPEG가 아닙니다.!!"_s;
    frame.rows = header[1] << 8 | header[2];
    frame.columns = header[3] << 8 | header[4];
    frame.components = header[5];
    if (frame.rows == 0 || frame.columns == 0)
        return u"JPEG에 크기가 적혀 있지 않습니다.!!"_s;
    if (frame.components == 1)
        return {};
    if (frame.components != 3 || header.size() < FirstComponentAt + 3 * ComponentBytes)
        return u"흑백도 3색도 아닌 JPEG입니다.!!"_s;
    std::array<char, 3> components{};
    for (std::size_t at = 0; at < components.size(); ++at)
        components[at] = static_cast<char>(header[FirstComponentAt + at * ComponentBytes]);
    frame.isRgb = IsRgb(colours, components);
    return {};
}

} // namespace

JpegFrame ReadJpegFrame(const QByteArray& content)
{
    JpegFrame frame;
    frame.problem = u"JPEG 그림이 아닙니다.!!"_s;
    if (!content.startsWith("\xFF\xD8\xFF"))
        return frame;
    const std::span file(reinterpret_cast<const std::uint8_t*>(content.constData()),
                         static_cast<std::size_t>(content.size()));
    frame.coded = content.left(qsizetype(FirstJpegSegment));
    Colours colours;
    for (std::size_t at = FirstJpegSegment;;) {
        const std::optional<JpegSegment> segment = NextJpegSegment(file, at);
        if (!segment || segment->end > file.size() || segment->end < segment->begin + SegmentHead ||
            segment->marker == JpegSegment::EndOfImage) {
            frame.problem = u"JPEG 그림이 깨져 있습니다.!!"_s;
            return frame;
        }
        if (segment->marker == JpegSegment::Scan) {
            if (frame.rows > 0) {
                frame.coded += content.sliced(qsizetype(segment->begin));
                frame.problem.clear();
            }
            return frame;
        }
        const auto body = file.subspan(segment->begin + SegmentHead, segment->end - segment->begin - SegmentHead);
        ReadColours(body, segment->marker, colours);
        if (IsFrameHeader(segment->marker)) {
            frame.problem = ReadFrameHeader(body, segment->marker, colours, frame);
            if (!frame.problem.isEmpty())
                return frame;
        }
        if (!IsForeign(segment->marker))
            frame.coded += content.sliced(qsizetype(segment->begin), qsizetype(segment->end - segment->begin));
        at = segment->end;
    }
}
