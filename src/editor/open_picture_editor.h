#pragma once

#include <QString>

class fpSpread;

/// Opens the editor on the picture of a cell, and returns when it is closed; `VisitContext.ImageSaved` then tells
/// whether it has written the file. Nothing happens for a cell without a number under it, or without a file.
void OpenPictureEditor(const QString& chart, const QString& yuhyung, const QString& ymd, const QString& captureDir,
                       const QString& etc, fpSpread& grid, int column, int row);
