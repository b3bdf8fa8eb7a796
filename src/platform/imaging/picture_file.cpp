#include "platform/imaging/picture_file.h"

#include "contracts/files.h"
#include "platform/imaging/foreign_picture.h"

#include <QBuffer>
#include <QFile>
#include <QImageReader>
#include <QSet>
#include <QtEndian>

#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {
/// Largest file that is read into memory.
constexpr qint64 LargestFile = qint64(256) * 1024 * 1024;
/// Formats whose data say little about the size that they may hold get no more than this, in pixels.
constexpr qint64 LargestUnprovenPicture = 64'000'000;
/// A progressive JPEG goes over all its pixels in every scan, however empty; a camera's takes ten or so.
constexpr qint64 LargestScanWork = 12 * picturefile::LargestPicture;

// Drawings (svg, pdf) stay out: their size is any that they claim, and their drawing takes as long as they like.
bool IsPictureFormat(const QByteArray& format)
{
    static const QSet<QByteArray> formats{"jpeg", "png", "bmp", "gif",  "tiff", "webp", "ppm",
                                          "pgm",  "pbm", "jp2", "wbmp", "ico",  "xbm",  "xpm"};
    return formats.contains(format);
}

struct JpegScans
{
    qsizetype bytes = 0; ///< Behind the header of the first scan; 0 when the file ends before it.
    int count = 0;
};

JpegScans ScansOf(const QByteArray& content)
{
    const auto* bytes = reinterpret_cast<const uchar*>(content.constData());
    const qsizetype size = content.size();
    JpegScans scans;
    qsizetype at = 2;
    while (at + 4 <= size) {
        if (bytes[at] != 0xFF) {
            const void* next = std::memchr(bytes + at, 0xFF, static_cast<size_t>(size - at));
            if (next == nullptr)
                break;
            at = static_cast<const uchar*>(next) - bytes;
            continue;
        }
        const uchar marker = bytes[at + 1];
        const bool standsAlone = marker <= 0x01 || (marker >= 0xD0 && marker <= 0xD8);
        if (marker == 0xFF) {
            ++at;
        } else if (standsAlone) {
            at += 2;
        } else {
            const qsizetype next = at + 2 + qFromBigEndian<quint16>(bytes + at + 2);
            if (marker == 0xDA && ++scans.count == 1)
                scans.bytes = qMax<qsizetype>(0, size - next);
            at = next;
        }
    }
    return scans;
}

/// What a file can hold at the very most, in pixels. Decoders reserve and fill memory for every pixel that a header
/// names, long before they see that the data are missing.
qint64 PixelsWithin(const QByteArray& format, const QByteArray& content)
{
    const qint64 bytes = content.size();
    if (format == "jpeg") {
        const JpegScans scans = ScansOf(content);
        // One bit at least for each block of 64 pixels.
        return qMin(512 * qint64(scans.bytes), LargestScanWork / qMax(1, scans.count));
    }
    if (format == "png")
        return 8 * 1032 * bytes; // Deflate gains a factor of 1032 at most, of one bit a pixel at least.
    if (format == "bmp")
        return qMin(LargestUnprovenPicture, 128 * qMax<qint64>(0, bytes - 26)); // Two bytes for a run of 255 pixels.
    if (format == "gif")
        return qMin(LargestUnprovenPicture, 4096 * bytes); // A code stands for a run of 4096 pixels at most.
    return LargestUnprovenPicture;
}

QSize FittedSize(QSize size, QSize room)
{
    if (size.width() <= room.width() && size.height() <= room.height())
        return size;
    return size.scaled(room, Qt::KeepAspectRatio).expandedTo({1, 1});
}

/// Size to ask the decoder for: the smallest that it reaches at full speed and that isn't below `fitted`. A scale of
/// three eighths costs more than one half, so only whole divisors count.
QSize DecodingSize(QSize size, QSize fitted)
{
    for (const int divisor : {8, 4, 2}) {
        // Rounded down: one pixel more, and the decoder takes the next larger scale.
        const QSize reduced(size.width() / divisor, size.height() / divisor);
        if (reduced.width() >= fitted.width() && reduced.height() >= fitted.height())
            return reduced;
    }
    return size;
}

QImage Upright(const QByteArray& content, QSize room)
{
    QBuffer buffer;
    buffer.setData(content);
    buffer.open(QIODevice::ReadOnly);
    QImageReader reader(&buffer);
    reader.setDecideFormatFromContent(true);
    reader.setAutoTransform(true);

    const QByteArray format = reader.format();
    const QSize size = reader.size();
    if (!IsPictureFormat(format) || size.isEmpty())
        return {};
    const qint64 pixels = qint64(size.width()) * size.height();
    if (pixels > picturefile::LargestPicture || pixels > PixelsWithin(format, content))
        return {};

    if (room.isValid() && format == "jpeg") {
        const bool turned = reader.transformation() & QImageIOHandler::TransformationRotate90;
        const QSize fitted = FittedSize(size, turned ? room.transposed() : room);
        const QSize decoded = DecodingSize(size, fitted);
        if (decoded != size)
            reader.setScaledSize(decoded);
    }
    QImage picture = reader.read();
    if (picture.isNull())
        return {};
    if (room.isValid()) {
        const QSize fitted = FittedSize(picture.size(), room);
        if (fitted != picture.size())
            picture = picture.scaled(fitted, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    }
    picture.setDevicePixelRatio(1);
    return picture;
}
/// Opens a regular file to be read. A pipe would keep the opener waiting for its other end. `links` is 0, or O_NOFOLLOW
/// for a file of the archive.
bool OpenRegular(QFile& file, const QString& path, int links)
{
    const int handle = open(QFile::encodeName(NativePath(path)).constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | links);
    if (handle < 0)
        return false;
    struct stat facts = {};
    if (fstat(handle, &facts) != 0 || !S_ISREG(facts.st_mode) || facts.st_size > LargestFile ||
        !file.open(handle, QIODevice::ReadOnly, QFileDevice::AutoCloseHandle)) {
        close(handle);
        return false;
    }
    return true;
}

QImage ReadOpened(QFile& file, QSize room)
{
    {
        // A film or an archive under a picture's name isn't read through.
        QImageReader probe(&file);
        probe.setDecideFormatFromContent(true);
        if (!IsPictureFormat(probe.format()))
            return {};
    }
    file.seek(0);
    return picturefile::ReadContent(file.readAll(), room);
}

/// The form in which a screen shows it fastest.
void MakeShowable(QImage& picture)
{
    if (!picture.isNull())
        picture.convertTo(picture.hasAlphaChannel() ? QImage::Format_ARGB32_Premultiplied : QImage::Format_RGB32);
}
} // namespace

QImage picturefile::Read(const QString& path, QSize room)
{
    QFile file;
    if ((room.isValid() && room.isEmpty()) || !OpenRegular(file, path, O_NOFOLLOW))
        return {};
    return ReadOpened(file, room);
}

QImage picturefile::ReadForeign(const QString& path)
{
    QFile file;
    if (!OpenRegular(file, path, 0))
        return {};
    QImage picture = ReadOpened(file, {});
    if (picture.isNull())
        picture = foreignpicture::Read(file.handle(), file.size());
    MakeShowable(picture);
    return picture;
}

QImage picturefile::ReadContent(const QByteArray& content, QSize room)
{
    QImage picture = Upright(content, room);
    MakeShowable(picture);
    return picture;
}
