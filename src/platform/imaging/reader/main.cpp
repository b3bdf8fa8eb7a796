#include "platform/imaging/pixel_stream.h"
#include "platform/imaging/reader/decoders.h"

extern "C" {
#include <libavutil/log.h>
}

#include <cerrno>
#include <csignal>
#include <new>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

/// Most memory of its own; what is only mapped from a file doesn't count. In bytes.
#ifdef __SANITIZE_ADDRESS__
constexpr rlim_t DataLimit = RLIM_INFINITY; // The sanitizer's own maps are far larger.
#else
constexpr rlim_t DataLimit = 480 << 20;
#endif
/// The station ends the process much earlier; this is for one that has lost its station.
constexpr rlim_t SecondsLimit = 12;

bool Limit(__rlimit_resource resource, rlim_t most)
{
    const rlimit limit = {most, most};
    return setrlimit(resource, &limit) == 0;
}

/// From here on the process reads its input, computes and writes its output, and can do little else.
bool ConfineProcess()
{
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    // No further file is opened, no core is left, nothing is gained by starting another program.
    return prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 && Limit(RLIMIT_DATA, DataLimit) &&
           Limit(RLIMIT_CPU, SecondsLimit) && Limit(RLIMIT_CORE, 0) && Limit(RLIMIT_FSIZE, 0) &&
           Limit(RLIMIT_NOFILE, 0);
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

std::optional<Raster> DecodeAs(ContentKind kind, Bytes content)
{
    switch (kind) {
    case ContentKind::LosslessJpeg:
        return DecodeLosslessJpeg(content);
    case ContentKind::JpegLs:
        return DecodeJpegLs(content);
    case ContentKind::Jpeg2000:
        return DecodeJpeg2000(content);
    case ContentKind::Pcx:
        return DecodePcx(content);
    case ContentKind::Dcx:
        return DecodePcx(FirstPictureOfDcx(content));
    case ContentKind::Targa:
        return DecodeTarga(content);
    case ContentKind::Jbig2:
        return DecodeJbig2(content);
    case ContentKind::Cals:
        return DecodeCals(content);
    case ContentKind::Tiff:
        return DecodeTiff(content);
    case ContentKind::None:
        break;
    }
    return {};
}

} // namespace

/// Standard input is the picture file, standard output the pixels.
int main()
try {
    if (!ConfineProcess())
        return 2;
    av_log_set_level(AV_LOG_QUIET);
    std::vector<std::uint8_t> input = ReadInput();
    const size_t size = input.size();
    input.resize(size + PaddingBytes);
    const Bytes content(input.data(), size);
    const std::optional<Raster> raster = DecodeAs(KindOf(content), content);
    if (!raster)
        return 1;
    const PixelStreamHeader header{PixelStreamHeader::Mark, raster->width, raster->height, raster->hasAlpha ? 1U : 0U};
    return Write(&header, sizeof header) && Write(raster->pixels.data(), raster->pixels.size() * 4) ? 0 : 1;
} catch (const std::bad_alloc&) {
    return 1;
}
