#pragma once

#include <QImage>

/// The JPEG decoder and encoder: what it needs before it decodes, and whether the data were all there.
namespace jpegfile {

struct Layout
{
    QSize size;           ///< Empty when the decoder can't read the file.
    qint64 scanBytes = 0; ///< Behind the header of the first scan; 0 when the file ends before it.
    int scans = 0;
    /// What the decoder keeps until the last scan, in bytes, whatever scale it gives; 0 for a file of one scan.
    qint64 keptBytes = 0;
};

Layout LayoutOf(const QByteArray& content);

struct Decoded
{
    QImage picture;   ///< Of 32 bits, as the camera held it; null when nothing of it can be read.
    bool cut = false; ///< The data end before the picture does; what is missing is grey.
};

/// In eighths, as the decoder's scales are.
constexpr int FullScale = 8;
/// At 1, 2, 4 and 8 eighths the decoder has its full speed.
Decoded Decode(const QByteArray& content, int eighths);

/// A JPEG file whose colours have the full resolution. The picture must be of Format_RGB32. Empty when it can't be
/// written.
QByteArray Encode(const QImage& picture, int quality);

} // namespace jpegfile
