#include "screenparts/PrintedPage.h"

#include "contracts/ImagXpress.h"
#include "contracts/pictures.h"
#include "frame/components.h"
#include "frame/plain_text.h"
#include "frame/services.h"
#include "text/text_routines.h"

using namespace Qt::StringLiterals;

namespace {
constexpr float PageWidthTwips = 11184;
constexpr float PageHeightTwips = 16243;
constexpr int PlainRule = 4;
constexpr float RaisedTwips = 50; // A Latin letter hangs 24 below its row.
constexpr int TwipsPerInch = 1440;
constexpr int PictureDotsPerInch = 300;
} // namespace

PrintedPage::PrintedPage()
    : m_grid(PageWidthTwips, PageHeightTwips), m_raisedGrid(m_grid),
      m_canvas(CreateObject<clsPageCanvas>(u"prjPageCanvas.clsPageCanvas"_s))
{
    for (float& row : m_raisedGrid.Y)
        row -= RaisedTwips;
    Printer().setHeight(PageHeightTwips);
    Printer().setWidth(PageWidthTwips);
}

PrintedPage::~PrintedPage()
{
    Printer().KillDoc();
}

void PrintedPage::Font(int size, bool underlined) const
{
    Printer().setFontName(u"돋움"_s);
    Printer().setFontSize(size);
    Printer().setFontBold(true);
    Printer().setFontUnderline(underlined);
}

void PrintedPage::Text(const PrintedPlace& at, const QString& text, const QString& alignment) const
{
    m_canvas->myCelText(m_grid, ComposedText(text), at.row, at.row2, at.column, at.column2, Printer(), alignment);
}

void PrintedPage::BlockLine(const PrintedPlace& at, const QString& text) const
{
    m_canvas->myCelText(m_raisedGrid, ComposedText(text), at.row, at.row2, at.column, at.column2, Printer(), u"L"_s);
}

void PrintedPage::Rule(int row, int lastColumn) const
{
    Line(2, row, lastColumn, row);
}

void PrintedPage::Line(int column, int row, int column2, int row2) const
{
    m_canvas->myDrawBox(m_grid, PlainRule, column, row, column2, row2, Printer());
}

void PrintedPage::Picture(const PrintedPlace& at, const ImagXpress& picture) const
{
    const QString cutFile = CutFileName(picture.Picture());
    // A name across a picture can't be read: it stands below.
    const int lastRow = cutFile.isEmpty() ? at.row2 : at.row2 - 1;
    m_canvas->myDrawPic(m_grid, at.row, lastRow, at.column, at.column2, Printer(), picture);
    if (!cutFile.isEmpty())
        FrameWithName(at, cutFile, lastRow);
}

void PrintedPage::FrameWithName(const PrintedPlace& at, const QString& fileName) const
{
    FrameWithName(at, fileName, (at.row + at.row2) / 2);
}

void PrintedPage::FrameWithName(const PrintedPlace& at, const QString& fileName, int row) const
{
    Line(at.column, at.row, at.column2, at.row);
    Line(at.column, at.row2, at.column2, at.row2);
    Line(at.column, at.row, at.column, at.row2);
    Line(at.column2, at.row, at.column2, at.row2);
    Font(11);
    Text({row, row + 1, at.column, at.column2}, fileName, u"C"_s);
}

QSize PrintedPage::PrintedPixels(const PrintedPlace& place)
{
    const PrintGrid grid(PageWidthTwips, PageHeightTwips);
    const auto pixels = [](float twips) { return qRound(twips * PictureDotsPerInch / TwipsPerInch); };
    const auto column = [&grid](int index) { return grid.X.at(static_cast<size_t>(index)); };
    const auto row = [&grid](int index) { return grid.Y.at(static_cast<size_t>(index)); };
    return {pixels(column(place.column2) - column(place.column)), pixels(row(place.row2) - row(place.row))};
}

void PrintedPage::Head(const PrintedHead& head, int pageNumber, int pageCount) const
{
    Font(20, true);
    Text({3, 5, 2, 69}, head.title, u"C"_s);
    Font(11);
    Text({6, 7, 2, 10}, u"출력일자 : "_s);
    Text({6, 7, 10, 30}, LayIntoMask(head.printYmd, u"0000년 00월 00일"));
    Text({6, 7, 54, 63}, u"페이지번호 : "_s);
    Text({6, 7, 63, 66}, QString::number(pageNumber), u"R"_s);
    if (pageCount > 1)
        Text({6, 7, 66, 69}, u" / "_s + QString::number(pageCount));
    Rule(8);
    Text({9, 10, 2, 10}, u"차트번호 : "_s);
    Text({9, 10, 10, 20}, head.chart);
    Text({9, 10, 21, 29}, u"수진자명 : "_s);
    Text({9, 10, 29, 41}, head.suname);
    Text({9, 10, 42, 50}, u"성    별 : "_s);
    Text({9, 10, 50, 53}, head.sex);
    Text({9, 10, 54, 62}, u"나    이 : "_s);
    Text({9, 10, 62, 70}, head.age);
    Text({10, 11, 2, 10}, u"전화번호 : "_s);
    Text({10, 11, 10, 20}, head.phone);
    Text({10, 11, 21, 29}, u"주민번호 : "_s);
    Text({10, 11, 29, 40}, head.jumin);
    Text({11, 12, 2, 10}, head.lastLabel);
    Text({11, 12, 10, 20}, head.lastValue);
    Text({11, 12, 21, 29}, u"주      소 : "_s);
    Text({11, 12, 29, 69}, head.address);
    Rule(13);
}
