#include "capture/CaptureDeletion.h"

#include "capture/CaptureHistory.h"
#include "capture/MeantPictures.h"
#include "capture/VisitGrid.h"
#include "capture/VisitNote.h"
#include "contracts/PlatformError.h"
#include "filing/StillFiling.h"
#include "frame/guard.h"
#include "frame/later.h"
#include "frame/services.h"
#include "frame/waiting.h"
#include "records/acts.h"
#include "records/capture_index.h"
#include "screenparts/VisitPictures.h"
#include "session/VisitContext.h"
#include "text/text_routines.h"

#include <exception>

using namespace Qt::StringLiterals;

CaptureDeletion::CaptureDeletion(CaptureHistory& history, VisitGrid& grid, StillFiling& filing, VisitNote& note,
                                 MeantPictures& meant)
    : m_history(history), m_grid(grid), m_filing(filing), m_note(note), m_meant(meant),
      m_jobs(filing, {VisitContext.CaptureDir, MarkTableOfSetup()})
{
    connect(&m_jobs, &PictureDeletion::Ended, this, &CaptureDeletion::OnEnded);
}

void CaptureDeletion::DeleteCurrentVisit()
{
    const Visit visit = CurrentVisit();
    if (m_meant.AskOfAll(1, LayIntoMask(visit.ymd, u"0000년 00월 00일") + u", "_s + visit.etc +
                                u" 캡쳐자료를 삭제하시겠습니까?"_s))
        DeleteVisitCaptures(visit);
}

void CaptureDeletion::DeleteMeantPicture()
{
    const VisitPictures::Picture* picture = m_meant.One();
    if (picture == nullptr)
        return;
    const int gridNumber = m_meant.GridNumber();
    const ShownPicture meant = *picture;
    VisitPictures& pictures = m_history.PicturesOf(gridNumber);
    const Visit visit = *pictures.Shown();
    if (!m_meant.Ask(u"해당 캡쳐자료가 지워집니다. 그래도 계속하시겠습니까?"_s) || !IsShown(gridNumber, visit))
        return;
    // A fill may have put others there while the question stood open, and one that waited may have its number by now.
    if (const qsizetype at = pictures.Find(meant); at >= 0)
        DeleteOnePicture(visit, ShownPicture(pictures.All()[at]), gridNumber);
}

void CaptureDeletion::DeleteMeantVisit()
{
    const int gridNumber = m_meant.GridNumber();
    const std::optional<Visit> visit = gridNumber != 0 ? m_history.PicturesOf(gridNumber).Shown() : std::nullopt;
    if (visit && m_meant.AskOfAll(gridNumber, u"전체 캡쳐자료가 지워집니다. 그래도 계속하시겠습니까?"_s) &&
        IsShown(gridNumber, visit))
        DeleteVisitCaptures(*visit);
}

bool CaptureDeletion::IsShown(int gridNumber, const std::optional<Visit>& visit) const
{
    return m_history.PicturesOf(gridNumber).Shown() == visit;
}

void CaptureDeletion::DeleteOnePicture(const Visit& visit, const ShownPicture& picture, int gridNumber)
{
    const int number = picture.number;
    const PictureJournal& journal = m_filing.Journal();
    const PictureRecord* record = journal.Find(picture.id);
    if (record == nullptr)
        record = journal.Find(visit, number);
    if (number == 0) {
        if (record != nullptr)
            DeleteUnnumbered(PictureRecord(*record));
        return;
    }
    // Asked before anything is touched: a database that doesn't answer leaves the picture as it was.
    if (record == nullptr)
        HasPictureRow(visit, number);
    DeletionJob job;
    job.visit = visit;
    job.items = {DeletionJob::Item{number}};
    const bool waits = record != nullptr;
    Run(job, [this, visit, number, gridNumber, waits](const PictureDeletion::Result& result) {
        if (result.isVisitGone)
            m_note.RowIsGone(visit);
        if (waits || m_filing.IsDatabaseAway()) {
            TakeOut({QString(), number}, visit, true);
            return;
        }
        if (gridNumber == 2)
            m_history.RefillHistory(visit);
        if (gridNumber == 1 || Trim(visit.ymd) == Trim(CurrentVisit().ymd))
            m_grid.ShowPictures(CurrentVisit(), false);
    });
}

void CaptureDeletion::DeleteUnnumbered(const PictureRecord& picture)
{
    m_grid.Forget(picture.id);
    acts::Act act = acts::Of(acts::Kind::Deleted, picture.visit);
    act.picture = act.key = picture.id;
    acts::Record(act);
    TakeOut({picture.id, 0}, picture.visit, false);
}

void CaptureDeletion::TakeOut(const ShownPicture& picture, const Visit& visit, bool mayBeLast)
{
    VisitPictures& pictures = m_history.PicturesOf(1);
    if (const qsizetype at = pictures.Find(picture); at >= 0 && IsShown(1, visit))
        pictures.Remove(at);
    m_grid.TellTaken();
    // The visit's row may go with it.
    if (mayBeLast && pictures.All().isEmpty())
        m_note.RowIsGone(visit);
}

void CaptureDeletion::DeleteVisitCaptures(const Visit& visit)
{
    const BusyPointer busy;
    DeletionJob job;
    job.visit = visit;
    job.isWhole = true;
    QList<int> numbers;
    if (m_filing.IsDatabaseAway()) {
        numbers = m_grid.KnownNumbers(visit);
        job.rowsUpTo = Visit::LargestNumber;
    } else {
        numbers = StoredNumbers(visit, NumberOrder::Any);
    }
    for (const int number : numbers)
        job.items.append(DeletionJob::Item{number});
    const QList<PictureRecord> own = m_filing.Journal().Of(visit);
    for (const PictureRecord& picture : own) {
        if (picture.number > 0 && !numbers.contains(picture.number))
            job.items.append(DeletionJob::Item{picture.number});
    }
    // Another date's deletion says nothing of today's visit, whose pictures are still there.
    if (visit.ymd == CurrentVisit().ymd)
        job.markedDoctor = u""_s + VisitContext.Jinchal;
    // Those that the share hasn't got yet go to the deleted ones when it has.
    for (const PictureRecord& picture : own) {
        if (picture.number == 0)
            m_grid.Forget(picture.id);
    }
    Run(job, [this, visit](const PictureDeletion::Result&) {
        if (m_filing.IsDatabaseAway()) {
            if (visit == CurrentVisit())
                m_grid.ShowNone();
            return;
        }
        m_history.ShowVisits();
        m_history.ShowVisit();
    });
}

void CaptureDeletion::Run(const DeletionJob& job, const Shown& show)
{
    const QString id = m_jobs.Begin(job);
    m_running.insert(id, {show, std::nullopt, false});
    // A database that doesn't answer gets its part later.
    const waiting::Outcome outcome = waiting::Await(u"그림을 지우고 있습니다."_s, [this, &id] {
        return !m_jobs.IsUnderWay(id) || (m_filing.IsDatabaseAway() && m_jobs.AreFilesMoved(id));
    });
    if (outcome == waiting::Outcome::Done) {
        if (const std::optional<PictureDeletion::Result> result = m_running[id].result) {
            m_running.remove(id);
            Show(*result, show);
            return;
        }
        show({job.visit, {}, false, nullptr});
        m_running[id].isBehind = true;
        return;
    }
    if (m_jobs.GiveUp(id)) {
        m_running.remove(id);
        throw FilesAway(outcome == waiting::Outcome::Cancelled ? u"저장 폴더가 응답하지 않아 작업을 취소하였습니다.!!"_s
                                                               : QString());
    }
    // It goes on behind the screen.
    m_running[id].isBehind = true;
}

void CaptureDeletion::End()
{
    later::Finish(this, later::Screen);
    m_jobs.End();
}

void CaptureDeletion::OnEnded(const QString& id, const PictureDeletion::Result& result)
{
    Q_EMIT AreGone(result.visit, result.deleted);
    const auto running = m_running.find(id);
    if (running == m_running.end())
        return; // An earlier run's: what is shown now was read behind its beginning, or is read anew.
    running->result = result;
    if (!running->isBehind)
        return;
    const Running done = m_running.take(id);
    later::Do(this, later::Screen, [done] { Show(*done.result, done.show); });
}

void CaptureDeletion::Show(const PictureDeletion::Result& result, const Shown& show)
{
    std::exception_ptr fault = result.fault;
    // What is gone has to be seen, whatever else has failed.
    if (fault == nullptr || !result.deleted.isEmpty())
        show(result);
    guard::Rethrow(fault);
}
