#include "filing/PictureDeletion.h"

#include "contracts/files.h"
#include "contracts/PlatformError.h"
#include "filing/capture_root.h"
#include "filing/capture_wastebasket.h"
#include "filing/StillFiling.h"
#include "frame/guard.h"
#include "frame/services.h"
#include "records/acts.h"
#include "records/capture_index.h"
#include "records/picture_sums.h"
#include "records/Statement.h"

#include <QPointer>
#include <QTimer>
#include <QUuid>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

/// So long after a failure the database is asked again.
constexpr int RetryMs = 1000;
/// A file keeps its way into the Log folder though nobody tells its picture's identity by then.
constexpr int IdentityPatienceMs = 1000;

/// Every one is a picture that can be moved, before the first is touched. Throws PlatformError.
void IdentifyFiles(DeletionJob& job)
{
    capture_root::Check(job.visit.captureDir);
    for (const DeletionJob::Item& item : job.items)
        CheckMovable(job.visit, item.number);
    for (DeletionJob::Item& item : job.items) {
        if (!item.isMoved)
            item.version = Files().VersionOf(job.visit.PicturePath(item.number));
    }
}

/// Each picture of a job once: those that are gone, and those that had to stay.
void RecordDeleted(const DeletionJob& job)
{
    for (const DeletionJob::Item& item : job.items) {
        acts::Act act = acts::Of(acts::Kind::Deleted, job.visit, item.number);
        act.picture = item.picture;
        act.isRefused = !item.isMoved;
        act.key = u"%1/%2/%3"_s.arg(job.id).arg(item.number).arg(int(item.isMoved));
        acts::Record(act);
    }
}

/// The pictures that were meant; another one that has come under such a number since stays, and its row.
void MoveFiles(DeletionJob& job, const QString& presentYear)
{
    capture_root::Check(job.visit.captureDir);
    for (DeletionJob::Item& item : job.items) {
        const QByteArray version = Files().VersionOf(job.visit.PicturePath(item.number));
        const bool isMeant = !item.isMoved && !version.isEmpty() && version == item.version;
        if (isMeant)
            MoveToLogFolder(job.visit, item.number, presentYear, item.picture);
        // One that was moved while the database was away may have left its number to another by now.
        item.isMoved = isMeant || (version.isEmpty() &&
                                   capture_root::IsGone(job.visit.captureDir, job.visit.PicturePath(item.number)));
        item.wasMoved |= isMeant;
    }
}

} // namespace

PictureDeletion::PictureDeletion(StillFiling& filing, const Terms& terms) : m_filing(filing), m_terms(terms)
{
    for (const DeletionJob& job : QList(m_filing.Journal().Deletions())) {
        m_doubtful.insert(job.id);
        Go(job);
    }
}

QString PictureDeletion::Begin(DeletionJob job)
{
    job.id = QUuid::createUuid().toString(QUuid::Id128);
    for (DeletionJob::Item& item : job.items) {
        const PictureRecord* own = m_filing.Journal().Find(job.visit, item.number);
        item.picture = own != nullptr ? own->id : QString();
    }
    m_filing.Stills().Hold(job);
    m_filing.Journal().StoreDeletion(job);
    Go(job);
    return job.id;
}

bool PictureDeletion::IsUnderWay(const QString& id) const
{
    return m_filing.Journal().FindDeletion(id) != nullptr && !m_refused.contains(id);
}

bool PictureDeletion::AreFilesMoved(const QString& id) const
{
    const DeletionJob* job = m_filing.Journal().FindDeletion(id);
    return job == nullptr || (job->isPlanned && std::ranges::all_of(job->items, &DeletionJob::Item::isMoved));
}

bool PictureDeletion::GiveUp(const QString& id)
{
    const DeletionJob* job = m_filing.Journal().FindDeletion(id);
    if (job == nullptr || job->isPlanned)
        return false;
    m_filing.Stills().LetGo(*job);
    m_filing.Journal().RemoveDeletion(id, false);
    return true;
}

void PictureDeletion::Go(const DeletionJob& job)
{
    if (!job.isPlanned)
        AtShare(job, IdentifyFiles, &PictureDeletion::TakeIdentified);
    else
        AtShare(
            job, [year = m_terms.presentYear](DeletionJob& moved) { MoveFiles(moved, year); },
            &PictureDeletion::TakeMoved);
}

void PictureDeletion::AtShare(const DeletionJob& job, const std::function<void(DeletionJob&)>& work, Answer answer)
{
    m_filing.Stills().Post([job = DeletionJob(job), work, answer, self = QPointer(this)]() mutable {
        std::exception_ptr fault;
        try {
            work(job);
        } catch (...) {
            fault = std::current_exception();
        }
        PostToScreen([self, job, answer, fault] {
            if (self && !self->m_hasEnded && self->m_filing.Journal().FindDeletion(job.id) != nullptr)
                (self->*answer)(job, fault);
        });
    });
}

void PictureDeletion::TakeIdentified(const DeletionJob& job, const std::exception_ptr& fault)
{
    if (fault != nullptr && m_doubtful.contains(job.id)) {
        TryAgain(job.id, &PictureDeletion::Go);
        return;
    }
    if (fault != nullptr) {
        Finish(job, {job.visit, {}, false, fault});
        return;
    }
    AskIdentities(job);
}

void PictureDeletion::AskIdentities(const DeletionJob& job)
{
    const auto known = std::make_shared<DeletionJob>(job);
    const auto isOver = std::make_shared<bool>(false);
    const auto goOn = [this, isOver](const DeletionJob& identified) {
        if (m_hasEnded || std::exchange(*isOver, true) || m_filing.Journal().FindDeletion(identified.id) == nullptr)
            return;
        DeletionJob planned = identified;
        planned.isPlanned = true;
        m_filing.Journal().StoreDeletion(planned);
        // Behind the journal: a run that is cut off from here on is finished by the next.
        m_filing.AfterJournal(this, [this, planned] { Go(planned); });
    };
    const bool isAllKnown =
        std::ranges::none_of(job.items, [](const DeletionJob::Item& item) { return item.picture.isEmpty(); });
    if (isAllKnown || m_filing.IsDatabaseAway()) {
        goOn(job);
        return;
    }
    const auto ask = [known] {
        for (DeletionJob::Item& item : known->items) {
            if (item.picture.isEmpty())
                item.picture = PictureIdOf(known->visit, item.number);
        }
    };
    QueueStatements(this, ask,
                    [goOn, known, job](const std::exception_ptr& fault) { goOn(fault == nullptr ? *known : job); });
    QTimer::singleShot(IdentityPatienceMs, this, [goOn, job] { goOn(job); });
}

void PictureDeletion::TakeMoved(const DeletionJob& job, const std::exception_ptr& fault)
{
    m_filing.Journal().StoreDeletion(job);
    // Rows that are still to come in, or that came in without an answer, would bring it back.
    for (const DeletionJob::Item& item : job.items) {
        const PictureRecord* own = item.isMoved ? m_filing.Journal().Find(job.visit, item.number) : nullptr;
        if (own != nullptr)
            m_filing.Forget(QString(own->id));
    }
    if (fault != nullptr && (m_doubtful.contains(job.id) || guard::Is<Away>(fault)))
        TryAgain(job.id, &PictureDeletion::Go);
    else if (job.rowsUpTo > 0 && fault == nullptr)
        AskRows(job);
    else
        DeleteRows(job, fault);
}

void PictureDeletion::TryAgain(const QString& id, void (PictureDeletion::*step)(const DeletionJob& job))
{
    QTimer::singleShot(RetryMs, this, [this, id, step] {
        const DeletionJob* job = m_filing.Journal().FindDeletion(id);
        if (job != nullptr && !m_hasEnded)
            (this->*step)(DeletionJob(*job));
    });
}

void PictureDeletion::AskRows(const DeletionJob& job)
{
    const auto numbers = std::make_shared<QList<int>>();
    const auto answer = [this, job, numbers](const std::exception_ptr& fault) {
        if (m_hasEnded)
            return;
        if (fault != nullptr) {
            TryAgain(job.id, &PictureDeletion::AskRows);
            return;
        }
        DeletionJob whole = job;
        for (const int number : *numbers) {
            const bool isKnown =
                std::ranges::find(whole.items, number, &DeletionJob::Item::number) != whole.items.end();
            if (number <= job.rowsUpTo && !isKnown)
                whole.items.append(DeletionJob::Item{number});
        }
        whole.rowsUpTo = 0;
        whole.isPlanned = false;
        m_filing.Journal().StoreDeletion(whole);
        Go(whole);
    };
    QueueStatements(
        this, [numbers, visit = job.visit] { *numbers = StoredNumbers(visit, NumberOrder::Any); }, answer);
}

void PictureDeletion::DeleteRows(const DeletionJob& job, const std::exception_ptr& moving)
{
    const auto result = std::make_shared<Result>(Result{job.visit, {}, false, moving});
    for (const DeletionJob::Item& item : job.items) {
        if (item.isMoved)
            result->deleted.append(item.number);
    }
    // Another picture of the visit may be on its way.
    const bool mayBeEmpty = !m_filing.Journal().HasAnyBeside(job);
    const auto remove = [result, job, mayBeEmpty, table = m_terms.marks] {
        for (const DeletionJob::Item& item : job.items) {
            if (!item.isMoved)
                continue;
            // A row without a file: another deletion may have freed the number, and another station taken it.
            if (item.wasMoved || capture_root::IsGone(job.visit.captureDir, job.visit.PicturePath(item.number))) {
                DeletePictureRow(job.visit, item.number);
                SumIsDeleted(job.visit, item.number, item.picture);
            }
        }
        const bool hadPictures = !result->deleted.isEmpty() || job.isWhole;
        result->isVisitGone = mayBeEmpty && hadPictures && DeleteEmptyVisitRow(job.visit);
        if (!job.markedDoctor.isNull() && result->fault == nullptr)
            MarkVisitCaptured(job.visit, job.markedDoctor, u"0"_s, table);
    };
    const auto answer = [this, job, result](const std::exception_ptr& fault) {
        if (m_hasEnded)
            return;
        if (fault != nullptr && guard::Is<Away>(fault)) {
            TryAgain(job.id, &PictureDeletion::Go);
            return;
        }
        if (fault == nullptr) {
            Finish(job, *result);
            return;
        }
        // The server refuses: the operator hears of it once, and the rows go when it takes the statements.
        if (!m_refused.contains(job.id)) {
            m_refused.insert(job.id);
            result->fault = fault;
            Q_EMIT Ended(job.id, *result);
        }
        TryAgain(job.id, &PictureDeletion::Go);
    };
    QueueStatements(this, remove, answer);
}

void PictureDeletion::Finish(const DeletionJob& job, const Result& result)
{
    RecordDeleted(job);
    m_filing.Stills().LetGo(job);
    m_filing.Journal().RemoveDeletion(job.id, result.fault == nullptr);
    m_doubtful.remove(job.id);
    if (!m_refused.remove(job.id))
        Q_EMIT Ended(job.id, result);
}
