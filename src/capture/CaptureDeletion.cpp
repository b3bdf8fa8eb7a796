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
    const ShownPicture picture = m_history.PictureAt(gridNumber, column, row);
    if (!visit || picture.IsNone())
        return;
    if (!m_meant.Ask(u"해당 캡쳐자료가 지워집니다. 그래도 계속하시겠습니까?"_s))
        return;
    // A fill may have put others there while the question stood open.
    if (m_history.ShownVisit(gridNumber) == visit && m_history.PlaceOf(gridNumber, picture))
        DeleteOnePicture(*visit, picture, gridNumber);
}

void CaptureDeletion::DeleteShownVisit(int gridNumber)
{
    const std::optional<Visit> visit = m_history.ShownVisit(gridNumber);
    if (visit && m_meant.AskOfAll(gridNumber, u"전체 캡쳐자료가 지워집니다. 그래도 계속하시겠습니까?"_s) &&
        m_history.ShownVisit(gridNumber) == visit)
        DeleteVisitCaptures(*visit);
}

void CaptureDeletion::DeleteOnePicture(const Visit& visit, const ShownPicture& picture, int gridNumber)
{
    // One that waited may have its number by now, and one whose rows waited its rows.
    const int number = m_stills.NumberOf(picture);
    const PictureJournal& journal = m_stills.Journal();
    const PictureRecord* record = picture.id.isEmpty() ? journal.Find(visit, number) : journal.Find(picture.id);
    if (record != nullptr) {
        DeleteWaitingPicture(PictureRecord(*record));
        return;
    }
    if (number == 0)
        return;
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

void CaptureDeletion::DeleteWaitingPicture(const PictureRecord& picture)
{
    if (picture.number > 0) {
        MoveToLogFolder(picture.visit, picture.number);
        m_deleted(picture.visit, picture.number);
    }
    fpSpread& pictures = m_history.Grid(1);
    const std::optional<QPoint> place = m_stills.PlaceOf({picture.id, picture.number});
    m_stills.Forget(picture.id);
    if (place)
        RemovePicture(pictures, *place);
    m_stills.TellTaken();
    // The visit's row may go with it.
    if (PictureCount(pictures) == 0)
        m_note.RowIsGone(picture.visit);
}

void CaptureDeletion::DeleteEmptyVisit(const Visit& visit)
{
    if (!StoredNumbers(visit, NumberOrder::Any).isEmpty() || m_stills.Journal().HasAny(visit))
        return;
    DeleteVisitRow(visit);
    m_note.RowIsGone(visit);
}

void CaptureDeletion::DeleteVisitCaptures(const Visit& visit)
{
    const BusyPointer busy;
    const QList<int> numbers = StoredNumbers(visit, NumberOrder::Any);
    const QList<PictureRecord> own = m_stills.Journal().Of(visit);
    for (const int number : numbers)
        CheckMovable(visit, number);
    for (const PictureRecord& picture : own) {
        if (picture.number > 0)
            CheckMovable(visit, picture.number);
    }
    for (const int number : numbers)
        MoveToLogFolder(visit, number);
    for (const PictureRecord& picture : own) {
        if (picture.number > 0)
            MoveToLogFolder(visit, picture.number);
        m_stills.Forget(picture.id);
    }
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
