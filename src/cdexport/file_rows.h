#pragma once

#include "contracts/files.h"

class fpSpread;

/// A size in kilobytes, rounded to the nearest whole number, a half to the even one.
QString KilobytesText(qint64 bytes);

/// A size as operators read it: "12.3 MB", "702 MB".
QString MegabytesText(qint64 bytes);

/// Writes a file or folder into the first four columns of a row: name, size, type, time of change. A folder shows no
/// size.
void WriteFileRow(fpSpread& list, int row, const FolderEntry& entry);

/// Headings and widths of the columns that `WriteFileRow` fills.
void LayOutFileList(fpSpread& list, const QStringList& furtherHeadings = {});
