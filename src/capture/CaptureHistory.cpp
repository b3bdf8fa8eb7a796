#include "capture/CaptureHistory.h"

#include "capture/VisitGrid.h"
#include "capture/VisitNote.h"
#include "contracts/fpSpread.h"
#include "contracts/PlatformError.h"
#include "editor/frmImgEdit.h"
#include "filing/originals.h"
#include "frame/later.h"
#include "frame/services.h"
#include "records/acts.h"
#include "records/capture_index.h"
#include "screenparts/fill_routines.h"
#include "screenparts/picture_grid.h"
#include "screenparts/VisitPictures.h"
#include "session/VisitContext.h"
#include "text/text_routines.h"
#include "visit/Visit.h"

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

CaptureHistory::CaptureHistory(const Controls& controls, VisitNote& note, VisitGrid& grid)
    : m_controls(controls), m_note(note), m_grid(grid)
{
}

VisitPictures& CaptureHistory::PicturesOf(int gridNumber) const
{
    return gridNumber == 1 ? m_controls.visitPictures : m_controls.historyPictures;
}

void CaptureHistory::LayOutGrids()
{
    LayOutPictureGrid(m_controls.visitPictures.Grid(), {13.33, 13.37, 13.37, 13.37, 13.37}, 20, 53.5, 53.2);
    LayOutPictureGrid(m_controls.historyPictures.Grid(), {1.75, 15.9, 1.87, 15.87, 1.87, 15.87}, 50, 62.0, 62.3);
    for (const int column : {1, 3, 5})
        m_controls.historyPictures.Grid().setStoredCellType(column, 1, CellTypeCheckBox);

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
    m_controls.visitPictures.Clear();
    m_controls.historyPictures.Clear();
    m_controls.visits.ClearRange(1, 1, 2, m_controls.visits.DataRowCnt(), false);
}

void CaptureHistory::EndFills()
{
    ++m_lineShown;
    m_controls.visitPictures.Grid().BeginFill();
    m_controls.historyPictures.Grid().BeginFill();
}

void CaptureHistory::ShowVisit()
{
    const later::Hold hold(later::Fill);
    m_note.AwaitVisit();
    const QString section = VisitContext.Etc;
    auto failed = qScopeGuard([this] { m_note.FailVisit(); });
    m_grid.ShowPictures(CurrentVisit(), false);
    failed.dismiss();
    // A section chosen meanwhile has its own fill, and its own note.
    if (section == VisitContext.Etc)
        m_note.LoadForVisit();
}

void CaptureHistory::ShowAgain()
{
    try {
        if (m_note.Typed(CurrentVisit()))
            m_grid.ShowPictures(CurrentVisit(), true);
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
    m_controls.visitPictures.Grid().SetActiveCell(1, 1);
    m_controls.visitPictures.Grid().setFocus();
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
    m_controls.lblHisYmd.clear();
    m_controls.lblHisEtc.clear();
    // Whatever line is still coming in, its labels are gone.
    const int line = ++m_lineShown;
    m_controls.historyPictures.Grid().BeginFill();
    const QString ymd = CellText(m_controls.visits, 1, row);
    if (ymd.isEmpty())
        return;
    const Visit visit = VisitOf(VisitContext.Chart, VisitContext.Yuhyung, ymd, CellText(m_controls.visits, 2, row));
    m_controls.lblHisYmd.setText(LayIntoMask(visit.ymd, u"0000-00-00"));
    m_controls.lblHisEtc.setText(visit.etc);
    acts::Record(acts::Kind::HistoryOpened, visit);

    const later::Hold hold(later::Fill);
    // The pictures of another line may not stand there while this one's are awaited.
    m_controls.historyPictures.Show(visit);
    LoadCaptureList(visit, m_controls.historyPictures, false);
    if (line == m_lineShown)
        m_note.ShowHistoryNote(visit);
}

void CaptureHistory::EditHistoryPicture(int column, int row)
{
    VisitPictures& pictures = m_controls.historyPictures;
    const VisitPictures::Picture* picture = pictures.At(column, row);
    if (picture == nullptr)
        return;
    const Visit visit = *pictures.Shown();
    const int number = picture->number;
    acts::Record(acts::Kind::LookedAt, visit, number);
    OriginalKeeper original(visit, number);
    const auto saved = [&](const PictureSum& sum, const QByteArray& version) {
        original.NoteWritten();
        Q_EMIT PictureIsReplaced(visit, number, sum, version);
    };
    if (!OpenPictureEditor(
            pictures.FileAt(column, row), [&original] { original.Keep(); }, saved))
        return;
    acts::Record(acts::Kind::MarkedUp, visit, number);
    Q_EMIT PictureIsMarked(visit, number);
    ++m_lineShown;
    RefillHistory(visit);
}

void CaptureHistory::RefillHistory(const Visit& visit)
{
    if (m_controls.historyPictures.Shown() != visit)
        return;
    const later::Hold hold(later::Fill);
    LoadCaptureList(visit, m_controls.historyPictures, true);
}
