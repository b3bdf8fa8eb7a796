#pragma once

#include <QByteArray>
#include <QString>

/// How the content of a file looks without being decoded.
enum class Look {
    Whole,
    Broken,
    Unknown, ///< A format that only its reader can judge.
};

/// JPEG and bmp; a JPEG counts as whole when its segments lead to the picture's data and these have their end.
Look LookAtPicture(const QByteArray& content);
/// True for an AVI file that has been completed: an index stands behind its pictures. Reads a few small pieces. Throws
/// PlatformError.
bool HasMovieIndex(const QString& path);
