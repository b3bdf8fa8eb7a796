#include "filing/StillFiling.h"

#include "contracts/files.h"
#include "contracts/PlatformError.h"
#include "filing/capture_folders.h"
#include "filing/NumberClaim.h"
#include "frame/guard.h"
#include "frame/journal.h"
#include "frame/services.h"
#include "records/capture_index.h"
#include "records/Statement.h"
#include "text/text_routines.h"

#include <QPointer>

using namespace Qt::StringLiterals;

namespace {

/// Rows that take longer are shown as waiting.
constexpr int RowsWaitMs = 2000;
/// What the end waits for files of this machine.
constexpr int LocalPatienceMs = 3000;
/// So long after a failure the database is asked again.
constexpr int RetryMs = 1000;

} // namespace

/// What the rows of one picture hold, made on the connection's thread.
struct StillFiling::Rows
{
    Note note;

    /// `kept` was typed when the picture was taken, and hasn't been stored since.
    void Write(const Visit& visit, int number, const std::optional<QString>& typed, const QString& kept)
    {
        note = {typed.value_or(QString()), typed.has_value(), {}};
        if (!note.typed) {
            note.text = StoredNote(visit);
            // What was typed when the rows had to wait must not be lost, nor what others have stored since.
            if (!Trim(kept).isEmpty() && !note.text.contains(Trim(kept))) {
                const QString lineEnd = note.text.contains(u"\r\n"_s) ? u"\r\n"_s : u"\n"_s;
                note.text = Trim(note.text).isEmpty() ? kept : note.text + lineEnd + kept;
            }
        }
        SaveCaptureRows(visit, number, note.text);
        if (note.typed)
            note.stored = StoredNote(visit);
    }
};

StillFiling::StillFiling(NoteSource note)
    : m_note(std::move(note)), m_pending(m_local,
                                         [self = QPointer(this)](const QString& fault) {
                                             if (self)
                                                 Q_EMIT self->Tidings(fault);
                                         }),
      m_files(m_local, m_pending, [this](const Visit& visit) { return m_note(visit).value_or(QString()); })
{
    m_retry.setSingleShot(true);
    m_retry.setInterval(RetryMs);
    connect(&m_retry, &QTimer::timeout, this, &StillFiling::Retry);
    connect(&m_files, &StillFiles::Filed, this, [this](const Visit& visit, int number) {
        if (number > 0)
            HandOverRows(visit, number);
    });
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
    m_local.End(LocalPatienceMs);
    m_pending.End();
}

void StillFiling::HandOverRows(const Visit& visit, int number)
{
    // Those that the server has refused have their turn again, before this one.
    if (!*m_blocked) {
        for (const auto& [each, eachNumber] : m_pending.All())
            Submit(each, eachNumber);
    }
    QTimer::singleShot(m_isAway ? 0 : RowsWaitMs, this, [this, visit, number] {
        const PendingRows::Entry* entry = m_pending.Find(visit, number);
        if (entry != nullptr && !entry->waits)
            SetAway(true);
    });
}

void StillFiling::Submit(const Visit& visit, int number)
{
    PendingRows::Entry* entry = m_pending.Find(visit, number);
    if (entry == nullptr || entry->isUnderWay)
        return;
    const auto rows = std::make_shared<Rows>();
    const auto work = [rows, visit, number, typed = m_note(visit), kept = entry->note, blocked = m_blocked] {
        if (*blocked)
            throw DatabaseAway(QString());
        try {
            rows->Write(visit, number, typed, kept);
        } catch (const DatabaseAway&) {
            *blocked = true;
            throw;
        }
    };
    try {
        QueueStatements(this, work, [this, rows, visit, number](const std::exception_ptr& fault) {
            --m_rowsUnderWay;
            AnswerRows(visit, number, *rows, fault);
        });
        entry->isUnderWay = true;
        ++m_rowsUnderWay;
    } catch (const PlatformError&) {
        SetAway(true);
        m_retry.start();
    }
}

void StillFiling::AnswerRows(const Visit& visit, int number, const Rows& rows, const std::exception_ptr& fault)
{
    if (m_forgotten.removeOne({visit, number})) {
        Undo(visit, number);
        return;
    }
    PendingRows::Entry* entry = m_pending.Find(visit, number);
    if (entry == nullptr)
        return;
    entry->isUnderWay = false;
    if (fault == nullptr) {
        m_pending.Remove(visit, number);
        Release(visit, number);
        SetAway(false);
        Q_EMIT Safe({visit, number, rows.note});
        return;
    }
    if (guard::Is<DatabaseAway>(fault)) {
        SetAway(true);
        m_retry.start();
        return;
    }
    if (entry->refused)
        return;
    const QString text = PendingRows::RefusalText(*entry, guard::TextOf(fault));
    m_pending.Refuse(visit, number);
    Q_EMIT Waits(visit, number);
    Q_EMIT Changed();
    Q_EMIT Tidings(text);
}

void StillFiling::Undo(const Visit& visit, int number)
{
    const auto remove = [visit, number, isLast = !m_pending.HasAny(visit)] {
        DeletePictureRow(visit, number);
        if (isLast && StoredNumbers(visit, NumberOrder::Any).isEmpty())
            DeleteVisitRow(visit);
    };
    // The number is claimed until its row has gone: no new picture can have taken it.
    const auto release = [this, visit, number](const std::exception_ptr&) { Release(visit, number); };
    try {
        QueueStatements(this, remove, release);
    } catch (const PlatformError&) {
        release(nullptr);
    }
}

void StillFiling::SetAway(bool isAway)
{
    if (isAway != std::exchange(m_isAway, isAway)) {
        if (isAway)
            journal::Note(Journal::Warning, u"데이터베이스가 응답하지 않음, 기록 대기 %1장"_s.arg(m_pending.Count()));
        else
            journal::Note(Journal::Information,
                          u"데이터베이스가 다시 응답함, 남은 기록 대기 %1장"_s.arg(m_pending.Count()));
    }
    // One that waits keeps those behind it waiting.
    if (isAway) {
        for (const auto& [visit, number] : m_pending.LetAllWait())
            Q_EMIT Waits(visit, number);
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
    for (const auto& [visit, number] : m_pending.All())
        Submit(visit, number);
}

void StillFiling::WriteLeft()
{
    m_files.Post([waiting = m_pending.All(), self = QPointer(this)] {
        QList<std::pair<Visit, int>> gone;
        QList<std::pair<Visit, int>> there;
        for (const auto& [visit, number] : waiting) {
            if (FileExists(visit.PicturePath(number)))
                there.append({visit, number});
            else if (FolderExists(visit.SectionFolder())) // without it there is no share to tell
                gone.append({visit, number});
        }
        PostToScreen([self, gone, there] {
            if (!self)
                return;
            for (const auto& [visit, number] : gone) {
                const PendingRows::Entry* entry = self->m_pending.Find(visit, number);
                if (entry == nullptr || entry->isUnderWay)
                    continue;
                self->m_pending.Remove(visit, number);
                self->Release(visit, number);
                Q_EMIT self->Changed();
            }
            if (self->m_rowsUnderWay > 0)
                return;
            *self->m_blocked = false;
            for (const auto& [visit, number] : there) {
                const PendingRows::Entry* entry = self->m_pending.Find(visit, number);
                if (entry != nullptr && !entry->refused)
                    self->Submit(visit, number);
            }
            if (self->m_rowsUnderWay == 0 && self->m_pending.Waiting() > 0)
                self->m_retry.start();
        });
    });
}

void StillFiling::Forget(const Visit& visit, int number)
{
    if (number < 0) {
        m_files.Forget(visit, number);
        return;
    }
    const PendingRows::Entry* entry = m_pending.Find(visit, number);
    if (entry == nullptr)
        return;
    const bool isUnderWay = entry->isUnderWay;
    m_pending.Remove(visit, number);
    if (isUnderWay)
        m_forgotten.append({visit, number});
    else
        Undo(visit, number);
    Q_EMIT Changed();
}

void StillFiling::Release(const Visit& visit, int number)
{
    m_files.Post([visit, number] { NumberClaim::Release(visit, number); });
}

bool StillFiling::IsAtRest() const
{
    if (m_files.UnderWay() > 0)
        return false;
    const bool areRowsIn = m_rowsUnderWay == 0 && m_pending.Waiting() == 0;
    return (areRowsIn || m_isAway) && (m_isAway || m_files.IsIdle() || m_files.IsShareAway());
}

void StillFiling::MakeFoldersLater(const QStringList& folders)
{
    m_files.Post([folders] {
        try {
            MakeMissingFolders(folders);
        } catch (const PlatformError& error) {
            journal::NoteFault(error.Text());
        }
    });
}

void StillFiling::LearnFromFolder(const Visit& visit)
{
    m_files.Post([visit, numbers = m_files.SharedNumbers()] { numbers->LearnFromFolder(visit); });
}
