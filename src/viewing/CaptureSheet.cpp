#include "viewing/CaptureSheet.h"

#include "contracts/components.h"
#include "contracts/desktop.h"
#include "contracts/ImagXpress.h"
#include "contracts/pictures.h"
#include "contracts/printing.h"
#include "contracts/StatusPanels.h"
#include "launch/context/VisitContext.h"
#include "records/patient_lookup.h"
#include "records/text/date_routines.h"
#include "records/text/text_routines.h"

using namespace Qt::StringLiterals;

namespace {

constexpr float PageHeightTwips = 16243;
constexpr float PageWidthTwips = 11184;
constexpr int PicturesOnPage = 6;
constexpr int FirstBandRow = 15;
constexpr int BandRows = 21;
constexpr int PictureRows = 20;
constexpr int PictureColumns = 32;
constexpr int LeftColumn = 2;
constexpr int RightColumn = 36;
/// The plain horizontal rule.
constexpr int Rule = 4;

class SheetPage
{
public:
    SheetPage(clsPageCanvas& canvas, const PrintGrid& grid) : m_canvas(canvas), m_grid(grid) {}

    void Font(int points, bool underlined) const
    {
        Printer().setFontName(u"돋움"_s);
        Printer().setFontSize(points);
        Printer().setFontBold(true);
        Printer().setFontUnderline(underlined);
    }

    void Text(int row, int row2, int column, int column2, const QString& text, const QString& alignment = u"L"_s) const
    {
        m_canvas.myCelText(m_grid, text, row, row2, column, column2, Printer(), alignment);
    }

    void Line(int column, int row, int column2, int row2) const
    {
        m_canvas.myDrawBox(m_grid, Rule, column, row, column2, row2, Printer());
    }

    void Picture(int row, int column, const ImagXpress& carrier) const
    {
        m_canvas.myDrawPic(m_grid, row, row + PictureRows, column, column + PictureColumns, Printer(), carrier);
    }

    /// In the place of a picture that can't be read.
    void MissingPicture(int row, int column, const QString& path) const
    {
        const int bottom = row + PictureRows;
        const int right = column + PictureColumns;
        Line(column, row, right, row);
        Line(column, bottom, right, bottom);
        Line(column, row, column, bottom);
        Line(right, row, right, bottom);
        Font(11, false);
        Text(row + PictureRows / 2, row + PictureRows / 2 + 1, column, right, path.section(u'\\', -1), u"C"_s);
    }

private:
    clsPageCanvas& m_canvas;
    const PrintGrid& m_grid;
};

void PrintHeader(const SheetPage& page, const CaptureSheetRecord& sheet, int pageNumber)
{
    page.Font(20, true);
    page.Text(3, 5, 2, 69, sheet.Etc + u"  F i n d i n g s"_s, u"C"_s);
    page.Font(11, false);
    page.Text(6, 7, 2, 10, u"출력일자 : "_s);
    page.Text(6, 7, 10, 30, LayIntoMask(sheet.PrintYmd, u"0000년 00월 00일"));
    page.Text(6, 7, 54, 63, u"페이지번호 : "_s);
    page.Text(6, 7, 63, 66, QString::number(pageNumber), u"R"_s);
    page.Line(2, 8, 69, 8);
    page.Text(9, 10, 2, 10, u"차트번호 : "_s);
    page.Text(9, 10, 10, 20, sheet.Chart + u'-' + sheet.Yuhyung);
    page.Text(9, 10, 21, 29, u"수진자명 : "_s);
    page.Text(9, 10, 29, 41, sheet.Suname);
    page.Text(9, 10, 42, 50, u"성    별 : "_s);
    page.Text(9, 10, 50, 53, sheet.Sex);
    page.Text(9, 10, 54, 62, u"나    이 : "_s);
    page.Text(9, 10, 62, 70, sheet.Nai);
    page.Text(10, 11, 2, 10, u"전화번호 : "_s);
    page.Text(10, 11, 10, 20, sheet.Phone);
    page.Text(10, 11, 21, 29, u"주민번호 : "_s);
    page.Text(10, 11, 29, 40, sheet.Jumin);
    page.Text(11, 12, 2, 10, u"검사일자 : "_s);
    page.Text(11, 12, 10, 20, LayIntoMask(sheet.Ymd, u"0000/00/00"));
    page.Text(11, 12, 21, 29, u"주      소 : "_s);
    page.Text(11, 12, 29, 69, sheet.Address);
    page.Line(2, 13, 69, 13);
    page.Font(12, false);
    page.Text(13, 14, 2, 12, u"Findings"_s);
}

void PrintPictures(const SheetPage& page, const QStringList& paths, PictureBatch& pictures, ImagXpress& carrier)
{
    for (int place = 0; place < paths.size(); ++place) {
        const int row = FirstBandRow + place / 2 * BandRows;
        const int column = place % 2 == 0 ? LeftColumn : RightColumn;
        carrier.setPicture(LoadPicture(QString()));
        carrier.setPicture(pictures.Take(place));
        if (carrier.Picture().isNull())
            page.MissingPicture(row, column, paths[place]);
        else
            page.Picture(row, column, carrier);
    }
}

} // namespace

void ClearCaptureSheetRecord(CaptureSheetRecord& sheet)
{
    sheet = {};
    sheet.Chart = u"0"_s;
}

void FillCaptureSheetRecord(CaptureSheetRecord& sheet, const StatusPanels& patient)
{
    sheet.Chart = VisitContext.Chart;
    sheet.Yuhyung = VisitContext.Yuhyung;
    sheet.Jinchal = VisitContext.Jinchal;
    sheet.Etc = VisitContext.Etc;
    sheet.Ymd = VisitContext.Ymd;
    sheet.Suname = patient.Text(PanelSuname);
    sheet.Sex = patient.Text(PanelSex);
    sheet.Nai = patient.Text(PanelAge);
    sheet.Jumin = patient.Text(PanelJumin);
    sheet.Phone = patient.Text(PanelTel);
    sheet.Address = patient.Text(PanelAddress);
    sheet.PrintYmd = TextFromDate(UseService<Desktop>().Today());
}

void PrintCaptureSheet(const CaptureSheetRecord& sheet, ImagXpress& carrier)
{
    Printer().setHeight(PageHeightTwips);
    Printer().setWidth(PageWidthTwips);
    const PrintGrid grid(PageWidthTwips, PageHeightTwips);
    const auto canvas = CreateObject<clsPageCanvas>(u"prjPageCanvas.clsPageCanvas"_s);
    const SheetPage page(*canvas, grid);
    const qsizetype pages = (sheet.Pictures.size() + PicturesOnPage - 1) / PicturesOnPage;
    const auto pathsOf = [&sheet](int number) {
        return sheet.Pictures.mid((number - 1) * PicturesOnPage, PicturesOnPage);
    };
    std::unique_ptr<PictureBatch> pictures = Pictures().LoadAll(pathsOf(1), QSize());
    for (int number = 1; number <= pages; ++number) {
        PrintHeader(page, sheet, number);
        PrintPictures(page, pathsOf(number), *pictures, carrier);
        // Decoded while this page is written; no further ahead, so that a long visit takes no more memory.
        pictures = Pictures().LoadAll(pathsOf(number + 1), QSize());
        page.Line(2, 77, 69, 77);
        Printer().EndDoc();
    }
}
