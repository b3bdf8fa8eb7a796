#include "viewing/CaptureSheet.h"

#include "contracts/desktop.h"
#include "contracts/ImagXpress.h"
#include "contracts/pictures.h"
#include "contracts/StatusPanels.h"
#include "frame/components.h"
#include "frame/services.h"
#include "records/acts.h"
#include "screenparts/fill_routines.h"
#include "screenparts/frmPrintView.h"
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

/// Draws the sheets of a record; pictures of the next one are decoded meanwhile, but no further ahead, so that a long
/// visit takes no more memory.
class SheetDrawing
{
public:
    SheetDrawing(const CaptureSheetRecord& sheet, ImagXpress& carrier) : m_sheet(sheet), m_carrier(carrier) {}

    int Count() const { return static_cast<int>((m_sheet.Pictures.size() + PicturesOnPage - 1) / PicturesOnPage); }
    void Draw(int number)
    {
        m_page.Head(HeadOf(m_sheet), number, Count());
        m_page.Font(12);
        m_page.Text({13, 14, 2, 12}, u"Findings"_s);
        const std::unique_ptr<PictureBatch> pictures =
            m_aheadNumber == number ? std::move(m_ahead) : Load(PathsOf(number));
        DrawPictures(PathsOf(number), *pictures);
        m_aheadNumber = number + 1;
        m_ahead = Load(PathsOf(m_aheadNumber));
        m_page.Rule(77);
    }

private:
    QStringList PathsOf(int number) const
    {
        return m_sheet.Pictures.mid((number - 1) * PicturesOnPage, PicturesOnPage);
    }
    static std::unique_ptr<PictureBatch> Load(const QStringList& paths)
    {
        return Pictures().LoadAllToPrint(paths, PrintedPage::PrintedPixels({0, RoomRows, 0, RoomColumns}));
    }
    void DrawPictures(const QStringList& paths, PictureBatch& pictures)
    {
        for (int place = 0; place < paths.size(); ++place) {
            const int row = FirstBandRow + place / 2 * BandRows;
            const int column = place % 2 == 0 ? LeftColumn : RightColumn;
            const PrintedPlace at = {row, row + RoomRows, column, column + RoomColumns};
            m_carrier.setPicture(LoadPicture(QString()));
            m_carrier.setPicture(pictures.Take(place));
            if (m_carrier.Picture().isNull())
                m_page.FrameWithName(at, paths[place].section(u'\\', -1));
            else
                m_page.Picture(at, m_carrier);
        }
    }

    const CaptureSheetRecord& m_sheet;
    ImagXpress& m_carrier;
    const PrintedPage m_page;
    std::unique_ptr<PictureBatch> m_ahead;
    int m_aheadNumber = 0;
};

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

PrintedPages PagesOf(const CaptureSheetRecord& sheet, ImagXpress& carrier)
{
    const auto drawing = std::make_shared<SheetDrawing>(sheet, carrier);
    return {drawing->Count(), [drawing](int number) { drawing->Draw(number); }};
}

void PrintCaptureSheet(const PrintedPages& pages)
{
    for (int number = 1; number <= pages.count; ++number) {
        pages.draw(number);
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
    const PrintedPages pages = PagesOf(sheet, carrier);
    if (ClientSetup.PrintPreview && !Form<frmPrintView>().Agrees(pages))
        return;
    const BusyPointer busy;
    PrintCaptureSheet(pages);
    QStringList numbers;
    for (const auto& [number, path] : chosen)
        numbers << QString::number(number);
    acts::Record(acts::Kind::Printed, sheet.Of, 0, numbers.join(u", "_s));
}
