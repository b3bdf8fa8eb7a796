#include "findings/findings_print.h"

#include "contracts/components.h"
#include "contracts/desktop.h"
#include "contracts/printing.h"
#include "findings/findings_record.h"
#include "records/text/text_routines.h"

#include <QProgressDialog>

using namespace Qt::StringLiterals;

namespace {

constexpr float PageHeight = 16243; // Twips.
constexpr float PageWidth = 11184;
constexpr int FindingsLinesPerPage = 25;
constexpr int RemarkLinesPerPage = 4;
/// From here on printing takes long enough to want a way out.
constexpr int PagesWithProgress = 5;

struct Place
{
    int row;
    int row2;
    int column;
    int column2;
};

class Page
{
public:
    Page(clsPageCanvas& canvas, PrinterObject& printer, const PrintGrid& grid)
        : m_canvas(canvas), m_printer(printer), m_grid(grid)
    {
    }

    void Font(int size, bool underline) const
    {
        m_printer.setFontName(u"돋움"_s);
        m_printer.setFontSize(size);
        m_printer.setFontBold(true);
        m_printer.setFontUnderline(underline);
    }
    void Text(const Place& at, const QString& text, const QString& alignment = u"L"_s) const
    {
        m_canvas.myCelText(m_grid, text, at.row, at.row2, at.column, at.column2, m_printer, alignment);
    }
    void Rule(int row, int lastColumn = 69) const { m_canvas.myDrawBox(m_grid, 4, 2, row, lastColumn, row, m_printer); }
    void Picture(const Place& at, const ImagXpress& picture) const
    {
        m_canvas.myDrawPic(m_grid, at.row, at.row2, at.column, at.column2, m_printer, picture);
    }

private:
    clsPageCanvas& m_canvas;
    PrinterObject& m_printer;
    const PrintGrid& m_grid;
};

void PrintHeader(const Page& page, int number)
{
    const FindingsRecordFields& record = FindingsRecord;
    page.Font(20, true);
    page.Text({3, 5, 2, 69}, record.Etc + u" 소 견 서"_s, u"C"_s);
    page.Font(11, false);
    page.Text({6, 7, 2, 10}, u"출력일자 : "_s);
    page.Text({6, 7, 10, 30}, LayIntoMask(record.Balymd, u"0000년 00월 00일"));
    page.Text({6, 7, 54, 63}, u"페이지번호 : "_s);
    page.Text({6, 7, 63, 66}, QString::number(number), u"R"_s);
    page.Rule(8);
    page.Text({9, 10, 2, 10}, u"차트번호 : "_s);
    page.Text({9, 10, 10, 20}, record.Chart + u'-' + record.Yuhyung);
    page.Text({9, 10, 21, 29}, u"수진자명 : "_s);
    page.Text({9, 10, 29, 41}, record.Suname);
    page.Text({9, 10, 42, 50}, u"성    별 : "_s);
    page.Text({9, 10, 50, 53}, record.Sex);
    page.Text({9, 10, 54, 62}, u"나    이 : "_s);
    page.Text({9, 10, 62, 70}, record.Nai);
    page.Text({10, 11, 2, 10}, u"전화번호 : "_s);
    page.Text({10, 11, 10, 20}, record.Phone);
    page.Text({10, 11, 21, 29}, u"주민번호 : "_s);
    page.Text({10, 11, 29, 40}, record.Jumin);
    page.Text({11, 12, 2, 10}, u"연  번  호 : "_s);
    page.Text({11, 12, 10, 20}, record.Yeonno);
    page.Text({11, 12, 21, 29}, u"주      소 : "_s);
    page.Text({11, 12, 29, 69}, record.Address);
    page.Rule(13);
}

void PrintLines(const Page& page, const QStringList& lines, int number, int perPage, int firstRow)
{
    for (int line = 1; line <= perPage; ++line) {
        const qsizetype index = (number - 1) * perPage + line;
        if (index >= lines.size())
            break;
        const int row = firstRow + line - 1;
        page.Text({row, row + 1, 2, 69}, lines.at(index));
    }
}

void PrintPictures(const Page& page, const std::array<ImagXpress*, 6>& pictures)
{
    page.Text({49, 50, 14, 22}, u"캡쳐일자 : "_s);
    page.Text({49, 50, 22, 40}, FindingsRecord.Ymd);
    for (size_t slot = 0; slot < pictures.size(); ++slot) {
        const int row = slot < 3 ? 51 : 64;
        const int column = 4 + static_cast<int>(slot % 3) * 22;
        page.Picture({row, row + 12, column, column + 20}, *pictures[slot]);
    }
}

void PrintFooter(const Page& page)
{
    const FindingsRecordFields& record = FindingsRecord;
    page.Rule(76);
    page.Font(11, false);
    page.Text({77, 78, 2, 12}, u"담당의사 : "_s);
    page.Text({77, 78, 12, 24}, record.Doctor);
    page.Text({77, 78, 35, 45}, u"면허번호 : "_s);
    page.Text({77, 78, 45, 57}, record.Myonheo);
    page.Text({78, 79, 2, 12}, u"요양기호 : "_s);
    page.Text({78, 79, 12, 24}, record.Yoyangno);
    page.Text({78, 79, 35, 45}, u"병원명칭 : "_s);
    page.Text({78, 79, 45, 69}, record.Hospital);
}

void PrintFindingsPage(const Page& page, int number, const std::array<ImagXpress*, 6>& pictures)
{
    PrintHeader(page, number);
    page.Font(12, false);
    page.Text({14, 15, 2, 12}, u"소 견 내 용"_s);
    page.Rule(15, 12);
    page.Font(11, false);
    PrintLines(page, FindingsRecord.SogyonLines, number, FindingsLinesPerPage, 16);
    page.Rule(41);
    page.Font(12, false);
    page.Text({42, 43, 2, 12}, u"비      고"_s);
    page.Rule(43, 12);
    page.Font(11, false);
    PrintLines(page, FindingsRecord.BigoLines, number, RemarkLinesPerPage, 44);
    page.Rule(48);
    page.Font(12, false);
    page.Text({49, 50, 2, 12}, u"Findings"_s);
    if (number == 1)
        PrintPictures(page, pictures);
    PrintFooter(page);
}

int PagesFor(const QStringList& lines, int perPage)
{
    const int count = static_cast<int>(lines.size()) - 1;
    return qMax(1, (count + perPage - 1) / perPage);
}

} // namespace

void PrintFindingsPages(const std::array<ImagXpress*, 6>& pictures, QWidget& owner)
{
    const int pages = qMax(PagesFor(FindingsRecord.SogyonLines, FindingsLinesPerPage),
                           PagesFor(FindingsRecord.BigoLines, RemarkLinesPerPage));
    PrinterObject& printer = Printer();
    printer.setHeight(PageHeight);
    printer.setWidth(PageWidth);
    const PrintGrid grid(PageWidth, PageHeight);
    const auto canvas = CreateObject<clsPageCanvas>(u"prjPageCanvas.clsPageCanvas"_s);
    const Page page(*canvas, printer, grid);

    QProgressDialog progress(u"소견서를 출력하는 중입니다..."_s, u"취소"_s, 0, pages, &owner);
    progress.setObjectName(u"printProgress"_s);
    progress.setWindowTitle(QString::fromUtf16(StationTitle));
    progress.setWindowModality(Qt::ApplicationModal);
    progress.setMinimumDuration(0);
    progress.reset();
    for (int number = 1; number <= pages; ++number) {
        if (pages >= PagesWithProgress) {
            progress.setValue(number - 1);
            PumpEvents();
            if (progress.wasCanceled())
                return;
        }
        PrintFindingsPage(page, number, pictures);
        printer.EndDoc();
    }
}
