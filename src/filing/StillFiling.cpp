#include "filing/StillFiling.h"

#include "contracts/files.h"
#include "contracts/PlatformError.h"
#include "filing/capture_folders.h"
#include "filing/capture_root.h"
#include "filing/NumberClaim.h"
#include "filing/picture_restore.h"
#include "frame/guard.h"
#include "frame/journal.h"
#include "frame/services.h"
#include "records/acts.h"
#include "records/capture_index.h"
#include "records/Statement.h"
#include "text/text_routines.h"

#include <QPointer>

#include <algorithm>
#include <iterator>
#include <vector>

using namespace Qt::StringLiterals;

namespace {

/// Rows that take longer are shown as waiting.
constexpr int RowsWaitMs = 2000;
/// What the end waits for files of this machine.
constexpr int LocalPatienceMs = 3000;
/// So long after a failure the database is asked again.
constexpr int RetryMs = 1000;

/// What the operator is told of a picture whose rows the server refuses.
QString RefusalText(const PictureRecord& picture, const QString& reason)
{
    return u"캡쳐 %1번(차트 %2, %3, %4)의 기록을 데이터베이스가 거부하여 따로 보관합니다.!!\r\n%5"_s.arg(
        NumberText(picture.number), picture.visit.chart, LayIntoMask(picture.visit.ymd, u"0000-00-00"),
        picture.visit.etc, reason);
}

void RecordFiled(const PictureRecord& picture)
{
    const bool isImport = picture.origin == PictureOrigin::Import;
    acts::Act act = acts::Of(isImport ? acts::Kind::Imported : acts::Kind::Filed, picture.visit, picture.number);
    // A run that was killed may file it again.
    act.picture = act.key = picture.id;
    act.detail = picture.detail;
    acts::Record(act);
}
} // namespace

/// What the rows of one picture hold, made on the connection's thread.
struct StillFiling::Rows
{
    Note note;

    void Write(const PictureRecord& picture, const std::optional<TypedNote>& typed, OwnNotes& own)
    {
        const Visit& visit = picture.visit;
        if (typed) {
            note.typed = typed->text;
            note.stored = StoreNote(visit, typed->text, own.Bases(visit, *typed), true);
            own.Add(visit, note.stored);
        } else {
            note.stored.raw = NoteOfAddedRow(visit);
        }
        WritePictureRow(visit, picture.number);
    }
};

StillFiling::StillFiling(NoteSource note)
    : m_note(std::move(note)), m_journal(m_local,
                                         [self = QPointer(this)](const QString& fault) {
                                             if (self)
                                                 Q_EMIT self->Tidings(fault);
                                         }),
      m_files(m_local, m_journal, m_note)
{
    m_retry.setSingleShot(true);
    m_retry.setInterval(RetryMs);
    connect(&m_retry, &QTimer::timeout, this, &StillFiling::Retry);
    connect(&m_files, &StillFiles::Filed, this, &StillFiling::HandOverRows);
    connect(&m_files, &StillFiles::Tidings, this, &StillFiling::Tidings);
    connect(&m_files, &StillFiles::Changed, this, &StillFiling::Changed);
}

StillFiling::~StillFiling()
{
    End();
}

void StillFiling::End()
{
    m_retry.stop();
    m_files.End();
    // What has been handed over to it is worked off: the journal's last steps.
    m_local.AwaitIdle(LocalPatienceMs);
    m_local.End(LocalPatienceMs);
    m_journal.End();
}

void StillFiling::HandOverRows(const QString& id)
{
    // Those that the server has refused have their turn again, before this one.
    if (!*m_blocked) {
        for (const PictureRecord& picture : QList(m_journal.Records()))
            Submit(picture);
    }
    QTimer::singleShot(m_isAway ? 0 : RowsWaitMs, this, [this, id] {
        const PictureRecord* picture = m_journal.Find(id);
        if (picture != nullptr && !picture->waits && !picture->hasRows)
            SetAway(true);
    });
}

void StillFiling::Submit(const PictureRecord& picture)
{
    if (picture.isUnderWay)
        return;
    if (picture.hasRows)
        SubmitSum(picture);
    if (!picture.WantsRows())
        return;
    const auto rows = std::make_shared<Rows>();
    // What he has typed since goes along.
    std::optional<TypedNote> typed = m_note(picture.visit);
    if (!typed)
        typed = picture.note;
    Queue(
        picture.id, [rows, picture, typed, own = m_ownNotes] { rows->Write(picture, typed, *own); },
        [this, rows, picture](const std::exception_ptr& fault) { AnswerRows(picture, *rows, fault); });
}

void StillFiling::SubmitSum(const PictureRecord& picture)
{
    Queue(
        picture.id, [picture] { KeepSum(picture.visit, picture.number, picture.id, picture.sum, SumState::Live); },
        [this, picture](const std::exception_ptr& fault) { AnswerSum(picture, fault); });
}

void StillFiling::Queue(const QString& id, const std::function<void()>& work,
                        const std::function<void(const std::exception_ptr&)>& answer)
{
    const auto unlessBlocked = [work, blocked = m_blocked] {
        if (*blocked)
            throw DatabaseAway(QString());
        try {
            work();
        } catch (const DatabaseAway&) {
            *blocked = true;
            throw;
        }
    };
    QueueStatements(this, unlessBlocked, [this, answer](const std::exception_ptr& fault) {
        --m_rowsUnderWay;
        answer(fault);
    });
    m_journal.Mark(id, [](PictureRecord& marked) { marked.isUnderWay = true; });
    ++m_rowsUnderWay;
}

void StillFiling::AnswerRows(const PictureRecord& picture, const Rows& rows, const std::exception_ptr& fault)
{
    if (m_forgotten.remove(picture.id)) {
        Undo(picture);
        return;
    }
    if (m_journal.Find(picture.id) == nullptr)
        return;
    m_journal.Mark(picture.id, [](PictureRecord& marked) { marked.isUnderWay = false; });
    if (fault == nullptr) {
        RecordFiled(picture);
        m_journal.Mark(picture.id, [](PictureRecord& marked) { marked.hasRows = true; });
        if (rows.note.typed)
            m_journal.NoteIsStored(picture.visit, *rows.note.typed);
        SetAway(false);
        SubmitSum(*m_journal.Find(picture.id));
        Q_EMIT Safe({picture.id, picture.visit, picture.number, rows.note});
        return;
    }
    if (guard::Is<DatabaseAway>(fault)) {
        WaitForDatabase();
        return;
    }
    const PictureRecord* present = m_journal.Find(picture.id);
    if (present->state == PictureState::SetAside)
        return;
    const QString reason = guard::TextOf(fault);
    m_journal.Update(picture.id, [&reason](PictureRecord& refused) {
        refused.state = PictureState::SetAside;
        refused.reason = reason;
        refused.waits = true;
    });
    Q_EMIT Waits(picture.id);
    Q_EMIT Changed();
    Q_EMIT Tidings(RefusalText(picture, reason));
}

void StillFiling::AnswerSum(const PictureRecord& picture, const std::exception_ptr& fault)
{
    if (m_forgotten.remove(picture.id)) {
        Undo(picture);
        return;
    }
    if (m_journal.Find(picture.id) == nullptr)
        return;
    m_journal.Mark(picture.id, [](PictureRecord& marked) { marked.isUnderWay = false; });
    if (fault != nullptr && guard::Is<DatabaseAway>(fault)) {
        WaitForDatabase();
        return;
    }
    m_journal.HandOver(picture.id);
    Release(picture.visit, picture.number);
    SetAway(false);
}

void StillFiling::WaitForDatabase()
{
    SetAway(true);
    m_retry.start();
}

QStringList StillFiling::OwnNotes::Bases(const Visit& visit, const TypedNote& note) const
{
    const std::lock_guard lock(m_mutex);
    QStringList bases{note.base};
    const auto own = std::ranges::find(m_notes, visit, &std::pair<Visit, QString>::first);
    if (own != m_notes.end() && own->second != note.base)
        bases << own->second;
    return bases;
}

void StillFiling::OwnNotes::Add(const Visit& visit, const NoteStored& stored)
{
    const std::lock_guard lock(m_mutex);
    std::erase_if(m_notes, [&](const auto& own) { return own.first == visit; });
    // What another station has written a part of isn't its own.
    if (stored.outcome == NoteStored::Stored)
        m_notes.emplace_back(visit, stored.raw);
}

NoteStored StillFiling::StoreTyped(const Visit& visit, const TypedNote& note)
{
    NoteStored stored = StoreNote(visit, note.text, m_ownNotes->Bases(visit, note), false);
    if (stored.outcome != NoteStored::NoRow) {
        m_ownNotes->Add(visit, stored);
        m_journal.NoteIsStored(visit, note.text);
    }
    return stored;
}

void StillFiling::Undo(const PictureRecord& picture)
{
    const Visit& visit = picture.visit;
    const int number = picture.number;
    const auto remove = [picture, isLast = !m_journal.HasAny(visit)] {
        DeletePictureRow(picture.visit, picture.number);
        KeepSum(picture.visit, picture.number, picture.id, picture.sum, SumState::Deleted);
        if (isLast)
            DeleteEmptyVisitRow(picture.visit);
    };
    // The number is claimed until its row has gone: no new picture can have taken it.
    const auto release = [this, visit, number](const std::exception_ptr&) { Release(visit, number); };
    QueueStatements(this, remove, release);
}

void StillFiling::SetAway(bool isAway)
{
    if (isAway != std::exchange(m_isAway, isAway)) {
        if (isAway)
            journal::Note(Journal::Warning, u"데이터베이스가 응답하지 않음, 기록 대기 %1장"_s.arg(m_journal.Count()));
        else
            journal::Note(Journal::Information,
                          u"데이터베이스가 다시 응답함, 남은 기록 대기 %1장"_s.arg(m_journal.Count()));
    }
    // One that waits keeps those behind it waiting.
    if (isAway) {
        for (const PictureRecord& picture : QList(m_journal.Records())) {
            if (!picture.WantsRows() || picture.waits)
                continue;
            m_journal.Mark(picture.id, [](PictureRecord& marked) { marked.waits = true; });
            Q_EMIT Waits(picture.id);
        }
    }
    Q_EMIT Changed();
}

void StillFiling::Retry()
{
    if (m_rowsUnderWay == 0)
        WriteLeft();
    else
        m_retry.start();
}

void StillFiling::WriteWaiting()
{
    if (m_rowsUnderWay > 0)
        return; // What has failed there is tried again behind it.
    *m_blocked = false;
    for (const PictureRecord& picture : QList(m_journal.Records()))
        Submit(picture);
}

void StillFiling::WriteLeft()
{
    // A list of its own: the journal's grows meanwhile.
    std::vector<PictureRecord> waiting;
    std::ranges::copy_if(m_journal.Records(), std::back_inserter(waiting), &PictureRecord::WantsRows);
    m_files.Post([waiting = std::move(waiting), self = QPointer(this)] {
        QList<PictureRecord> gone;
        QStringList there;
        for (const PictureRecord& picture : waiting) {
            // A journal of an earlier run may name a folder that can be none.
            journal::NotingFaults([&] {
                if (!capture_root::IsGone(picture.visit.captureDir, picture.visit.PicturePath(picture.number)))
                    there.append(picture.id);
                else if (FolderExists(picture.visit.SectionFolder())) // without it there is no share to tell
                    gone.append(picture);
            });
        }
        PostToScreen([self, gone, there] {
            if (!self)
                return;
            for (const PictureRecord& picture : gone) {
                const PictureRecord* present = self->m_journal.Find(picture.id);
                if (present == nullptr || present->isUnderWay)
                    continue;
                self->m_journal.Remove(picture.id);
                self->Release(picture.visit, picture.number);
                Q_EMIT self->Changed();
            }
            if (self->m_rowsUnderWay > 0)
                return;
            *self->m_blocked = false;
            for (const QString& id : there) {
                const PictureRecord* picture = self->m_journal.Find(id);
                if (picture != nullptr && picture->state != PictureState::SetAside)
                    self->Submit(*picture);
            }
            if (self->m_rowsUnderWay == 0 && self->m_journal.Waiting() > 0)
                self->m_retry.start();
        });
    });
}

void StillFiling::Forget(const QString& id)
{
    const PictureRecord* picture = m_journal.Find(id);
    if (picture == nullptr)
        return;
    if (picture->number == 0) {
        m_files.Delete(id);
        return;
    }
    const PictureRecord forgotten = *picture;
    m_journal.Remove(id);
    if (forgotten.isUnderWay)
        m_forgotten.insert(id);
    else
        Undo(forgotten);
    Q_EMIT Changed();
}

void StillFiling::Release(const Visit& visit, int number, const QString& picture)
{
    m_files.Post([visit, number, picture, numbers = m_files.SharedNumbers()] {
        if (!picture.isEmpty())
            picture_restore::DropTaken(visit, number, picture);
        NumberClaim::Release(visit, number);
        numbers->Release(visit, number);
    });
}

bool StillFiling::IsAtRest() const
{
    if (m_files.UnderWay() > 0)
        return false;
    const bool areRowsIn = m_rowsUnderWay == 0 && m_journal.Waiting() == 0;
    return (areRowsIn || m_isAway) && (m_isAway || m_files.IsIdle() || m_files.IsShareAway());
}

void StillFiling::MakeFoldersLater(const QStringList& folders)
{
    m_files.Post([folders] { journal::NotingFaults([&] { MakeMissingFolders(folders); }); });
}

void StillFiling::AfterJournal(QObject* context, const std::function<void()>& work)
{
    m_local.Post([work, there = QPointer(context)] {
        PostToScreen([work, there] {
            if (there)
                work();
        });
    });
}
