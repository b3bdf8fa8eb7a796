#pragma once

#include "platform/imaging/picture_limits.h"

#include <QImage>
#include <QImageIOHandler>
#include <QSize>

#include <optional>

class QIODevice;

/// Decoding the content of one picture file in a format that Qt knows: the same in the station and in the reader's
/// process. Safe to call from any thread.
namespace picturecontent {

enum class Fit {
    Full,    ///< As large as it is; a JPEG beyond the largest picture at half or a quarter.
    Within,  ///< To fit into the room, never enlarged.
    AtLeast, ///< At the smallest cheap scale at which it still fills the room, so less than twice as large.
};

struct Wish
{
    Fit fit = Fit::Full;
    QSize room; ///< Of the upright picture.
};

struct Header
{
    QByteArray format;
    QSize size; ///< As the file holds it, before it is turned upright.
    QImageIOHandler::Transformations turn;
    int pixelBytes = 4; ///< Memory that a decoded pixel takes.

    bool IsJpeg() const { return format == "jpeg"; }
    qint64 Pixels() const { return qint64(size.width()) * size.height(); }
    qint64 Limit() const { return IsJpeg() ? picturelimits::LargestJpeg : picturelimits::LargestPicture; }
    bool IsTooLarge() const { return Pixels() > Limit(); }
    /// It is shown smaller than it is.
    bool IsReduced() const { return IsJpeg() && Pixels() > picturelimits::LargestPicture; }
};

/// Reads no further than the header; nothing for what is no picture.
std::optional<Header> HeaderOf(QIODevice& file);

/// Whether decoding would take more memory, or far more time, than the station gives it (a JPEG's own raster doesn't
/// count), or the file is one from outside that was filed as it is.
bool NeedsReader(const Header& header, const QByteArray& content);

struct Decoded
{
    QImage picture;   ///< Upright, in a form that a screen shows fast; null when it can't be read.
    bool cut = false; ///< The file's data end early: the picture shows what there is.
};

/// Null, too, when the header promises more than the limit or than the content can hold.
Decoded Decode(const Header& header, const QByteArray& content, const Wish& wish);

/// The form in which a screen shows it fastest.
void MakeShowable(QImage& picture);

} // namespace picturecontent
