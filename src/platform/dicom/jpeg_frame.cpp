#include "platform/dicom/jpeg_frame.h"

#include "platform/imaging/jpeg_segments.h"

#include <QtEndian>

#include <array>

using namespace Qt::StringLiterals;

namespace {

constexpr std::uint8_t FirstApplication = 0xE0; ///< JFIF
constexpr std::uint8_t ProfileApplication = 0xE2;
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

/// Pieces of the profile, which may be longer than a segment: each tells its number, from 1 on, and how many there are.
class ProfilePieces
{
public:
    void Take(std::span<const std::uint8_t> segment, std::uint8_t marker)
    {
        constexpr QByteArrayView Name("ICC_PROFILE\0", 12);
        const QByteArrayView body(segment.data(), qsizetype(segment.size()));
        if (marker != ProfileApplication || !body.startsWith(Name) || body.size() < Name.size() + 2)
            return;
        const auto number = static_cast<unsigned char>(body[Name.size()]);
        m_isBroken |= number != ++m_count || m_whole.size() + body.size() > MostProfile;
        m_told = static_cast<unsigned char>(body[Name.size() + 1]);
        if (!m_isBroken)
            m_whole += body.sliced(Name.size() + 2);
    }

    /// Empty when it isn't whole, or not one of a picture's red, green and blue.
    QByteArray Whole() const
    {
        constexpr qsizetype HeadBytes = 128;
        if (m_isBroken || m_count != m_told || m_whole.size() < HeadBytes ||
            qFromBigEndian<quint32>(m_whole.constData()) != m_whole.size() || m_whole.sliced(16, 4) != "RGB " ||
            m_whole.sliced(36, 4) != "acsp")
            return {};
        return m_whole;
    }

private:
    static constexpr qsizetype MostProfile = 512 << 10;

    QByteArray m_whole;
    int m_count = 0;
    int m_told = 0;
    bool m_isBroken = false;
};

/// Behind the mark of the file's end that follows a scan's data, and further scans; 0 without one.
std::size_t EndOfImage(std::span<const std::uint8_t> file, std::size_t from)
{
    for (std::size_t at = from; at + 2 <= file.size();) {
        const void* next = std::memchr(file.data() + at, 0xFF, file.size() - at - 1);
        if (next == nullptr)
            return 0;
        at = static_cast<std::size_t>(static_cast<const std::uint8_t*>(next) - file.data());
        const std::uint8_t marker = file[at + 1];
        if (marker == JpegSegment::EndOfImage)
            return at + 2;
        const bool isAlone = marker <= 0x01 || (marker >= 0xD0 && marker <= 0xD8);
        if (marker == 0xFF)
            ++at;
        else if (isAlone || at + 4 > file.size())
            at += 2;
        else
            at += 2 + (std::size_t{file[at + 2]} << 8 | file[at + 3]);
    }
    return 0;
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
    ProfilePieces profile;
    for (std::size_t at = FirstJpegSegment;;) {
        const std::optional<JpegSegment> segment = NextJpegSegment(file, at);
        if (!segment || segment->end > file.size() || segment->end < segment->begin + SegmentHead ||
            segment->marker == JpegSegment::EndOfImage) {
            frame.problem = u"JPEG 그림이 깨져 있습니다.!!"_s;
            return frame;
        }
        if (segment->marker == JpegSegment::Scan) {
            const std::size_t end = EndOfImage(file, segment->end);
            if (frame.rows > 0 && end == 0)
                frame.problem = u"JPEG 그림이 도중에 끊겨 있습니다.!!"_s;
            if (frame.rows > 0 && end > 0) {
                frame.coded += content.sliced(qsizetype(segment->begin), qsizetype(end - segment->begin));
                frame.problem.clear();
                if (frame.components > 1)
                    frame.profile = profile.Whole();
            }
            return frame;
        }
        const auto body = file.subspan(segment->begin + SegmentHead, segment->end - segment->begin - SegmentHead);
        ReadColours(body, segment->marker, colours);
        profile.Take(body, segment->marker);
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
