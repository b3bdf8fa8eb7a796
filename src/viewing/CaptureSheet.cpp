#include "viewing/CaptureSheet.h"

#include "contracts/desktop.h"
#include "contracts/ImagXpress.h"
#include "contracts/pictures.h"
#include "contracts/StatusPanels.h"
#include "frame/components.h"
#include "frame/services.h"
#include "records/acts.h"
#include "screenparts/fill_routines.h"
#include "screenparts/PrintedPage.h"
#include "screenparts/VisitPictures.h"
#include "session/VisitContext.h"
#include "text/date_routines.h"
#include "text/text_routines.h"
#include "visit/Visit.h"

using namespace Qt::StringLiterals;

namespace {

constexpr int PicturesOnPage = 6;
constexpr int FirstBandRow = 15;
constexpr int BandRows = 21;
constexpr int RoomRows = 20;
constexpr int RoomColumns = 32;
constexpr int LeftColumn = 2;
constexpr int RightColumn = 36;

PrintedHead HeadOf(const CaptureSheetRecord& sheet)
{
    return {.title = sheet.Of.etc + u"  F i n d i n g s"_s,
            .printYmd = sheet.PrintYmd,
            .chart = sheet.Of.chart + u'-' + sheet.Of.yuhyung,
            .suname = sheet.Suname,
            .sex = sheet.Sex,
            .age = sheet.Nai,
            .phone = sheet.Phone,
            .jumin = sheet.Jumin,
            .lastLabel = u"검사일자 : "_s,
            .lastValue = LayIntoMask(sheet.Of.ymd, u"0000/00/00"),
            .address = sheet.Address};
}

void PrintPictures(const PrintedPage& page, const QStringList& paths, PictureBatch& pictures, ImagXpress& carrier)
{
    for (int place = 0; place < paths.size(); ++place) {
        const int row = FirstBandRow + place / 2 * BandRows;
        const int column = place % 2 == 0 ? LeftColumn : RightColumn;
        const PrintedPlace at = {row, row + RoomRows, column, column + RoomColumns};
        carrier.setPicture(LoadPicture(QString()));
        carrier.setPicture(pictures.Take(place));
        if (carrier.Picture().isNull())
            page.FrameWithName(at, paths[place].section(u'\\', -1));
        else
            page.Picture(at, carrier);
    }
}

} // namespace

void ClearCaptureSheetRecord(CaptureSheetRecord& sheet)
{
    sheet = {};
    sheet.Of.chart = u"0"_s;
}

void FillCaptureSheetRecord(CaptureSheetRecord& sheet, const Visit& visit, const StatusPanels& patient)
{
    sheet.Of = visit;
    sheet.Jinchal = VisitContext.Jinchal;
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
    const PrintedPage page;
    const qsizetype pages = (sheet.Pictures.size() + PicturesOnPage - 1) / PicturesOnPage;
    const auto pathsOf = [&sheet](int number) {
        return sheet.Pictures.mid((number - 1) * PicturesOnPage, PicturesOnPage);
    };
    const QSize room = PrintedPage::PrintedPixels({0, RoomRows, 0, RoomColumns});
    std::unique_ptr<PictureBatch> pictures = Pictures().LoadAllToPrint(pathsOf(1), room);
    for (int number = 1; number <= pages; ++number) {
        page.Head(HeadOf(sheet), number);
        page.Font(12);
        page.Text({13, 14, 2, 12}, u"Findings"_s);
        PrintPictures(page, pathsOf(number), *pictures, carrier);
        // Decoded while this page is written; no further ahead, so that a long visit takes no more memory.
        pictures = Pictures().LoadAllToPrint(pathsOf(number + 1), room);
        page.Rule(77);
        Printer().EndDoc();
    }
}

void PrintGridSheet(const VisitPictures& pictures, const StatusPanels& patient, ImagXpress& carrier)
{
    const QList<std::pair<int, QString>> chosen = pictures.Chosen();
    if (chosen.isEmpty())
        return;
    CaptureSheetRecord sheet;
    ClearCaptureSheetRecord(sheet);
    FillCaptureSheetRecord(sheet, *pictures.Shown(), patient);
    for (const auto& [number, path] : chosen)
        sheet.Pictures.append(path);
    const BusyPointer busy;
    PrintCaptureSheet(sheet, carrier);
    QStringList numbers;
    for (const auto& [number, path] : chosen)
        numbers << QString::number(number);
    acts::Record(acts::Kind::Printed, sheet.Of, 0, numbers.join(u", "_s));
}
