#include "platform/imaging/picture_file.h"

#include "contracts/files.h"

#include <QBuffer>
#include <QFile>
#include <QImageReader>
#include <QSet>
#include <QtEndian>

namespace {
// Drawings (svg, pdf) stay out: their size is any that they claim, and their drawing takes as long as they like.
bool IsPictureFormat(const QByteArray& format)
{
    static const QSet<QByteArray> formats{"jpeg", "png", "bmp", "gif", "tiff", "webp", "ppm", "pgm", "pbm", "jp2"};
    return formats.contains(format);
}

/// Bytes behind the header of the first scan; 0 when the file ends before it.
qsizetype JpegScanBytes(const QByteArray& content)
{
    const auto* bytes = reinterpret_cast<const uchar*>(content.constData());
    const qsizetype size = content.size();
    qsizetype at = 2;
    while (at + 4 <= size) {
        if (bytes[at] != 0xFF) {
            ++at;
            continue;
        }
        const uchar marker = bytes[at + 1];
        const bool standsAlone = marker == 0x01 || (marker >= 0xD0 && marker <= 0xD8);
        if (marker == 0xFF) {
            ++at;
        } else if (standsAlone) {
            at += 2;
        } else {
            const qsizetype next = at + 2 + qFromBigEndian<quint16>(bytes + at + 2);
            if (marker == 0xDA)
                return qMax<qsizetype>(0, size - next);
            at = next;
        }
    }
    return 0;
}

/// What a file of `bytes` picture data can hold at the very most, in pixels. A progressive JPEG reserves and fills
/// memory for every pixel that its header names, long before the decoder sees that the data are missing.
qint64 PixelsWithin(const QByteArray& format, const QByteArray& content)
{
    if (format == "jpeg")
        return 512 * JpegScanBytes(content); // One bit at least for each block of 64 pixels.
    if (format == "bmp")
        return 128 * qMax<qsizetype>(0, content.size() - 26); // Two bytes at least for a run of 255 pixels.
    return std::numeric_limits<qint64>::max();
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
    if (pixels > qint64(picturefile::LimitMegabytes) * 1024 * 1024 / 4 || pixels > PixelsWithin(format, content))
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
} // namespace

QImage picturefile::Read(const QString& path, QSize room)
{
    if (room.isValid() && room.isEmpty())
        return {};
    QFile file(NativePath(path));
    if (!file.open(QIODevice::ReadOnly) || file.isSequential())
        return {};
    if (file.size() > qint64(LimitMegabytes) * 1024 * 1024)
        return {};
    {
        // A film or an archive under a picture's name isn't read through.
        QImageReader probe(&file);
        probe.setDecideFormatFromContent(true);
        if (!IsPictureFormat(probe.format()))
            return {};
    }
    file.seek(0);
    const QByteArray content = file.readAll();
    file.close();
    return ReadContent(content, room);
}

QImage picturefile::ReadContent(const QByteArray& content, QSize room)
{
    QImage picture = Upright(content, room);
    // The form in which a screen shows it fastest.
    if (!picture.isNull())
        picture.convertTo(picture.hasAlphaChannel() ? QImage::Format_ARGB32_Premultiplied : QImage::Format_RGB32);
    return picture;
}
