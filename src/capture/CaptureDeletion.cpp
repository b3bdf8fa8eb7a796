#include "capture/CaptureDeletion.h"

#include "capture/capture_rows.h"
#include "capture/capture_wastebasket.h"
#include "capture/CaptureHistory.h"
#include "capture/VisitNote.h"
#include "contracts/desktop.h"
#include "contracts/PlatformError.h"
#include "records/capture_index.h"
#include "records/picture_grid.h"
#include "records/Statement.h"
#include "records/text/text_routines.h"

#include <exception>

using namespace Qt::StringLiterals;

namespace {

Statement OfVisit(QStringView command, const QString& prefix, const CaptureVisit& visit)
{
    return Statement(command)
        .Quoted(u" WHERE "_s + prefix + u"_chart = '"_s, visit.chart)
        .Quoted(u" AND "_s + prefix + u"_ymd = '"_s, visit.ymd)
        .Quoted(u" AND "_s + prefix + u"_etc = '"_s, visit.etc)
        .Piece(u" AND "_s + prefix + u"_gubun = 'A' "_s);
}

QList<int> NumbersOf(const CaptureVisit& visit)
{
    return StoredNumbers(visit.chart, visit.ymd, visit.etc, NumberOrder::Any);
}

} // namespace

void CaptureDeletion::DeleteCurrentVisit()
{
    const CaptureVisit visit = CaptureVisit::Current();
    if (AskYesNo(LayIntoMask(visit.ymd, u"0000년 00월 00일") + u", "_s + visit.etc +
                 u" 캡쳐자료를 삭제하시겠습니까?"_s))
        DeleteVisitCaptures(visit);
}

void CaptureDeletion::DeletePictureAt(int gridNumber, int column, int row)
{
    const CaptureVisit visit = m_history.ShownVisit(gridNumber);
    const QString text = m_history.NumberUnder(gridNumber, column, row);
    if (!IsNumericText(text))
        return;
    if (!AskYesNo(u"해당 캡쳐자료가 지워집니다. 그래도 계속하시겠습니까?"_s))
        return;
    // A fill may have put another picture there while the question stood open.
    if (m_history.ShownVisit(gridNumber) == visit && m_history.NumberUnder(gridNumber, column, row) == text)
        DeleteOnePicture(visit, WholeNumber(text), gridNumber);
}

void CaptureDeletion::DeleteShownVisit(int gridNumber)
{
    const CaptureVisit visit = m_history.ShownVisit(gridNumber);
    if (AskYesNo(u"전체 캡쳐자료가 지워집니다. 그래도 계속하시겠습니까?"_s) &&
        m_history.ShownVisit(gridNumber) == visit)
        DeleteVisitCaptures(visit);
}

void CaptureDeletion::DeleteOnePicture(const CaptureVisit& visit, int number, int gridNumber)
{
    MoveToLogFolder(visit, number);
    const bool waited = m_stills.Pending().Holds(visit, number);
    if (waited)
        m_stills.Forget(visit, number);
    try {
        Execute(OfVisit(u" DELETE FROM cap ", u"cap"_s, visit).Then(u" AND cap_no = ", number).Piece(u" "));
        DeleteEmptyVisit(visit);
    } catch (const DatabaseAway&) {
        // It had no rows: away with it from the screen too, and nothing is left to say.
        if (!waited)
            throw;
        RemovePicture(m_history.VisitPictures(), number);
        return;
    }
    if (gridNumber == 1) {
        m_history.FillPictures(visit, 1, false);
        return;
    }
    m_history.FillPictures(visit, 2, true);
    if (Trim(visit.ymd) == Trim(CaptureVisit::Current().ymd))
        m_history.FillPictures(visit, 1, false);
}

void CaptureDeletion::DeleteEmptyVisit(const CaptureVisit& visit)
{
    if (!NumbersOf(visit).isEmpty() || !m_stills.Pending().NumbersOf(visit).isEmpty())
        return;
    Execute(OfVisit(u" DELETE FROM ca ", u"ca"_s, visit));
    m_note.RowIsGone(visit);
}

void CaptureDeletion::DeleteVisitCaptures(const CaptureVisit& visit)
{
    const BusyPointer busy;
    const QList<int> numbers = NumbersOf(visit);
    for (const int number : numbers + m_stills.Pending().NumbersOf(visit))
        CheckMovable(visit, number);
    for (const int number : numbers)
        MoveToLogFolder(visit, number);
    for (const int number : m_stills.Pending().NumbersOf(visit)) {
        MoveToLogFolder(visit, number);
        m_stills.Forget(visit, number);
    }
    Execute(OfVisit(u" DELETE FROM ca ", u"ca"_s, visit));
    Execute(OfVisit(u" DELETE FROM cap ", u"cap"_s, visit));
    // Another date's deletion says nothing of today's visit, whose pictures are still there.
    std::exception_ptr markFault;
    try {
        if (visit.ymd == CaptureVisit::Current().ymd)
            MarkVisitCaptured(CaptureVisit::Current(), u"0"_s);
    } catch (const PlatformError&) {
        // The pictures are gone all the same, and the screen has to show it.
        markFault = std::current_exception();
    }
    m_history.ShowVisits();
    m_history.ShowVisit();
    if (markFault != nullptr)
        std::rethrow_exception(markFault);
}
