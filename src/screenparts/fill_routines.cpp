#include "screenparts/fill_routines.h"

#include "contracts/fpSpread.h"
#include "contracts/pictures.h"
#include "contracts/PlatformError.h"
#include "contracts/StatusPanels.h"
#include "frame/services.h"
#include "records/capture_index.h"
#include "records/patient_lookup.h"
#include "records/visit_note.h"
#include "screenparts/NoteBox.h"
#include "screenparts/picture_grid.h"
#include "screenparts/VisitPictures.h"
#include "text/date_routines.h"
#include "text/text_routines.h"
#include "visit/Visit.h"

#include <QComboBox>
#include <QPointer>

using namespace Qt::StringLiterals;

namespace {
struct HistoryGrids
{
    QPointer<VisitPictures> pictures;
    QPointer<fpSpread> visits;
};

HistoryGrids& RegisteredHistoryGrids()
{
    static HistoryGrids grids;
    return grids;
}
} // namespace

int LoadCaptureList(const Visit& visit, VisitPictures& pictures, bool keepCursor,
                    const std::function<void(const QList<int>&)>& read, const std::function<void()>& filled)
{
    fpSpread& grid = pictures.Grid();
    const QPointer<fpSpread> there(&grid);
    const int fill = grid.BeginFill();
    // Asked first: a database that doesn't answer leaves the pictures as they were. A visit without a folder has none.
    const QList<int> numbers = visit.captureDir.isEmpty() ? QList<int>() : StoredNumbers(visit, NumberOrder::Ascending);
    if (!there || !there->IsCurrentFill(fill))
        return 0;
    pictures.BeginAnew(visit);
    if (read)
        read(numbers);
    QStringList paths;
    for (const int number : numbers)
        paths.append(visit.PicturePath(number));
    const QSize room = grid.CellPixels(PictureColumns(pictures.Layout()).first(), 1);
    const std::unique_ptr<PictureBatch> batch = Pictures().LoadAll(paths, room);

    const auto place = [&](int at, const QImage& picture) {
        const QPoint cell = pictures.Add({{{}, numbers[at]}, picture, {}});
        if (!keepCursor)
            grid.SetActiveCell(1, cell.y());
    };
    const int placed = PlacePictures(there, fill, *batch, paths, place, [&] {
        // What is empty shows its beginning.
        if (pictures.All().isEmpty())
            grid.SetActiveCell(1, 1);
        if (filled)
            filled();
    });
    return placed > 0 ? numbers[placed - 1] : 0;
}

void LoadCaptureNote(const Visit& visit, NoteBox& box)
{
    box.BeginLoading(visit);
    try {
        box.SetLoadedNote(RawNote(visit));
    } catch (const PlatformError&) {
        box.FailLoading();
        throw;
    }
}

void RegisterHistoryGrids(VisitPictures* pictures, fpSpread* visits)
{
    RegisteredHistoryGrids() = {pictures, visits};
}

void LoadVisitHistory(const Visit& visit, const QString& kind)
{
    const auto& [pictures, visits] = RegisteredHistoryGrids();
    if (!pictures || !visits)
        return;
    // Asked first: a database that doesn't answer leaves the screen as it was.
    const QList<VisitLine> lines = StoredVisits(visit.chart, kind);
    pictures->Clear();
    pictures->Grid().SetActiveCell(1, 1);
    visits->ClearRange(1, 1, 2, visits->DataRowCnt(), false);
    if (lines.size() > visits->MaxRows())
        visits->setMaxRows(static_cast<int>(lines.size()));
    for (int row = 1; row <= lines.size(); ++row)
        WriteVisitLine(*visits, row, lines[row - 1]);
}

void WriteVisitLine(fpSpread& list, int row, const VisitLine& line)
{
    list.setRow(row);
    int column = 0;
    for (const QString& text : {line.ymd, line.etc, line.note}) {
        list.setCol(++column);
        list.setText(text);
    }
}

void ShowPatientPanels(StatusPanels& bar, const Visit& visit)
{
    bar.setText(PanelChart, visit.chart);
    bar.setText(PanelYuhyung, visit.yuhyung);
    const QString verdict = LookupPatient(visit.chart, visit.yuhyung, PatientRecord, visit.ymd);
    bar.setText(PanelSuname, PatientRecord.Suname);
    bar.setRemark(PanelSuname, Trim(verdict.mid(2)));
    bar.setText(PanelSex, SexText(PatientRecord.Jumin));
    const QString years = AgeText(visit.ymd, PatientRecord.Jumin).left(3);
    bar.setText(PanelAge, IsNumericText(years) ? WholeNumberText(years) + u"세"_s : QString());
    bar.setText(PanelTel, PatientRecord.Tel);
    bar.setText(PanelJumin, LayIntoMask(PatientRecord.Jumin, u"000000-0000000"));
    bar.setText(PanelAddress, AddressText(PatientRecord));
}

void FillDayCombo(const QString& year, const QString& month, const QString& currentDay, QComboBox& list)
{
    const QString last = LastDayOfMonth(year, month);
    if (!IsNumericText(last))
        return;
    const int days = WholeNumber(last);
    list.clear();
    for (int day = 1; day <= days; ++day)
        list.addItem(LayIntoMask(QString::number(day), u"00"));
    const int current = WholeNumber(currentDay);
    list.setCurrentIndex(current >= 1 && current <= days ? current - 1 : 0);
}
