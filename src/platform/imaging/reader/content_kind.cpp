#include "platform/imaging/reader/content_kind.h"

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

/// By the marker of the frame: the ways of coding that the usual decoders leave out.
ContentKind KindOfJpeg(Bytes content)
{
    for (size_t at = 2; at + 4 <= content.size();) {
        if (content[at] != 0xFF)
            return ContentKind::None;
        const std::uint8_t marker = content[at + 1];
        if (marker == 0xFF) {
            ++at;
            continue;
        }
        if (marker == 0xC3)
            return ContentKind::LosslessJpeg;
        if (marker == 0xF7)
            return ContentKind::JpegLs;
        if (marker == 0xDA || marker == 0xD9)
            return ContentKind::None;
        at += 2 + (size_t{content[at + 2]} << 8 | content[at + 3]);
    }
    return ContentKind::None;
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
