#pragma once

class fpSpread;
struct Visit;

/// Opens the editor on the picture of a cell, and returns when it is closed; `VisitContext.ImageSaved` then tells
/// whether it has written the file. Nothing happens for a cell without a number under it, or without a file.
void OpenPictureEditor(const Visit& visit, fpSpread& grid, int column, int row);
