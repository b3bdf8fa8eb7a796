#pragma once

#include "contracts/printing.h"

#include <QSize>

#include <functional>
#include <memory>

class ImagXpress;

/// The head of a form: the patient as he is known on it.
struct PrintedHead
{
    QString title;
    QString printYmd;
    QString chart; ///< With the type behind a dash.
    QString suname;
    QString sex;
    QString age;
    QString phone;
    QString jumin;
    QString lastLabel; ///< What stands below the telephone is each form's own.
    QString lastValue;
    QString address;
};

/// A place on the page: rows and columns of the print grid.
struct PrintedPlace
{
    int row;
    int row2;
    int column;
    int column2;
};

/// What a command prints. The drawing keeps what it needs, but for what is told where it is made.
struct PrintedPages
{
    int count;
    /// Puts the sheet of that number, from 1, on `Printer()`.
    std::function<void(int number)> draw;
};

/// One A4 form of the station on `Printer()`: 11184 by 16243 twips, all text bold.
class PrintedPage
{
public:
    /// Sets the printer's page.
    PrintedPage();
    /// What was drawn since the last `EndDoc` never comes onto the next page.
    ~PrintedPage();
    PrintedPage(const PrintedPage&) = delete;
    PrintedPage& operator=(const PrintedPage&) = delete;

    /// Points.
    void Font(int size, bool underlined = false) const;
    void Text(const PrintedPlace& at, const QString& text, const QString& alignment = QStringLiteral("L")) const;
    /// A line of a block, or a heading, that has a rule below: a little higher than `Text` puts it, so that the letters
    /// that hang lowest keep off that.
    void BlockLine(const PrintedPlace& at, const QString& text) const;
    /// A horizontal rule from column 2 on.
    void Rule(int row, int lastColumn = 69) const;
    void Line(int column, int row, int column2, int row2) const;
    /// One whose file was cut short shows what there is, in a frame with its file's name.
    void Picture(const PrintedPlace& at, const ImagXpress& picture) const;
    /// In the place of a picture that can't be read.
    void FrameWithName(const PrintedPlace& at, const QString& fileName) const;
    /// Size of a place at the resolution that a printed picture needs.
    static QSize PrintedPixels(const PrintedPlace& place);

    /// Title, date, page number and patient, between two rules; leaves the font at 11 points. Of several pages their
    /// count stands behind the number.
    void Head(const PrintedHead& head, int pageNumber, int pageCount) const;

private:
    void FrameWithName(const PrintedPlace& at, const QString& fileName, int row) const;

    PrintGrid m_grid;
    PrintGrid m_raisedGrid;
    std::unique_ptr<clsPageCanvas> m_canvas;
};
