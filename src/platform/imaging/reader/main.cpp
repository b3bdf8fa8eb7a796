#include "platform/imaging/picture_limits.h"
#include "platform/imaging/pixel_stream.h"
#include "platform/imaging/reader/confinement.h"
#include "platform/imaging/reader/decoders.h"
#include "platform/imaging/reader/known_pictures.h"
#include "platform/imaging/reader/upright_jpeg.h"

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <new>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

/// Most memory of its own; what is only mapped from a file doesn't count. In bytes.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr rlim_t DataLimit = RLIM_INFINITY; // The sanitizer's own maps are far larger.
#else
constexpr rlim_t DataLimit = 480 << 20;
#endif
/// The process ends by SIGXCPU, which the station knows; a decoder that ignores it is killed.
constexpr rlim_t SecondsLimit = picturelimits::LongestDecodingMs / 1000;
constexpr rlim_t SecondsGrace = 1;

bool Limit(__rlimit_resource resource, rlim_t most, rlim_t grace = 0)
{
    const rlimit limit = {most, most + grace};
    return setrlimit(resource, &limit) == 0;
}

/// Holds for this program and for those that it runs.
bool ConfineProcess()
{
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    // Not every library of the station closes its sockets and devices for a program that is started.
    constexpr unsigned Last = ~0U;
    if (close_range(STDERR_FILENO + 1, Last, 0) != 0)
        return false;
    // No core is left, no other program looks in, no file is written, nothing is gained by starting another program.
    return prctl(PR_SET_DUMPABLE, 0, 0, 0, 0) == 0 && prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 &&
           Limit(RLIMIT_DATA, DataLimit) && Limit(RLIMIT_CPU, SecondsLimit, SecondsGrace) && Limit(RLIMIT_CORE, 0) &&
           Limit(RLIMIT_FSIZE, 0);
}

std::vector<std::uint8_t> ReadInput()
{
    constexpr size_t Step = 1 << 20;
    std::vector<std::uint8_t> content;
    struct stat facts = {};
    if (fstat(STDIN_FILENO, &facts) == 0 && facts.st_size > 0)
        content.reserve(static_cast<size_t>(facts.st_size) + Step);
    for (size_t filled = 0;;) {
        content.resize(filled + Step);
        const ssize_t got = read(STDIN_FILENO, content.data() + filled, Step);
        if (got < 0 && errno == EINTR)
            continue;
        if (got <= 0) {
            content.resize(filled);
            return content;
        }
        filled += static_cast<size_t>(got);
    }
}

bool Write(const void* data, size_t bytes)
{
    const auto* at = static_cast<const char*>(data);
    while (bytes > 0) {
        const ssize_t written = write(STDOUT_FILENO, at, bytes);
        if (written < 0 && errno == EINTR)
            continue;
        if (written <= 0)
            return false;
        at += written;
        bytes -= static_cast<size_t>(written);
    }
    return true;
}

std::optional<Raster> Decode(ContentKind kind, Bytes content, OutsideDecoder* program)
{
    switch (kind) {
    case ContentKind::JpegLs:
        return DecodeJpegLs(content);
    case ContentKind::Jpeg2000:
        return DecodeJpeg2000(content);
    case ContentKind::Cals:
        return DecodeCals(content);
    case ContentKind::Tiff:
        return DecodeTiff(content);
    default:
        return DecodeOutside(kind, content, program);
    }
}

bool WritePicture(const PixelStreamHeader& header, const void* pixels)
{
    return Write(&header, sizeof header) && Write(pixels, size_t{header.width} * header.height * 4);
}

bool WriteRefusal(PixelStreamHeader::Content why, std::uint64_t width, std::uint64_t height)
{
    PixelStreamHeader header;
    header.content = why;
    header.width = static_cast<std::uint32_t>(width);
    header.height = static_cast<std::uint32_t>(height);
    return Write(&header, sizeof header);
}

bool ReadForeign()
{
    const std::vector<std::uint8_t> content = ReadInput();
    const ContentKind kind = KindOf(content);
    const NamedSize named = SizeOf(kind, content);
    IsSizeWithinLimit(named.width, named.height);
    const std::unique_ptr<OutsideDecoder> program = StartOutsideDecoder(kind, content);
    if (!confinement::ShutIn(program == nullptr ? -1 : program->Process()))
        return false;
    const std::optional<Raster> raster = Decode(kind, content, program.get());
    if (!raster)
        return false;
    PixelStreamHeader header;
    header.content = raster->hasAlpha ? PixelStreamHeader::Alpha : PixelStreamHeader::Opaque;
    header.width = raster->width;
    header.height = raster->height;
    return WritePicture(header, raster->pixels.data());
}

bool ReadKnown(char** wish)
{
    LoadKnownFormats();
    if (!confinement::ShutIn())
        return false;
    const std::optional<KnownPicture> known = DecodeKnown(
        STDIN_FILENO, {static_cast<picturecontent::Fit>(std::atoi(wish[0])), {std::atoi(wish[1]), std::atoi(wish[2])}});
    if (!known)
        return false;
    const auto width = [](QSize size) { return static_cast<std::uint32_t>(size.width()); };
    const auto height = [](QSize size) { return static_cast<std::uint32_t>(size.height()); };
    const QSize named = known->header.size;
    if (known->header.IsTooLarge()) {
        return WriteRefusal(known->header.IsJpeg() ? PixelStreamHeader::TooLargeJpeg : PixelStreamHeader::TooLarge,
                            width(named), height(named));
    }
    const QImage& picture = known->decoded.picture;
    if (picture.isNull())
        return false;
    PixelStreamHeader header;
    header.content = picture.hasAlphaChannel() ? PixelStreamHeader::PremultipliedAlpha : PixelStreamHeader::Opaque;
    header.width = width(picture.size());
    header.height = height(picture.size());
    header.cut = known->decoded.cut ? 1 : 0;
    if (known->header.IsReduced()) {
        header.wholeWidth = width(named);
        header.wholeHeight = height(named);
    }
    return WritePicture(header, picture.constBits());
}

bool TurnJpeg()
{
    LoadKnownFormats();
    if (!confinement::ShutIn())
        return false;
    const std::optional<UprightJpeg> upright = MakeUpright(STDIN_FILENO);
    if (!upright)
        return false;
    PixelStreamHeader header;
    header.content = upright->large ? PixelStreamHeader::TooLargeJpeg : PixelStreamHeader::Turned;
    header.width = static_cast<std::uint32_t>(upright->size.width());
    header.height = static_cast<std::uint32_t>(upright->size.height());
    header.bytes = static_cast<std::uint32_t>(upright->turned.size());
    header.cut = upright->cut ? 1 : 0;
    return Write(&header, sizeof header) && Write(upright->turned.constData(), header.bytes);
}

} // namespace

/// Standard input is the picture file, standard output the pixels. Without arguments the file is in a format that Qt
/// doesn't know; with one it is a JPEG that is to become upright; otherwise they are how the picture is wanted, and
/// width and height of its room.
int main(int argc, char** argv)
try {
    if (!ConfineProcess())
        return 2;
    return (argc == 4 ? ReadKnown(argv + 1) : argc == 2 ? TurnJpeg() : ReadForeign()) ? 0 : 1;
} catch (const TooLarge& size) {
    return WriteRefusal(PixelStreamHeader::TooLarge, size.width, size.height) ? 0 : 1;
} catch (const Unconfinable&) {
    return WriteRefusal(PixelStreamHeader::Unconfinable, 0, 0) ? 0 : 1;
} catch (const std::bad_alloc&) {
    return 1;
}
