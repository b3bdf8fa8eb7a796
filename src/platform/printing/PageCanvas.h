#pragma once

#include "contracts/printing.h"

/// Draws on the station's own printer, the only one that it takes.
class PageCanvas final : public clsPageCanvas
{
public:
    void myCelText(const PrintGrid& grid, const QString& text, int row, int row2, int column, int column2,
                   PrinterObject& printer, const QString& alignment) override;
    void myDrawBox(const PrintGrid& grid, int kind, int column, int row, int column2, int row2,
                   PrinterObject& printer) override;
    void myDrawPic(const PrintGrid& grid, int row, int row2, int column, int column2, PrinterObject& printer,
                   const ImagXpress& picture) override;
};
