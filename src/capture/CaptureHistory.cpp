#include "capture/CaptureHistory.h"

#include "capture/VisitNote.h"
#include "contracts/fpSpread.h"
#include "contracts/PlatformError.h"
#include "editor/frmImgEdit.h"
#include "frame/services.h"
#include "records/capture_index.h"
#include "screenparts/fill_routines.h"
#include "screenparts/picture_grid.h"
#include "text/text_routines.h"
#include "visit/Visit.h"
#include "visit/VisitContext.h"

#include <QLabel>
#include <QScopeGuard>

#include <utility>

using namespace Qt::StringLiterals;

namespace {

void LayOutPictureGrid(fpSpread& grid, const QList<double>& columnWidths, int rows, double firstRowHeight,
                       double pictureRowHeight)
{
    grid.setHeadingsVisible(false, false);
    grid.setMaxCols(static_cast<int>(columnWidths.size()));
    grid.setMaxRows(rows);
    for (int column = 1; column <= columnWidths.size(); ++column) {
        grid.setColWidth(column, columnWidths[column - 1]);
        grid.setStoredCellType(column, 0, CellTypeStaticText);
    }
    grid.setDefaultRowHeight(13.3);
    for (int row = 1; row <= rows; row += 2)
        grid.setRowHeight(row, row == 1 ? firstRowHeight : pictureRowHeight);
}

} // namespace

CaptureHistory::CaptureHistory(const Controls& controls, VisitNote& note, StillCapture& stills)
    : m_controls(controls), m_note(note), m_stills(stills)
{
}

fpSpread& CaptureHistory::Grid(int gridNumber)
{
    return gridNumber == 1 ? m_controls.visitPictures : m_controls.historyPictures;
}

void CaptureHistory::LayOutGrids()
{
    LayOutPictureGrid(m_controls.visitPictures, {13.33, 13.37, 13.37, 13.37, 13.37}, 20, 53.5, 53.2);
    LayOutPictureGrid(m_controls.historyPictures, {1.75, 15.9, 1.87, 15.87, 1.87, 15.87}, 50, 62.0, 62.3);
    for (const int column : {1, 3, 5})
        m_controls.historyPictures.setStoredCellType(column, 1, CellTypeCheckBox);

    fpSpread& visits = m_controls.visits;
    visits.setMaxCols(3);
    visits.setMaxRows(2000);
    visits.setHeadings({u"캡쳐일자"_s, u"캡쳐종류"_s, u"참고사항"_s});
    visits.setHeadingsVisible(true, true);
    visits.setColWidth(1, 8.88);
    visits.setColWidth(2, 17.37);
    visits.setColWidth(3, 44.85);
    visits.setDefaultRowHeight(11.9);
}

void CaptureHistory::Clear()
{
    EndFills();
    m_stills.ForgetShown();
    ClearPictureGrid(m_controls.visitPictures, 1);
    ClearPictureGrid(m_controls.historyPictures, 2);
    m_controls.visits.ClearRange(1, 1, 2, m_controls.visits.DataRowCnt(), false);
}

void CaptureHistory::EndFills()
{
    ++m_lineShown;
    m_controls.visitPictures.BeginFill();
    m_controls.historyPictures.BeginFill();
}

void CaptureHistory::ShowVisit()
{
    const FillLine::Hold hold(m_stills.Line());
    m_note.AwaitVisit();
    const QString section = VisitContext.Etc;
    auto failed = qScopeGuard([this] { m_note.FailVisit(); });
    m_stills.ShowPictures(CurrentVisit(), false);
    failed.dismiss();
    // A section chosen meanwhile has its own fill, and its own note.
    if (section == VisitContext.Etc)
        m_note.LoadForVisit();
}

void CaptureHistory::ShowAgain()
{
    try {
        if (m_note.Typed(CurrentVisit()))
            m_stills.ShowPictures(CurrentVisit(), true);
        else
            ShowVisit();
        ShowVisits();
    } catch (const Away&) {
        // Once more: that has been told, and it is asked again.
    }
}

void CaptureHistory::ShowSection()
{
    ShowVisit();
    m_controls.visitPictures.SetActiveCell(1, 1);
    m_controls.visitPictures.setFocus();
}

void CaptureHistory::ShowVisits()
{
    ++m_lineShown;
    LoadVisitHistory(CurrentVisit(), u"A"_s);
}

void CaptureHistory::ShowHistoryLine(int row)
{
    if (Trim(VisitContext.Chart).isEmpty())
        return;
    const std::optional<Visit> before = std::exchange(m_chosen, std::nullopt);
    m_controls.lblHisYmd.clear();
    m_controls.lblHisEtc.clear();
    // Whatever line is still coming in, its labels are gone.
    const int line = ++m_lineShown;
    m_controls.historyPictures.BeginFill();
    const QString ymd = CellText(m_controls.visits, 1, row);
    if (ymd.isEmpty())
        return;
    const Visit visit = VisitOf(VisitContext.Chart, VisitContext.Yuhyung, ymd, CellText(m_controls.visits, 2, row));
    m_chosen = visit;
    m_controls.lblHisYmd.setText(LayIntoMask(visit.ymd, u"0000-00-00"));
    m_controls.lblHisEtc.setText(visit.etc);

    const FillLine::Hold hold(m_stills.Line());
    // The pictures of another line may not stand there while this one's are awaited.
    if (before != visit)
        ClearPictureGrid(m_controls.historyPictures, 2);
    LoadCaptureList(visit, m_controls.historyPictures, 2, false);
    if (line == m_lineShown)
        m_note.ShowHistoryNote(visit);
}

void CaptureHistory::EditHistoryPicture(int column, int row)
{
    const bool pictureCell = row % 2 == 1 && PictureColumns(2).contains(column);
    if (!m_chosen || !pictureCell)
        return;
    const Visit visit = *m_chosen;
    const QString number = NumberUnder(2, column, row);
    OpenPictureEditor(visit, Grid(2), column, row);
    if (!VisitContext.ImageSaved)
        return;
    if (IsNumericText(number))
        Q_EMIT PictureIsMarked(visit, WholeNumber(number));
    ++m_lineShown;
    FillPictures(visit, 2, true);
}

bool CaptureHistory::IsFilledPicture(int gridNumber, int column, int row)
{
    const bool pictureCell = row % 2 == 1 && PictureColumns(gridNumber).contains(column);
    if (!pictureCell)
        return false;
    return !NumberUnder(gridNumber, column, row).isEmpty();
}

QString CaptureHistory::NumberUnder(int gridNumber, int column, int row)
{
    return CellText(Grid(gridNumber), column, row + 1);
}

ShownPicture CaptureHistory::PictureAt(int gridNumber, int column, int row)
{
    const QString text = NumberUnder(gridNumber, column, row);
    if (gridNumber == 1 && text == AwaitedNumber)
        return {m_stills.WithoutNumberAt({column, row}), 0};
    return {QString(), IsNumericText(text) ? WholeNumber(text) : 0};
}

std::optional<QPoint> CaptureHistory::PlaceOf(int gridNumber, const ShownPicture& picture)
{
    return gridNumber == 1 ? m_stills.PlaceOf(picture) : FindPicture(Grid(2), 2, picture.number);
}

QString CaptureHistory::FileBehind(int gridNumber, int column, int row)
{
    const std::optional<Visit> visit = ShownVisit(gridNumber);
    return visit ? PictureFileBehind(Grid(gridNumber), column, row, *visit) : QString();
}

std::optional<Visit> CaptureHistory::ShownVisit(int gridNumber) const
{
    return gridNumber == 1 ? CurrentVisit() : m_chosen;
}

void CaptureHistory::FillPictures(const Visit& visit, int gridNumber, bool keepCursor)
{
    if (gridNumber == 1) {
        m_stills.ShowPictures(visit, keepCursor);
        return;
    }
    const FillLine::Hold hold(m_stills.Line());
    LoadCaptureList(visit, m_controls.historyPictures, gridNumber, keepCursor);
}
