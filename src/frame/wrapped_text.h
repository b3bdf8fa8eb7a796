#pragma once

#include <QFont>
#include <QRectF>
#include <QStringList>

/// A text in lines that fit into a room.
struct WrappedText
{
    QFont font; ///< Of the text, smaller where it would be too high otherwise.
    QStringList lines;
    QSizeF size;
};

/// The text, whose font is in pixels: one line as long as it fits, broken between words, or anywhere in a word that
/// is too long, where it is broader than the room. No smaller than can be painted at all.
WrappedText WrapInto(const QString& text, const QFont& font, QSizeF room);

/// Left upper corner of the box, moved as far as it takes to lie inside of the room; one that is too large lies at the
/// room's own.
QPointF MovedIn(const QRectF& box, const QRectF& room);
