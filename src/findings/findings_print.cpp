#include "findings/findings_print.h"

#include "contracts/desktop.h"
#include "findings/findings_record.h"
#include "frame/services.h"
#include "screenparts/PrintedPage.h"

#include <QProgressDialog>

using namespace Qt::StringLiterals;

namespace {

constexpr int FindingsLinesPerPage = 25;
constexpr int RemarkLinesPerPage = 4;
constexpr int RoomRows = 12;
constexpr int RoomColumns = 20;
/// From here on printing takes long enough to want a way out.
constexpr int PagesWithProgress = 5;

PrintedHead HeadOf(const FindingsRecordFields& record)
{
    return {.title = record.Etc + u" 소 견 서"_s,
            .printYmd = record.Balymd,
            .chart = record.Chart + u'-' + record.Yuhyung,
            .suname = record.Suname,
            .sex = record.Sex,
            .age = record.Nai,
            .phone = record.Phone,
            .jumin = record.Jumin,
            .lastLabel = u"연  번  호 : "_s,
            .lastValue = record.Yeonno,
            .address = record.Address};
}

void PrintLines(const PrintedPage& page, const QStringList& lines, int number, int perPage, int firstRow)
{
    for (int line = 1; line <= perPage; ++line) {
        const qsizetype index = (number - 1) * perPage + line;
        if (index >= lines.size())
            break;
        const int row = firstRow + line - 1;
        page.BlockLine({row, row + 1, 2, 69}, lines.at(index));
    }
}

void PrintPictures(const PrintedPage& page, const FindingsRecordFields& record,
                   const std::array<ImagXpress*, 6>& pictures)
{
    page.Text({49, 50, 14, 22}, u"캡쳐일자 : "_s);
    page.Text({49, 50, 22, 40}, record.Ymd);
    for (size_t slot = 0; slot < pictures.size(); ++slot) {
        const int row = slot < 3 ? 51 : 64;
        const int column = 4 + static_cast<int>(slot % 3) * 22;
        page.Picture({row, row + RoomRows, column, column + RoomColumns}, *pictures[slot]);
    }
}

void PrintFooter(const PrintedPage& page, const FindingsRecordFields& record)
{
    page.Rule(76);
    page.Font(11);
    page.Text({77, 78, 2, 12}, u"담당의사 : "_s);
    page.Text({77, 78, 12, 24}, record.Doctor);
    page.Text({77, 78, 35, 45}, u"면허번호 : "_s);
    page.Text({77, 78, 45, 57}, record.Myonheo);
    page.Text({78, 79, 2, 12}, u"요양기호 : "_s);
    page.Text({78, 79, 12, 24}, record.Yoyangno);
    page.Text({78, 79, 35, 45}, u"병원명칭 : "_s);
    page.Text({78, 79, 45, 69}, record.Hospital);
}

void DrawFindingsPage(const PrintedPage& page, const FindingsRecordFields& record, int number, int count,
                      const std::array<ImagXpress*, 6>& pictures)
{
    page.Head(HeadOf(record), number, count);
    page.Font(12);
    page.BlockLine({14, 15, 2, 12}, u"소 견 내 용"_s);
    page.Rule(15, 12);
    page.Font(11);
    PrintLines(page, record.SogyonLines, number, FindingsLinesPerPage, 16);
    page.Rule(41);
    page.Font(12);
    page.BlockLine({42, 43, 2, 12}, u"비      고"_s);
    page.Rule(43, 12);
    page.Font(11);
    PrintLines(page, record.BigoLines, number, RemarkLinesPerPage, 44);
    page.Rule(48);
    page.Font(12);
    page.Text({49, 50, 2, 12}, u"Findings"_s);
    if (number == 1)
        PrintPictures(page, record, pictures);
    PrintFooter(page, record);
}

int PagesFor(const QStringList& lines, int perPage)
{
    const int count = static_cast<int>(lines.size()) - 1;
    return qMax(1, (count + perPage - 1) / perPage);
}

} // namespace

QSize PrintedPictureSize()
{
    return PrintedPage::PrintedPixels({0, RoomRows, 0, RoomColumns});
}

PrintedPages PagesOf(const FindingsRecordFields& record, const std::array<ImagXpress*, 6>& pictures)
{
    const int count =
        qMax(PagesFor(record.SogyonLines, FindingsLinesPerPage), PagesFor(record.BigoLines, RemarkLinesPerPage));
    return {count, [page = std::make_shared<PrintedPage>(), &record, &pictures, count](int number) {
                DrawFindingsPage(*page, record, number, count, pictures);
            }};
}

void PrintFindingsPages(const PrintedPages& pages, QWidget& owner)
{
    QProgressDialog progress(u"소견서를 출력하는 중입니다..."_s, u"취소"_s, 0, pages.count, &owner);
    progress.setObjectName(u"printProgress"_s);
    progress.setWindowTitle(QString::fromUtf16(StationTitle));
    progress.setWindowModality(Qt::ApplicationModal);
    progress.setMinimumDuration(0);
    progress.reset();
    for (int number = 1; number <= pages.count; ++number) {
        if (pages.count >= PagesWithProgress) {
            progress.setValue(number - 1);
            PumpEvents();
            if (progress.wasCanceled())
                return;
        }
        pages.draw(number);
        Printer().EndDoc();
    }
}
