#include "platform/imaging/reader/content_kind.h"

#include "platform/imaging/jpeg_segments.h"

#include <algorithm>
#include <cstring>
#include <string_view>

using namespace std::string_view_literals;

namespace {

bool StartsWith(Bytes content, std::string_view mark)
{
    return content.size() >= mark.size() && std::memcmp(content.data(), mark.data(), mark.size()) == 0;
}

unsigned Word(Bytes content, size_t at)
{
    return content[at] | unsigned{content[at + 1]} << 8;
}

std::uint32_t DoubleWord(Bytes content, size_t at)
{
    return Word(content, at) | std::uint32_t{Word(content, at + 2)} << 16;
}

std::uint32_t BigDoubleWord(Bytes content, size_t at)
{
    return std::uint32_t{content[at]} << 24 | std::uint32_t{content[at + 1]} << 16 |
           std::uint32_t{content[at + 2]} << 8 | content[at + 3];
}

/// Where the frame header of a way of coding that the usual decoders leave out stands; 0 when there is none.
size_t FrameOfJpeg(Bytes content)
{
    for (auto segment = NextJpegSegment(content, FirstJpegSegment); segment && segment->begin + 9 <= content.size();
         segment = NextJpegSegment(content, segment->end)) {
        switch (segment->marker) {
        case JpegSegment::LosslessFrame:
        case JpegSegment::JpegLsFrame:
            return segment->begin;
        case JpegSegment::Scan:
        case JpegSegment::EndOfImage:
            return 0;
        default:
            break;
        }
    }
    return 0;
}

ContentKind KindOfJpeg(Bytes content)
{
    const size_t frame = FrameOfJpeg(content);
    if (frame == 0)
        return ContentKind::None;
    return content[frame + 1] == JpegSegment::LosslessFrame ? ContentKind::LosslessJpeg : ContentKind::JpegLs;
}

NamedSize SizeOfJpeg2000(Bytes content)
{
    // The code stream begins with its size, wherever the boxes around it put it.
    constexpr auto mark = "\xFF\x4F\xFF\x51"sv;
    const auto start = std::search(content.begin(), content.end(), mark.begin(), mark.end(),
                                   [](std::uint8_t byte, char wanted) { return char(byte) == wanted; });
    const size_t at = static_cast<size_t>(start - content.begin());
    if (at + 24 > content.size())
        return {};
    const auto extent = [&](size_t offset) {
        const std::uint32_t end = BigDoubleWord(content, at + offset);
        const std::uint32_t begin = BigDoubleWord(content, at + offset + 8);
        return end > begin ? end - begin : 0;
    };
    return {extent(8), extent(12)};
}

/// Of the first page, which stands in a segment of its own.
NamedSize SizeOfJbig2(Bytes content)
{
    constexpr unsigned PageInformation = 48;
    if (content.size() < 13)
        return {};
    const bool countsPages = (content[8] & 2) == 0;
    for (size_t at = countsPages ? 13 : 9; at + 19 <= content.size();) {
        // One byte tells how many segments this one refers to; more than four are rare, and never stand before a page.
        const std::uint8_t flags = content[at + 4];
        const size_t referred = content[at + 5] >> 5;
        const size_t length = at + 6 + referred + ((flags & 0x40) != 0 ? 4 : 1);
        if (referred > 4 || length + 12 > content.size())
            return {};
        if ((flags & 0x3F) == PageInformation)
            return {BigDoubleWord(content, length + 4), BigDoubleWord(content, length + 8)};
        at = length + 4 + BigDoubleWord(content, length);
    }
    return {};
}

bool IsPcx(Bytes content)
{
    constexpr size_t HeaderBytes = 128;
    if (content.size() <= HeaderBytes || content[0] != 0x0A || content[1] > 5 || content[2] > 1)
        return false;
    const std::uint8_t bits = content[3];
    const std::uint8_t planes = content[65];
    return (bits == 1 || bits == 2 || bits == 4 || bits == 8) && planes >= 1 && planes <= 4 &&
           Word(content, 8) >= Word(content, 4) && Word(content, 10) >= Word(content, 6);
}

/// A TGA has no mark at its start: every field of the header has to make sense.
bool IsTarga(Bytes content)
{
    constexpr size_t HeaderBytes = 18;
    if (content.size() <= HeaderBytes)
        return false;
    const std::uint8_t type = content[2];
    const bool palette = type == 1 || type == 9;
    const bool colours = type == 2 || type == 10;
    const bool greys = type == 3 || type == 11;
    if ((!palette && !colours && !greys) || content[1] > 1 || (palette && content[1] != 1))
        return false;
    const std::uint8_t entryBits = content[7];
    if (content[1] == 1 && entryBits != 15 && entryBits != 16 && entryBits != 24 && entryBits != 32)
        return false;
    const std::uint8_t bits = content[16];
    const bool bitsFit = colours ? bits == 15 || bits == 16 || bits == 24 || bits == 32 : bits == 8 || bits == 16;
    return bitsFit && Word(content, 12) > 0 && Word(content, 14) > 0;
}

/// A CALS raster begins with records of text, each with its name in front.
bool IsCals(Bytes content)
{
    constexpr size_t HeaderBytes = 2048;
    if (content.size() <= HeaderBytes)
        return false;
    const std::string_view header(reinterpret_cast<const char*>(content.data()), HeaderBytes);
    return header.find("rpelcnt:"sv) != std::string_view::npos &&
           (header.starts_with("srcdocid:"sv) || header.starts_with("version:"sv) || header.starts_with("rorient:"sv));
}

} // namespace

ContentKind KindOf(Bytes content)
{
    if (StartsWith(content, "\xFF\xD8\xFF"sv))
        return KindOfJpeg(content);
    if (StartsWith(content, "\0\0\0\x0CjP  \r\n\x87\n"sv) || StartsWith(content, "\xFF\x4F\xFF\x51"sv))
        return ContentKind::Jpeg2000;
    if (StartsWith(content, "\x97JB2\r\n\x1A\n"sv))
        return ContentKind::Jbig2;
    if (StartsWith(content, "\xB1\x68\xDE\x3A"sv))
        return ContentKind::Dcx;
    if (StartsWith(content, "II*\0"sv) || StartsWith(content, "MM\0*"sv))
        return ContentKind::Tiff;
    if (IsCals(content))
        return ContentKind::Cals;
    if (IsPcx(content))
        return ContentKind::Pcx;
    return IsTarga(content) ? ContentKind::Targa : ContentKind::None;
}

NamedSize SizeOf(ContentKind kind, Bytes content)
{
    switch (kind) {
    case ContentKind::LosslessJpeg: {
        const size_t frame = FrameOfJpeg(content);
        return {content[frame + 7] * 256U + content[frame + 8], content[frame + 5] * 256U + content[frame + 6]};
    }
    case ContentKind::Jpeg2000:
        return SizeOfJpeg2000(content);
    case ContentKind::Pcx:
        return {Word(content, 8) - Word(content, 4) + 1, Word(content, 10) - Word(content, 6) + 1};
    case ContentKind::Dcx: {
        const Bytes first = FirstPictureOfDcx(content);
        return IsPcx(first) ? SizeOf(ContentKind::Pcx, first) : NamedSize();
    }
    case ContentKind::Targa:
        return {Word(content, 12), Word(content, 14)};
    case ContentKind::Jbig2:
        return SizeOfJbig2(content);
    default:
        return {};
    }
}

Bytes FirstPictureOfDcx(Bytes content)
{
    // Behind the mark stand the places of the pictures, with a zero at the end.
    if (content.size() < 12)
        return {};
    const std::uint32_t first = DoubleWord(content, 4);
    const std::uint32_t second = DoubleWord(content, 8);
    if (first >= content.size())
        return {};
    const size_t end = second > first ? std::min<size_t>(second, content.size()) : content.size();
    return content.subspan(first, end - first);
}
