#include "filing/StillFiles.h"

#include "contracts/files.h"
#include "contracts/PlatformError.h"
#include "filing/capture_folders.h"
#include "filing/capture_wastebasket.h"
#include "filing/NumberClaim.h"
#include "filing/PictureJournal.h"
#include "frame/guard.h"
#include "frame/journal.h"
#include "frame/services.h"

#include <QHash>
#include <QUuid>

#include <algorithm>
#include <future>

using namespace Qt::StringLiterals;

namespace {

/// A share that hasn't answered by then is away.
constexpr int SharePatienceMs = 1000;
/// So long after a refusal the share is asked again.
constexpr int RetryMs = 1000;
/// More than the slowest machine takes for the pictures that wait to be encoded.
constexpr int LongestEncodingMs = 10'000;
/// All that may wait on the local disk, and what that is to keep free.
constexpr qint64 MostLocalBytes = 500'000'000;
constexpr qint64 LeastFreeBytes = 1'000'000'000;

/// Beside a picture there has to be room for its claim and for what the disk itself needs. In bytes.
constexpr qint64 LeftOnShare = 1'000'000;

const QString PictureEnding = u".jpg"_s;

/// Others wait for the share, and nothing may pass them.
class Passed : public FilesAway
{
public:
    using FilesAway::FilesAway;
};

} // namespace

/// The pictures on this machine's disk. Used by the thread of its files alone.
class StillFiles::LocalDisk
{
public:
    /// Throws PlatformError, also when the pictures would take too much of it.
    void Write(const QString& id, const QByteArray& content)
    {
        if (!std::exchange(m_isRead, true))
            Read();
        const qint64 freeBytes = Files().FreeBytes(LocalFolder());
        if (m_bytes > MostLocalBytes || (freeBytes >= 0 && freeBytes < LeastFreeBytes)) {
            throw PlatformError(
                u"저장 폴더가 응답하지 않고, 이 컴퓨터에도 그림을 보관할 공간이 없습니다.!! (보관 %1MB, 남은 공간 %2MB)"_s
                    .arg(m_bytes / 1'000'000)
                    .arg(freeBytes / 1'000'000));
        }
        setSize(id, content.size());
        Files().WritePrivateFile(LocalPath(id), content);
    }

    /// A disk that refuses keeps nobody waiting.
    void Remove(const QString& id)
    {
        setSize(id, 0);
        journal::NotingFaults([&] { DeleteFile(LocalPath(id)); });
    }

private:
    void Read()
    {
        for (const FolderEntry& entry : Files().Entries(LocalFolder())) {
            if (entry.Name.startsWith(QStringView(LocalPrefix)))
                setSize(entry.Name.sliced(QStringView(LocalPrefix).size()).chopped(PictureEnding.size()), entry.Size);
        }
    }

    void setSize(const QString& id, qint64 bytes)
    {
        m_bytes += bytes - m_sizes.take(id);
        if (bytes > 0)
            m_sizes.insert(id, bytes);
    }

    QHash<QString, qint64> m_sizes; ///< In bytes, by the picture's identity.
    qint64 m_bytes = 0;
    bool m_isRead = false;
};

struct StillFiles::Placing
{
    QString id;
    Visit visit;
    Picture picture;
    CaptureNumbers::QuestionPointer question = nullptr;
    bool isLeft = false;                 ///< By an earlier run, which may have filed it.
    std::atomic<bool> isDeleted = false; ///< It goes on to the deleted pictures.
    std::atomic<bool> isPlaced = false;
    std::promise<PictureSum> sumTaken = {};
    /// What the encoder gave. Unknown for one that an earlier run has left without it.
    std::shared_future<PictureSum> sum = sumTaken.get_future().share();

    // The encoder's thread alone.
    QByteArray encoded = {};
    std::exception_ptr encodingFault = {};

    // The screen's thread alone.
    QByteArray content = {}; ///< Empty when it has to be read from the local disk.
    enum Local { Pending, Kept, Failed };
    Local local = Pending;
    bool isEncoded = false;
    bool isAtShare = false;
    bool isOverdue = false; ///< The share has had its second.
    bool isWaiting = false; ///< The screen knows.
    std::exception_ptr localFault = {};
    std::exception_ptr shareFault = {};
};

QString StillFiles::LocalPath(const QString& id)
{
    return LocalFolder() + QString::fromUtf16(LocalPrefix) + id + PictureEnding;
}

StillFiles::StillFiles(WorkThread& local, PictureJournal& journal, Note note)
    : m_local(local), m_journal(journal), m_note(std::move(note)), m_disk(std::make_shared<LocalDisk>())
{
    for (QTimer* timer : {&m_patience, &m_retry})
        timer->setSingleShot(true);
    m_retry.setInterval(RetryMs);
    connect(&m_patience, &QTimer::timeout, this, &StillFiles::LoseShare);
    connect(&m_retry, &QTimer::timeout, this, &StillFiles::MoveNext);
    for (const DeletionJob& job : m_journal.Deletions())
        Hold(job);
    for (const PictureRecord& picture : m_journal.Records()) {
        if (picture.number > 0) {
            m_numbers->Hold(picture.visit, picture.number);
            RemoveLocally(picture.id);
            continue;
        }
        const auto still = std::make_shared<Placing>();
        still->id = picture.id;
        still->visit = picture.visit;
        still->isLeft = still->isEncoded = still->isWaiting = true;
        still->isDeleted = picture.IsDeleted();
        still->local = Placing::Kept;
        still->sumTaken.set_value(picture.sum);
        m_road.append(still);
    }
    *m_isAway = !m_road.isEmpty();
    MoveNext();
}

StillFiles::~StillFiles()
{
    End();
}

void StillFiles::End()
{
    m_patience.stop();
    m_retry.stop();
    // What was pressed is encoded yet, and goes to the local disk at least. Its work calls the members of this, and
    // comes to an end whatever the share does.
    m_encoder.AwaitIdle(LongestEncodingMs);
    m_encoder.End(LongestEncodingMs);
    // Claims whose rows are in; a share that answers takes no time for them.
    m_share.AwaitIdle(IsShareAway() ? 0 : SharePatienceMs);
    m_share.End();
}

void StillFiles::Hold(const DeletionJob& job)
{
    for (const DeletionJob::Item& item : job.items)
        m_numbers->Hold(job.visit, item.number);
}

void StillFiles::LetGo(const DeletionJob& job)
{
    for (const DeletionJob::Item& item : job.items)
        m_numbers->Release(job.visit, item.number);
}

int StillFiles::UnderWay() const
{
    return static_cast<int>(
        std::ranges::count(m_road, false, [](const PlacingPointer& still) { return still->isWaiting; }));
}

int StillFiles::Waiting() const
{
    return static_cast<int>(std::ranges::count_if(
        m_road, [](const PlacingPointer& still) { return still->isWaiting && !still->isDeleted; }));
}

bool StillFiles::IsShareAway() const
{
    return std::ranges::any_of(m_road, [](const PlacingPointer& still) { return still->isWaiting; });
}

QString StillFiles::File(const Picture& picture)
{
    const auto still = std::make_shared<Placing>();
    still->id = QUuid::createUuid().toString(QUuid::Id128);
    still->visit = picture.visit;
    still->picture = picture;
    // It takes longest: what else is begun here runs beside it.
    Encode(still, std::exchange(still->picture.encode, nullptr));
    m_journal.ClaimsIn({picture.visit.captureDir, picture.visit.etc});
    const std::optional<TypedNote> note = m_note(picture.visit);
    if (note)
        m_journal.setNote(picture.visit, *note);
    // On the disk before the picture is.
    m_journal.Add({.id = still->id,
                   .visit = picture.visit,
                   .origin = picture.origin,
                   .takenAt = picture.takenAt.isNull() ? QDateTime::currentDateTime() : picture.takenAt,
                   .note = note,
                   .detail = picture.detail});
    still->question = m_numbers->Ask(picture.visit);
    m_road.append(still);
    HandOverEncoded(still);
    return still->id;
}

void StillFiles::Encode(const PlacingPointer& still, std::function<QByteArray()> encode)
{
    m_encoder.Post([still, encode = std::move(encode)]() mutable {
        try {
            still->encoded = encode();
        } catch (...) {
            still->encodingFault = std::current_exception();
        }
        // The frame goes back to its device from here.
        encode = nullptr;
    });
}

void StillFiles::HandOverEncoded(const PlacingPointer& still)
{
    still->isAtShare = true;
    m_encoder.Post([this, still, self = m_self] {
        if (still->encodingFault != nullptr) {
            PostToScreen([self, still, fault = std::exchange(still->encodingFault, nullptr)] {
                if (self)
                    self->Refuse(still, fault);
            });
            return;
        }
        const QByteArray content = std::exchange(still->encoded, {});
        PostToScreen([self, still, content] {
            if (self)
                self->AnswerEncoded(still, content);
        });
        KeepLocally(still, content);
        HandOver(still, content, false);
        TakeSum(still, content);
    });
}

void StillFiles::TakeSum(const PlacingPointer& still, const QByteArray& content)
{
    const PictureSum sum = SumOf(content);
    still->sumTaken.set_value(sum);
    PostToScreen([self = m_self, id = still->id, sum] {
        if (!self)
            return;
        const PictureRecord* picture = self->m_journal.Find(id);
        if (picture == nullptr || picture->sum.IsKnown())
            return;
        // It is written with the picture's next state, but for one that waits, which has none for long.
        const auto change = [&sum](PictureRecord& changed) { changed.sum = sum; };
        if (picture->state == PictureState::Local)
            self->m_journal.Update(id, change);
        else
            self->m_journal.Mark(id, change);
    });
}

void StillFiles::KeepLocally(const PlacingPointer& still, const QByteArray& content)
{
    m_local.Post([still, content, disk = m_disk, self = m_self] {
        std::exception_ptr fault;
        try {
            // The share may have been quicker.
            if (!still->isPlaced)
                disk->Write(still->id, content);
        } catch (const StoredWithFault&) {
        } catch (...) {
            fault = std::current_exception();
        }
        PostToScreen([self, still, fault] {
            if (self)
                self->AnswerLocal(still, fault);
        });
    });
}

void StillFiles::RemoveLocally(const QString& id)
{
    m_local.Post([id, disk = m_disk] { disk->Remove(id); });
}

void StillFiles::HandOver(const PlacingPointer& still, const QByteArray& content, bool isFirst)
{
    m_share.Post([still, content, isFirst, isAway = m_isAway, numbers = m_numbers, self = m_self] {
        Placed placed;
        std::exception_ptr fault;
        try {
            if (*isAway && !isFirst)
                throw Passed(QString());
            placed = Place(*still, content, *numbers);
            still->isPlaced = true;
        } catch (...) {
            // Those behind it may not pass.
            *isAway = true;
            fault = std::current_exception();
        }
        PostToScreen([self, still, placed, fault] {
            if (self)
                self->AnswerPlaced(still, placed, fault);
        });
    });
}

StillFiles::Placed StillFiles::Place(Placing& still, const QByteArray& content, CaptureNumbers& numbers)
{
    Placed placed;
    if (still.isLeft) {
        if (const std::optional<int> number = NumberClaim::NumberOf(still.visit, still.id)) {
            placed.number = *number;
            numbers.Hold(still.visit, *number);
            placed.sum = still.sum.get();
            if (!placed.sum.IsKnown())
                placed.sum = SumOf(Files().ReadArchivedFile(still.visit.PicturePath(*number)));
        } else if (!FileExists(LocalPath(still.id))) {
            // It had come neither here nor there.
            return placed;
        }
    }
    if (placed.number == 0) {
        const QByteArray whole = content.isEmpty() ? Files().ReadFile(LocalPath(still.id)) : content;
        placed = PlaceFile(still, whole, numbers);
        placed.sum = still.sum.get();
        // The run that took it was killed before it knew.
        if (!placed.sum.IsKnown())
            placed.sum = SumOf(whole);
    }
    if (still.isDeleted) {
        ThrowAway(still, placed.number, numbers);
        placed.number = 0;
    }
    return placed;
}

void StillFiles::ThrowAway(const Placing& still, int number, CaptureNumbers& numbers)
{
    MoveToLogFolder(still.visit, number, still.visit.captureDir, still.id);
    NumberClaim::Release(still.visit, number);
    numbers.Release(still.visit, number);
}

StillFiles::Placed StillFiles::PlaceFile(const Placing& still, const QByteArray& content, CaptureNumbers& numbers)
{
    const Visit& visit = still.visit;
    // A section outside this client's list has no folder of its own yet.
    EnsureFolderOfYear(visit.captureDir, visit.SectionFolder());
    const qint64 freeBytes = Files().FreeBytes(visit.captureDir);
    if (freeBytes >= 0 && freeBytes < content.size() + LeftOnShare) {
        throw PlatformError(
            u"저장 폴더에 남은 공간이 없어 그림을 저장할 수 없습니다.!! (남은 공간 %1MB)"_s.arg(freeBytes / 1'000'000));
    }
    for (int number = numbers.Next(visit, *still.question); number <= Visit::LargestNumber; ++number) {
        auto claim = NumberClaim::Take(visit, number, still.id);
        // Another station may have filed this number and let go of it before the claim was ours.
        if (claim == nullptr || NumberClaim::IsPictureThere(visit, number))
            continue;
        Placed placed{number, {}};
        try {
            if (!Files().WriteNewFile(visit.PicturePath(number), content))
                continue;
        } catch (const StoredWithFault& error) {
            placed.fault = error.Text();
        }
        // It stands until the rows are in.
        claim->Keep();
        numbers.Hold(visit, number);
        return placed;
    }
    throw PlatformError(u"캡쳐번호가 너무 커서 저장할 수 없습니다.!!"_s);
}

void StillFiles::AnswerEncoded(const PlacingPointer& still, const QByteArray& content)
{
    still->isEncoded = true;
    still->content = content;
    still->picture.encoded(content);
    if (m_road.contains(still) && !m_patience.isActive())
        m_patience.start(SharePatienceMs);
}

void StillFiles::AnswerLocal(const PlacingPointer& still, const std::exception_ptr& fault)
{
    still->local = fault == nullptr ? Placing::Kept : Placing::Failed;
    still->localFault = fault;
    if (!m_road.contains(still))
        return;
    if (fault == nullptr) {
        if (still->shareFault != nullptr || still->isOverdue || IsShareAway())
            LetWait(still);
    } else if (still->shareFault != nullptr) {
        Refuse(still, guard::Is<Passed>(still->shareFault) ? fault : still->shareFault);
    } else if (still->isOverdue || IsShareAway()) {
        Refuse(still, fault);
    }
}

void StillFiles::AnswerPlaced(const PlacingPointer& still, const Placed& placed, const std::exception_ptr& fault)
{
    still->isAtShare = false;
    if (fault == nullptr) {
        AnswerAtShare(still, placed);
        return;
    }
    if (!m_road.contains(still))
        return;
    still->shareFault = fault;
    if (still->local == Placing::Failed)
        Refuse(still, guard::Is<Passed>(fault) ? still->localFault : fault);
    else if (still->local == Placing::Kept)
        LetWait(still);
    // Those before it are on the share by now.
    if (guard::Is<Passed>(fault) && !m_road.isEmpty() && m_road.first() == still)
        MoveNext();
    else
        m_retry.start();
}

void StillFiles::AnswerAtShare(const PlacingPointer& still, const Placed& placed)
{
    m_patience.stop();
    m_road.removeOne(still);
    const bool wasWaiting = still->isWaiting;
    const PictureRecord* picture = m_journal.Find(still->id);
    const bool isWanted = placed.number > 0 && picture != nullptr && !picture->IsDeleted();
    if (isWanted) {
        m_journal.Update(still->id, [&](PictureRecord& changed) {
            changed.number = placed.number;
            changed.state = PictureState::OnShare;
            changed.sum = placed.sum;
        });
    } else {
        // Deleted, or refused, while the share had it in its hands.
        if (placed.number > 0) {
            m_share.Post([still, number = placed.number, numbers = m_numbers] { ThrowAway(*still, number, *numbers); });
        }
        m_journal.Remove(still->id);
    }
    // Behind the journal: a number that it doesn't know yet is found by its claim.
    RemoveLocally(still->id);
    still->content.clear();
    if (m_road.isEmpty() && m_isAway->exchange(false) && wasWaiting)
        journal::Note(Journal::Information, u"저장 폴더가 다시 응답함, 보관한 그림을 모두 옮김"_s);
    if (isWanted) {
        if (wasWaiting)
            Q_EMIT Moved(still->id);
        Q_EMIT Filed(still->id);
        if (!wasWaiting)
            still->picture.filed(placed.number, nullptr);
    }
    if (!placed.fault.isEmpty())
        Q_EMIT Tidings(placed.fault);
    if (wasWaiting)
        Q_EMIT Changed();
    // It does answer: the next one has its own second.
    if (std::ranges::any_of(m_road, [](const PlacingPointer& next) { return next->isEncoded && !next->isWaiting; }))
        m_patience.start(SharePatienceMs);
    MoveNext();
}

void StillFiles::LoseShare()
{
    bool isFirst = !IsShareAway();
    for (const PlacingPointer& still : QList(m_road)) {
        if (!still->isEncoded || still->isWaiting)
            continue;
        if (std::exchange(isFirst, false))
            journal::Note(Journal::Warning, u"저장 폴더가 응답하지 않음, 그림을 이 컴퓨터에 보관함"_s);
        still->isOverdue = true;
        if (still->local == Placing::Kept)
            LetWait(still);
        else if (still->local == Placing::Failed)
            Q_EMIT Tidings(
                u"그림을 이 컴퓨터에 보관하지 못하였습니다.!! 저장 폴더가 응답할 때까지 끄지 마십시오.!!\r\n%1"_s.arg(
                    guard::TextOf(still->localFault)));
    }
}

void StillFiles::LetWait(const PlacingPointer& still)
{
    if (std::exchange(still->isWaiting, true))
        return;
    // What it was when it was taken outlives this run with it.
    m_journal.Update(still->id, [](PictureRecord& picture) {
        picture.waits = true;
        if (!picture.IsDeleted())
            picture.state = PictureState::Local;
    });
    // It is read from there when its turn comes.
    still->content.clear();
    still->picture.filed(0, nullptr);
    Q_EMIT Changed();
}

void StillFiles::Refuse(const PlacingPointer& still, const std::exception_ptr& fault)
{
    if (!m_road.removeOne(still))
        return;
    m_journal.Remove(still->id);
    // Should the share take it after all, it goes to the deleted pictures.
    still->isDeleted = true;
    still->picture.filed(0, fault);
    MoveNext();
}

void StillFiles::MoveNext()
{
    if (m_road.isEmpty()) {
        *m_isAway = false;
        return;
    }
    const PlacingPointer still = m_road.first();
    // One that is on its way comes back by itself; one that was refused has its pause.
    if (!still->isEncoded || std::exchange(still->isAtShare, true))
        return;
    still->shareFault = nullptr;
    still->question = m_numbers->Ask(still->visit);
    HandOver(still, still->content, true);
}

void StillFiles::Delete(const QString& id)
{
    const auto found = std::ranges::find(m_road, id, [](const PlacingPointer& still) { return still->id; });
    if (found != m_road.end())
        (*found)->isDeleted = true;
    m_journal.Update(id, [](PictureRecord& picture) { picture.state = PictureState::Deleted; });
    Q_EMIT Changed();
}
