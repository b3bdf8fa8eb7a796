#pragma once

#include <QImage>

/// Picture files in formats that Qt doesn't read, through a process of its own.
namespace foreignpicture {
/// Reads the regular file behind an open descriptor from its start. Null when it can't be read. Takes two seconds at
/// most for a file of the usual size, some more for a larger one; the process's memory is limited.
QImage Read(int descriptor, qint64 fileBytes);
} // namespace foreignpicture
