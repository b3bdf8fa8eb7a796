#include "fuzz.h"
#include "platform/imaging/reader/decoders.h"

namespace {

void Decode(Bytes content)
{
    const ContentKind kind = KindOf(content);
    const NamedSize named = SizeOf(kind, content);
    if (!IsSizeWithinLimit(named.width, named.height))
        return;
    switch (kind) {
    case ContentKind::JpegLs:
        DecodeJpegLs(content);
        break;
    case ContentKind::Jpeg2000:
        DecodeJpeg2000(content);
        break;
    case ContentKind::Cals:
        DecodeCals(content);
        break;
    case ContentKind::Tiff:
        DecodeTiff(content);
        break;
    default:
        break; // Those of programs of their own.
    }
}

} // namespace

/// What the reader decodes itself, without its confinement.
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    try {
        Decode({data, size});
    } catch (const TooLarge&) {
    } catch (const std::bad_alloc&) {
    }
    return 0;
}
