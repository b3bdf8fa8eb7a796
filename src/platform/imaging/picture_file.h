#pragma once

#include <QImage>
#include <QSize>
#include <QString>

/// Reading one picture file. Safe to call from any thread.
namespace picturefile {
/// Largest picture that is decoded: more than any camera gives.
inline constexpr qint64 LargestPicture = 200'000'000;
/// The same for the decoder, at four bytes a pixel.
inline constexpr int LimitMegabytes = LargestPicture * 4 / (1024 * 1024) + 1;

/// The picture at `path`, a path of the station, turned upright by its orientation tag. With a valid `room` it is
/// scaled to fit in there, its shape kept, never enlarged. A JPEG that was cut shows as far as it reaches. Null when
/// nothing of it can be read, or when its header promises more than the limit or than the file can hold.
QImage Read(const QString& path, QSize room = {});
/// The same for the content of a file.
QImage ReadContent(const QByteArray& content, QSize room);
/// A file of any origin at full size, also in the formats that take another process to read. Null when it can't be
/// read.
QImage ReadForeign(const QString& path);
} // namespace picturefile
