#pragma once

#include <QByteArray>
#include <QString>

/// The Korean code page of the clinic's older programs and of the settings file.
namespace windows949 {
/// Bytes that are no text of the code page come out as U+FFFD.
QString Decoded(const QByteArray& bytes);
/// A character that the code page doesn't have becomes "?". At most `limit` bytes, and never half a character; a
/// negative limit means all.
QByteArray Encoded(const QString& text, qsizetype limit = -1);
} // namespace windows949
