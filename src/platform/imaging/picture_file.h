#pragma once

#include <QImage>
#include <QSize>
#include <QString>

/// Reading one picture file. Safe to call from any thread.
namespace picturefile {
/// Largest picture that is decoded, at four bytes a pixel: 64 million pixels, more than any camera of a clinic gives.
inline constexpr int LimitMegabytes = 256;

/// The picture at `path`, a path of the station, turned upright by its orientation tag. With a valid `room` it is
/// scaled to fit in there, its shape kept, never enlarged. A JPEG that was cut shows as far as it reaches. Null when
/// nothing of it can be read, or when its header promises more than the limit or than the file can hold.
QImage Read(const QString& path, QSize room = {});
/// The same for the content of a file.
QImage ReadContent(const QByteArray& content, QSize room);
} // namespace picturefile
