#include "capture/StillFiling.h"

#include "capture/capture_folders.h"
#include "capture/NumberClaim.h"
#include "contracts/files.h"
#include "contracts/PlatformError.h"
#include "frame/guard.h"
#include "frame/services.h"
#include "records/capture_index.h"
#include "records/Statement.h"
#include "text/text_routines.h"

#include <QPointer>

#include <limits>

using namespace Qt::StringLiterals;

namespace {

/// Picture numbers are 16-bit.
constexpr int LargestNumber = std::numeric_limits<qint16>::max();
/// Rows that take longer are shown as waiting.
constexpr int RowsWaitMs = 2000;
/// So long after a failure the database is asked again.
constexpr int RetryMs = 1000;

/// A picture stands under that number, in whichever of the two names.
bool IsTaken(Visit visit, int number)
{
    for (const QString& extension : {u"jpg"_s, u"bmp"_s}) {
        visit.imageExt = extension;
        if (FileExists(visit.PicturePath(number)))
            return true;
    }
    return false;
}

struct PlacedFile
{
    int number = 0;
    QString fault; ///< The file stands, but the disk reported a fault.
};

/// On the filing thread. The claim stays until the rows are in.
PlacedFile PlaceFile(const Visit& visit, const QByteArray& content, CaptureNumbers& numbers)
{
    // A section outside this client's list has no folder of its own yet.
    EnsureFolderOfYear(visit.captureDir, visit.SectionFolder());
    for (int number = numbers.NextCaptureNo(visit) + 1; number <= LargestNumber; ++number) {
        auto claim = NumberClaim::Take(visit, number);
        // Another station may have filed this number and let go of it before the claim was ours.
        if (claim == nullptr || IsTaken(visit, number))
            continue;
        PlacedFile placed{number, {}};
        try {
            if (!Files().WriteNewFile(visit.PicturePath(number), content))
                continue;
        } catch (const StoredWithFault& error) {
            placed.fault = error.Text();
        }
        claim->Keep();
        numbers.Filed(visit, number);
        return placed;
    }
    throw PlatformError(u"캡쳐번호가 너무 커서 저장할 수 없습니다.!!"_s);
}

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
    : m_note(std::move(note)), m_pending(m_files, [self = QPointer(this)](const QString& fault) {
          if (self)
              Q_EMIT self->Tidings(fault);
      })
{
    m_retry.setSingleShot(true);
    m_retry.setInterval(RetryMs);
    connect(&m_retry, &QTimer::timeout, this, &StillFiling::Retry);
}

StillFiling::~StillFiling()
{
    End();
}

void StillFiling::End()
{
    m_retry.stop();
    m_files.End();
    m_pending.End();
}

void StillFiling::File(const Picture& picture)
{
    m_pending.ClaimsIn({picture.visit.captureDir, picture.visit.etc});
    ++m_filesUnderWay;
    m_files.Post([picture = Picture(picture), numbers = m_numbers, self = QPointer(this)]() mutable {
        PlacedFile placed;
        std::exception_ptr fault;
        try {
            const QByteArray content = picture.encode();
            PostToScreen([self, encoded = picture.encoded, content] {
                if (self)
                    encoded(content);
            });
            placed = PlaceFile(picture.visit, content, *numbers);
        } catch (...) {
            fault = std::current_exception();
        }
        // The frame goes back to its device from here.
        picture.encode = nullptr;
        PostToScreen([self, picture = std::move(picture), placed, fault] {
            if (self)
                self->AnswerFile(picture, placed.number, fault, placed.fault);
        });
    });
}

void StillFiling::AnswerFile(const Picture& picture, int number, std::exception_ptr fault, const QString& diskFault)
{
    --m_filesUnderWay;
    if (fault == nullptr) {
        const std::optional<QString> typed = m_note(picture.visit);
        m_pending.Add({picture.visit, number, typed.value_or(QString())});
        // Those that the server has refused have their turn again, before this one.
        if (!*m_blocked) {
            for (const auto& [visit, each] : m_pending.All())
                Submit(visit, each);
        }
        QTimer::singleShot(m_isAway ? 0 : RowsWaitMs, this, [this, visit = picture.visit, number] {
            const PendingRows::Entry* entry = m_pending.Find(visit, number);
            if (entry != nullptr && !entry->waits)
                SetAway(true);
        });
    }
    picture.filed(number, fault);
    if (!diskFault.isEmpty())
        Q_EMIT Tidings(diskFault);
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
        QueueStatements(this, work, [this, rows, visit, number](std::exception_ptr fault) {
            --m_rowsUnderWay;
            AnswerRows(visit, number, *rows, std::move(fault));
        });
        entry->isUnderWay = true;
        ++m_rowsUnderWay;
    } catch (const PlatformError&) {
        SetAway(true);
        m_retry.start();
    }
}

void StillFiling::AnswerRows(const Visit& visit, int number, const Rows& rows, std::exception_ptr fault)
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
    const auto remove = [visit, number, isLast = m_pending.NumbersOf(visit).isEmpty()] {
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
    m_isAway = isAway;
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
    const bool isFiled = m_rowsUnderWay == 0 && m_pending.Waiting() == 0 && m_files.IsIdle();
    return m_filesUnderWay == 0 && (isFiled || m_isAway);
}

void StillFiling::LearnFromFolder(const Visit& visit)
{
    m_files.Post([visit, numbers = m_numbers] {
        if (numbers->Knows(visit))
            return;
        for (const QString& name : Files().FilesStartingWith(visit.SectionFolder(), visit.PicturePrefix()))
            numbers->Filed(visit, visit.PictureNumber(name));
    });
}
