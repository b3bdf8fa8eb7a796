#pragma once

#include "contracts/fpSpread.h"

#include <QString>

class NoteBox;

/// What the rows of `cap` and `ca` say, brought onto the screens. The first five arguments are everywhere chart, type,
/// date, year folder and section; the type plays no part. A failing statement is a PlatformError.

/// Fills the grid with the pictures of a visit, serving events between them. Rows whose file is missing take no place;
/// a file that is no picture shows a mark. With `keepCursor` the grid stays where it is, otherwise its active cell
/// follows the pictures. A later fill of the same grid ends this one. Gives the number of the last row read.
int LoadCaptureList(const QString& chart, const QString& yuhyung, const QString& ymd, const QString& captureDir,
                    const QString& etc, fpSpread& grid, int gridNumber, bool keepCursor);

/// The largest picture number of the visit, 0 when it has none.
int NextCaptureNo(const QString& chart, const QString& yuhyung, const QString& ymd, const QString& captureDir,
                  const QString& etc);

enum class NumberOrder { Any, Ascending };
/// The numbers of the visit's pictures, as their rows say.
QList<int> StoredNumbers(const QString& chart, const QString& ymd, const QString& etc, NumberOrder order);

/// The stored note of the visit as text, trimmed; null without a row.
QString StoredNote(const QString& chart, const QString& ymd, const QString& etc);

/// Brings the visit's note into the box. The box is empty, and knows that it holds no note, until it has been read.
void LoadCaptureNote(const QString& chart, const QString& yuhyung, const QString& ymd, const QString& captureDir,
                     const QString& etc, NoteBox& box);

/// Empties the picture grid of the history and fills the list of the chart's visits, newest first, all sections.
void LoadVisitHistory(const QString& chart, const QString& yuhyung, const QString& ymd, const QString& captureDir,
                      const QString& etc, const QString& kind);
