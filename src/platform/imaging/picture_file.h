#pragma once

#include "platform/imaging/picture_content.h"

#include <QString>

/// Reading one picture file. Safe to call from any thread.
namespace picturefile {

using picturecontent::Fit;
using picturecontent::Wish;

struct Result
{
    QImage picture = {};     ///< Null when there is a fault.
    bool cut = false;        ///< The file's data end early; a picture from a file is marked with its name, too.
    QString fault = {};      ///< Why there is no picture, for the operator.
    QSize size = {};         ///< That the file names, where the picture is a JPEG shown at a lower scale; else empty.
    QByteArray content = {}; ///< Of that file, if it may be one from anywhere.
};

/// The picture at `path`, a path of the station, turned upright by its orientation tag, in a format that Qt knows. A
/// JPEG that was cut shows as far as it reaches.
Result Read(const QString& path, const Wish& wish = {});
/// The same for the content of a file.
Result ReadContent(const QByteArray& content, const Wish& wish);
/// A file from outside at full size, also in the formats that Qt doesn't know; all of it is read in the reader's
/// process.
Result ReadForeign(const QString& path);

/// The fault of a file that is no picture, or a broken one.
QString UnreadableText();

} // namespace picturefile
