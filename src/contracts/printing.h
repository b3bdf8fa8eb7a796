#pragma once

#include <QByteArray>
#include <QImage>
#include <QString>

#include <array>
#include <functional>

class ImagXpress;

/// The platform's `Printer` object: page, font and job. The calls between two `EndDoc` land on one sheet, which is a
/// print job of its own; nothing opens a page, the first drawing after an `EndDoc` begins the next one. A font setting
/// holds until it is set again.
class PrinterObject
{
public:
    virtual ~PrinterObject() = default;

    /// Twips.
    virtual void setHeight(float twips) = 0;
    virtual void setWidth(float twips) = 0;
    virtual void setFontName(const QString& name) = 0;
    /// Points.
    virtual void setFontSize(int points) = 0;
    virtual void setFontBold(bool on) = 0;
    virtual void setFontUnderline(bool on) = 0;
    /// The sheet as `EndDoc` would send it now, so many pixels wide; what was drawn stays.
    virtual QImage Picture(int width) const = 0;
    /// Sends the sheet. Where it becomes a file, throws PlatformError when it can't, and the sheet is gone. A printer
    /// isn't waited for: what becomes of the sheet is told by `PrinterJobs`.
    virtual void EndDoc() = 0;
    /// Ends the sheet without sending it: it becomes the next page of a document.
    virtual void KeepSheet() = 0;
    /// The document of the sheets that were kept, which are let go of: makes a PDF file's content of them, on any
    /// thread. Throws PlatformError.
    virtual std::function<QByteArray()> TakeDocument() = 0;
    /// Drops what was drawn since the last `EndDoc`.
    virtual void KillDoc() = 0;
};

/// Where printed pages go: decided by the clinic's setup and by the printer dialog.
class PrinterOptions
{
public:
    virtual ~PrinterOptions() = default;
    /// Pages become numbered PDF files in that folder unless a file was chosen; empty: the printer.
    virtual void UseFolder(const QString& folder) = 0;
    /// The printer that the operator has chosen, in place of a file; empty: the system's default.
    virtual void UsePrinter(const QString& name) = 0;
    /// The PDF file that the operator has chosen, and may be replaced. The next page goes there, each further one
    /// beside it under the next number that is free: x.pdf, x-2.pdf, x-3.pdf.
    virtual void UseFile(const QString& path) = 0;
};

/// What becomes of the sheets that went to a printer. One that doesn't take them is tried again every few seconds, and
/// whichever the operator chooses meanwhile; sheets that it has taken are followed until they are through.
class PrinterJobs
{
public:
    virtual ~PrinterJobs() = default;

    /// Is told on the screen's thread what stands in the way of a sheet, in a sentence for the operator, and an empty
    /// text when nothing does any more; the same again from time to time.
    virtual void setPresenter(std::function<void(const QString& trouble)> present) = 0;
    /// The operator has read it: it comes back only with another trouble, or with a further sheet. Sheets that no
    /// printer has taken are given up.
    virtual void Dismiss() = 0;
    /// Before the program ends: waits until each sheet has been offered to its printer once, no longer than that.
    virtual void End(int patienceMs) = 0;
};

/// Print positions in twips: columns X(0) to X(70) and rows Y(0) to Y(80) of the page.
struct PrintGrid
{
    static constexpr int Columns = 70;
    static constexpr int Rows = 80;
    std::array<float, Columns + 1> X = {};
    std::array<float, Rows + 1> Y = {};

    PrintGrid(float widthTwips, float heightTwips)
    {
        for (int column = 0; column <= Columns; ++column)
            X[static_cast<size_t>(column)] = widthTwips / Columns * static_cast<float>(column);
        for (int row = 0; row <= Rows; ++row)
            Y[static_cast<size_t>(row)] = heightTwips / Rows * static_cast<float>(row);
    }
};

/// `prjPageCanvas.clsPageCanvas`: puts texts, rules and pictures on the page by grid position. Row and column numbers
/// are indices into the grid.
class clsPageCanvas
{
public:
    virtual ~clsPageCanvas() = default;

    /// Text in a cell, aligned by "L", "R" or "C", in the font set on the printer. One too wide for its cell is
    /// narrowed evenly; one that would have to be thinner than a third, which nobody can read, is cut with "…". It is
    /// never clipped in height, only made smaller where it would touch the next row, and sits centred on its rows.
    virtual void myCelText(const PrintGrid& grid, const QString& text, int row, int row2, int column, int column2,
                           PrinterObject& printer, const QString& alignment) = 0;
    /// Kind 4: a hairline rule between the two points. Column comes before row here.
    virtual void myDrawBox(const PrintGrid& grid, int kind, int column, int row, int column2, int row2,
                           PrinterObject& printer) = 0;
    /// The control's picture, its shape kept, centred in the box, at the resolution that it has. An empty control
    /// prints nothing.
    virtual void myDrawPic(const PrintGrid& grid, int row, int row2, int column, int column2, PrinterObject& printer,
                           const ImagXpress& picture) = 0;
};
