#include "platform/imaging/picture_content.h"

#include "platform/imaging/jpeg_file.h"

#include <QBuffer>
#include <QImageReader>
#include <QPixelFormat>
#include <QSet>
#include <QTransform>

using picturecontent::Fit;
using picturecontent::Header;
using picturecontent::Wish;

namespace {
/// A JPEG of several scans is gone over in each of them, however empty: pixels that the station has the time for.
constexpr qint64 LargestScanWork = 200'000'000;
/// The mark of the start and the beginning of the next one.
const QByteArray JpegMark = QByteArrayLiteral("\xFF\xD8\xFF");

// Drawings (svg, pdf) stay out: their size is any that they claim, and their drawing takes as long as they like.
bool IsPictureFormat(const QByteArray& format)
{
    static const QSet<QByteArray> formats{"jpeg", "png", "bmp", "gif",  "tiff", "webp", "ppm",
                                          "pgm",  "pbm", "jp2", "wbmp", "ico",  "xbm",  "xpm"};
    return formats.contains(format);
}

int PixelBytes(const QByteArray& format, QImage::Format decoded)
{
    // Where the decoder doesn't say, it may hold a second picture besides the one that it gives.
    static const QSet<QByteArray> plain{"png", "bmp", "ppm", "pgm", "pbm"};
    const int own = decoded == QImage::Format_Invalid ? 4 : (QImage::toPixelFormat(decoded).bitsPerPixel() + 7) / 8;
    return qMax(4, own) * (plain.contains(format) ? 1 : 2);
}

/// What a file can hold at the very most, in pixels. Decoders reserve and fill memory for every pixel that a header
/// names, long before they see that the data are missing.
qint64 PixelsWithin(const Header& header, const QByteArray& content)
{
    const qint64 bytes = content.size();
    if (header.IsJpeg())
        return 512 * jpegfile::LayoutOf(content).scanBytes; // One bit at least for each block of 64 pixels.
    if (header.format == "png")
        return 8 * 1032 * bytes; // Deflate gains a factor of 1032 at most, of one bit a pixel at least.
    if (header.format == "bmp")
        return 128 * qMax<qint64>(0, bytes - 26); // Two bytes for a run of 255 pixels.
    if (header.format == "gif")
        return 4096 * bytes; // A code stands for a run of 4096 pixels at most.
    return header.Limit();
}

QSize FittedSize(QSize size, QSize room)
{
    if (size.width() <= room.width() && size.height() <= room.height())
        return size;
    return size.scaled(room, Qt::KeepAspectRatio).expandedTo({1, 1});
}

/// Size to which a wish leads; `room` is turned as the file is.
QSize LeastSize(const Header& header, const Wish& wish)
{
    if (wish.fit == Fit::Full)
        return header.size;
    const bool turned = header.turn.testFlag(QImageIOHandler::TransformationRotate90);
    return FittedSize(header.size, turned ? wish.room.transposed() : wish.room);
}

/// The smallest scale of the decoder that doesn't fall below `least`, in eighths. Others than whole divisors take
/// longer than the full picture does: three eighths are never worth it, five are where an encoder comes behind.
int EighthsFor(const Header& header, QSize least, Fit fit)
{
    int largest = jpegfile::FullScale;
    if (header.IsReduced())
        largest = header.Pixels() / 4 * header.pixelBytes <= picturelimits::LargestInStation ? 4 : 2;
    for (const int each : {1, 2, 4, 5}) {
        // Rounded down, as the last pixel of the rounded-up size is only partly there.
        const QSize scaled(header.size.width() * each / jpegfile::FullScale,
                           header.size.height() * each / jpegfile::FullScale);
        if ((each < 5 || fit == Fit::AtLeast) && scaled.width() >= least.width() && scaled.height() >= least.height())
            return qMin(largest, each);
    }
    return largest;
}

QImage DecodeOther(const QByteArray& content)
{
    QBuffer buffer;
    buffer.setData(content);
    buffer.open(QIODevice::ReadOnly);
    QImageReader reader(&buffer);
    reader.setDecideFormatFromContent(true);
    reader.setAutoTransform(false);
    return reader.read();
}

QImage Scaled(const QImage& picture, QSize least, Fit fit)
{
    QSize size = least;
    if (fit == Fit::AtLeast) {
        const int divisor = qMax(1, qMin(picture.width() / least.width(), picture.height() / least.height()));
        size = picture.size() / divisor;
    }
    if (fit == Fit::Full || (size.width() >= picture.width() && size.height() >= picture.height()))
        return picture;
    return picture.scaled(size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
}

void TurnUpright(QImage& picture, QImageIOHandler::Transformations turn)
{
    const bool mirror = turn.testFlag(QImageIOHandler::TransformationMirror);
    const bool flip = turn.testFlag(QImageIOHandler::TransformationFlip);
    if (mirror || flip)
        picture = std::move(picture).mirrored(mirror, flip);
    if (turn.testFlag(QImageIOHandler::TransformationRotate90))
        picture = picture.transformed(QTransform().rotate(90));
}

} // namespace

std::optional<Header> picturecontent::HeaderOf(QIODevice& file)
{
    QImageReader reader(&file);
    // Asked by content, the toolkit loads the readers of all formats, one after the other, before that of this one.
    if (file.peek(JpegMark.size()) == JpegMark) {
        reader.setFormat("jpeg");
        reader.setAutoDetectImageFormat(false);
    } else {
        reader.setDecideFormatFromContent(true);
    }
    Header header;
    header.format = reader.format();
    if (!IsPictureFormat(header.format))
        return {};
    header.size = reader.size();
    header.turn = reader.transformation();
    header.pixelBytes = header.IsJpeg() ? 4 : PixelBytes(header.format, reader.imageFormat());
    return header.size.isEmpty() ? std::nullopt : std::optional(header);
}

bool picturecontent::NeedsReader(const Header& header, const QByteArray& content)
{
    if (!header.IsJpeg())
        return content.size() + header.Pixels() * header.pixelBytes > picturelimits::LargestInStation;
    // No camera of the station makes one: it came from outside and was filed as it is.
    if (header.IsReduced())
        return true;
    const jpegfile::Layout layout = jpegfile::LayoutOf(content);
    return layout.keptBytes > 0 &&
           (layout.keptBytes > picturelimits::LargestInStation || header.Pixels() * layout.scans > LargestScanWork);
}

picturecontent::Decoded picturecontent::Decode(const Header& header, const QByteArray& content, const Wish& wish)
{
    if (header.IsTooLarge() || header.Pixels() > PixelsWithin(header, content))
        return {};
    const QSize least = LeastSize(header, wish);
    Decoded decoded;
    if (header.IsJpeg()) {
        const jpegfile::Decoded jpeg = jpegfile::Decode(content, EighthsFor(header, least, wish.fit));
        decoded = {jpeg.picture, jpeg.cut};
    } else {
        decoded.picture = DecodeOther(content);
    }
    if (decoded.picture.isNull())
        return {};
    // In its own place, before it is scaled: scaling would take a copy for it.
    MakeShowable(decoded.picture);
    if (wish.fit == Fit::Within || !header.IsJpeg())
        decoded.picture = Scaled(decoded.picture, least, wish.fit);
    TurnUpright(decoded.picture, header.turn);
    decoded.picture.setDevicePixelRatio(1);
    return decoded;
}

void picturecontent::MakeShowable(QImage& picture)
{
    if (!picture.isNull())
        picture.convertTo(picture.hasAlphaChannel() ? QImage::Format_ARGB32_Premultiplied : QImage::Format_RGB32);
}
