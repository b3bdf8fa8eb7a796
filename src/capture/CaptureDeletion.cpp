#include "capture/CaptureDeletion.h"
#include "visit/VisitContext.h"

#include "capture/CaptureHistory.h"
#include "capture/MeantPictures.h"
#include "capture/VisitNote.h"
#include "contracts/PlatformError.h"
#include "filing/capture_wastebasket.h"
#include "frame/services.h"
#include "records/capture_index.h"
#include "screenparts/picture_grid.h"
#include "text/text_routines.h"

#include <exception>

using namespace Qt::StringLiterals;

void CaptureDeletion::DeleteCurrentVisit()
{
    const Visit visit = CurrentVisit();
    if (m_meant.AskOfAll(1, LayIntoMask(visit.ymd, u"0000년 00월 00일") + u", "_s + visit.etc +
                                u" 캡쳐자료를 삭제하시겠습니까?"_s))
        DeleteVisitCaptures(visit);
}

void CaptureDeletion::DeletePictureAt(int gridNumber, int column, int row)
{
    const std::optional<Visit> visit = m_history.ShownVisit(gridNumber);
    const int number = m_history.NumberAt(gridNumber, column, row);
    if (!visit || number == 0)
        return;
    if (!m_meant.Ask(u"해당 캡쳐자료가 지워집니다. 그래도 계속하시겠습니까?"_s))
        return;
    // A fill may have put others there while the question stood open, and one that waited may have its number.
    if (m_history.ShownVisit(gridNumber) == visit && (number < 0 || m_history.PlaceOf(gridNumber, number)))
        DeleteOnePicture(*visit, m_stills.NumberNow(number), gridNumber);
}

void CaptureDeletion::DeleteShownVisit(int gridNumber)
{
    const std::optional<Visit> visit = m_history.ShownVisit(gridNumber);
    if (visit && m_meant.AskOfAll(gridNumber, u"전체 캡쳐자료가 지워집니다. 그래도 계속하시겠습니까?"_s) &&
        m_history.ShownVisit(gridNumber) == visit)
        DeleteVisitCaptures(*visit);
}

void CaptureDeletion::DeleteOnePicture(const Visit& visit, int number, int gridNumber)
{
    if (m_stills.Pending().Holds(visit, number)) {
        DeleteWaitingPicture(visit, number);
        return;
    }
    // Asked before anything is touched: a database that doesn't answer leaves the picture as it was.
    HasPictureRow(visit, number);
    MoveToLogFolder(visit, number);
    m_deleted(visit, number);
    DeletePictureRow(visit, number);
    DeleteEmptyVisit(visit);
    if (gridNumber == 1) {
        m_history.FillPictures(visit, 1, false);
        return;
    }
    m_history.FillPictures(visit, 2, true);
    if (Trim(visit.ymd) == Trim(CurrentVisit().ymd))
        m_history.FillPictures(visit, 1, false);
}

void CaptureDeletion::DeleteWaitingPicture(const Visit& visit, int number)
{
    if (number > 0)
        MoveToLogFolder(visit, number);
    m_deleted(visit, number);
    fpSpread& pictures = m_history.Grid(1);
    const std::optional<QPoint> place = m_stills.PlaceOf(number);
    m_stills.Forget(visit, number);
    if (place)
        RemovePicture(pictures, *place);
    m_stills.TellTaken();
    // The visit's row may go with it.
    if (PictureCount(pictures) == 0)
        m_note.RowIsGone(visit);
}

void CaptureDeletion::DeleteEmptyVisit(const Visit& visit)
{
    if (!StoredNumbers(visit, NumberOrder::Any).isEmpty() || m_stills.Pending().HasAny(visit))
        return;
    DeleteVisitRow(visit);
    m_note.RowIsGone(visit);
}

void CaptureDeletion::DeleteVisitCaptures(const Visit& visit)
{
    const BusyPointer busy;
    const QList<int> numbers = StoredNumbers(visit, NumberOrder::Any);
    for (const int number : numbers + m_stills.Pending().NumbersOf(visit))
        CheckMovable(visit, number);
    for (const int number : numbers)
        MoveToLogFolder(visit, number);
    for (const int number : m_stills.Pending().NumbersOf(visit)) {
        MoveToLogFolder(visit, number);
        m_stills.Forget(visit, number);
    }
    for (const int number : m_stills.Pending().SpooledOf(visit))
        m_stills.Forget(visit, number);
    m_deleted(visit, std::nullopt);
    DeleteVisitRow(visit);
    DeletePictureRows(visit);
    // Another date's deletion says nothing of today's visit, whose pictures are still there.
    std::exception_ptr markFault;
    try {
        if (visit.ymd == CurrentVisit().ymd)
            MarkVisitCaptured(CurrentVisit(), u"0"_s);
    } catch (const PlatformError&) {
        // The pictures are gone all the same, and the screen has to show it.
        markFault = std::current_exception();
    }
    m_history.ShowVisits();
    m_history.ShowVisit();
    if (markFault != nullptr)
        std::rethrow_exception(markFault);
}
