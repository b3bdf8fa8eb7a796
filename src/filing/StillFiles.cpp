#include "filing/StillFiles.h"

#include "contracts/desktop.h"
#include "contracts/files.h"
#include "contracts/PlatformError.h"
#include "filing/capture_folders.h"
#include "filing/NumberClaim.h"
#include "filing/PendingRows.h"
#include "frame/components.h"
#include "frame/guard.h"
#include "frame/journal.h"
#include "frame/services.h"

#include <QPointer>
#include <QUuid>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

/// A share that hasn't answered by then is away.
constexpr int SharePatienceMs = 1000;
/// So long after a refusal the share is asked again.
constexpr int RetryMs = 1000;
/// More than the slowest machine takes for the pictures that wait to be encoded.
constexpr int LongestEncodingMs = 10'000;
/// All that the spool may hold, and what it leaves free on the disk.
constexpr qint64 LargestSpool = 500'000'000;
constexpr qint64 LeastFreeBytes = 1'000'000'000;

/// Beside a picture there has to be room for its claim and for what the disk itself needs. In bytes.
constexpr qint64 LeftOnShare = 1'000'000;

QString SpoolFolder()
{
    return UseService<Desktop>().ProgramFolder() + u'\\';
}

/// A disk that refuses keeps nobody waiting.
void DeleteSpoolFile(const QString& picture)
{
    try {
        DeleteFile(StillFiles::SpoolPath(picture));
    } catch (const PlatformError& error) {
        journal::NoteFault(error.Text());
    }
}

} // namespace

struct StillFiles::Still
{
    Picture picture;
    QString id;
    bool isLeft = false; ///< By an earlier run, which may have filed it.

    /// Who has it. What waits for the share can be taken back; what has begun there comes to an end of its own.
    enum Hand { Waiting, AtShare, TakenBack };
    std::atomic<int> hand = Waiting;

    // The screen's thread alone.
    QByteArray content = {}; ///< Until it is safe.
    bool isEncoded = false;
    int spooled = 0;         ///< Its number in the spool.
    bool isSpooling = false; ///< Its spool file is being written.
    bool isForgotten = false;
    std::shared_ptr<Placed> placed = nullptr; ///< The share has it, while it was still being spooled.
};

QString StillFiles::SpoolPath(const QString& picture)
{
    return SpoolFolder() + QString::fromUtf16(SpoolPrefix) + picture + u".jpg"_s;
}

StillFiles::StillFiles(WorkThread& local, PendingRows& list, Note note)
    : m_local(local), m_list(list), m_note(std::move(note))
{
    for (QTimer* timer : {&m_patience, &m_retry})
        timer->setSingleShot(true);
    m_retry.setInterval(RetryMs);
    connect(&m_patience, &QTimer::timeout, this, &StillFiles::SpoolAll);
    connect(&m_retry, &QTimer::timeout, this, &StillFiles::MoveNext);
    for (const PendingRows::Entry& entry : m_list.Spooled()) {
        const auto still = std::make_shared<Still>();
        still->picture.visit = entry.visit;
        still->id = entry.spooled;
        still->isLeft = true;
        still->hand = Still::TakenBack;
        still->spooled = entry.number;
        m_road.append(still);
    }
    *m_isAway = IsShareAway();
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
    // Its work calls the members of this, and comes to an end whatever the share does.
    m_encoder.End(LongestEncodingMs);
    m_share.End();
}

int StillFiles::UnderWay() const
{
    return static_cast<int>(std::ranges::count_if(
        m_road, [](const StillPointer& still) { return still->spooled == 0 || still->isSpooling; }));
}

int StillFiles::Spooled() const
{
    return static_cast<int>(
        std::ranges::count_if(m_road, [](const StillPointer& still) { return still->spooled != 0; }));
}

void StillFiles::CheckSpoolHasRoom() const
{
    qint64 bytes = 0;
    for (const FolderEntry& entry : Files().Entries(SpoolFolder())) {
        if (entry.Name.startsWith(QStringView(SpoolPrefix)))
            bytes += entry.Size;
    }
    const qint64 freeBytes = Files().FreeBytes(SpoolFolder());
    if (bytes > LargestSpool || (freeBytes >= 0 && freeBytes < LeastFreeBytes)) {
        throw PlatformError(
            u"저장 폴더가 응답하지 않고, 이 컴퓨터에도 그림을 보관할 공간이 없습니다.!! (보관 %1MB, 남은 공간 %2MB)"_s
                .arg(bytes / 1'000'000)
                .arg(freeBytes / 1'000'000));
    }
}

void StillFiles::File(const Picture& picture)
{
    if (IsShareAway())
        CheckSpoolHasRoom();
    m_list.ClaimsIn({picture.visit.captureDir, picture.visit.etc});
    const auto still = std::make_shared<Still>();
    still->picture = picture;
    still->id = QUuid::createUuid().toString(QUuid::Id128);
    m_road.append(still);
    m_encoder.Post([this, still, encode = picture.encode, self = m_self]() mutable {
        QByteArray content;
        try {
            content = encode();
        } catch (...) {
            PostToScreen([self, still, fault = std::current_exception()] {
                if (self)
                    self->AnswerPlaced(still, {}, fault);
            });
            return;
        }
        // The frame goes back to its device from here.
        encode = nullptr;
        PostToScreen([self, still, content] {
            if (self)
                self->AnswerEncoded(still, content);
        });
        HandOver(still, content);
    });
    still->picture.encode = nullptr;
}

void StillFiles::HandOver(const StillPointer& still, const QByteArray& content)
{
    m_share.Post([still, content, isAway = m_isAway, numbers = m_numbers, self = m_self] {
        const int hand = *isAway ? Still::TakenBack : Still::AtShare;
        int waiting = Still::Waiting;
        if (!still->hand.compare_exchange_strong(waiting, hand) || hand == Still::TakenBack)
            return;
        Place(self, still, [&] { return PlaceFile(*still, content, *numbers); });
    });
}

void StillFiles::Place(const QPointer<StillFiles>& self, const StillPointer& still,
                       const std::function<Placed()>& place)
{
    Placed placed;
    std::exception_ptr fault;
    try {
        placed = place();
    } catch (...) {
        fault = std::current_exception();
    }
    PostToScreen([self, still, placed, fault] {
        if (self)
            self->AnswerPlaced(still, placed, fault);
    });
}

StillFiles::Placed StillFiles::PlaceFile(const Still& still, const QByteArray& content, CaptureNumbers& numbers)
{
    const Visit& visit = still.picture.visit;
    // A section outside this client's list has no folder of its own yet.
    EnsureFolderOfYear(visit.captureDir, visit.SectionFolder());
    const qint64 freeBytes = Files().FreeBytes(visit.captureDir);
    if (freeBytes >= 0 && freeBytes < content.size() + LeftOnShare) {
        throw PlatformError(
            u"저장 폴더에 남은 공간이 없어 그림을 저장할 수 없습니다.!! (남은 공간 %1MB)"_s.arg(freeBytes / 1'000'000));
    }
    for (int number = numbers.NextCaptureNo(visit) + 1; number <= Visit::LargestNumber; ++number) {
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
        numbers.Filed(visit, number);
        return placed;
    }
    throw PlatformError(u"캡쳐번호가 너무 커서 저장할 수 없습니다.!!"_s);
}

StillFiles::Placed StillFiles::PlaceSpooled(const Still& still, CaptureNumbers& numbers)
{
    if (still.isLeft) {
        if (const std::optional<int> number = NumberClaim::NumberOf(still.picture.visit, still.id))
            return {*number, {}};
        if (!FileExists(SpoolPath(still.id)))
            return {};
        // Its visit is hardly the one on the screen: no number of a picture that was deleted is to be filled.
        numbers.LearnFromFolder(still.picture.visit);
    }
    return PlaceFile(still, Files().ReadFile(SpoolPath(still.id)), numbers);
}

void StillFiles::AnswerEncoded(const StillPointer& still, const QByteArray& content)
{
    still->content = content;
    still->isEncoded = true;
    still->picture.encoded(content);
    // The share may have been quicker.
    if (!m_road.contains(still))
        return;
    if (IsShareAway()) {
        Spool(still);
        return;
    }
    // The share came back between its refusal of this one and now.
    int takenBack = Still::TakenBack;
    if (still->hand.compare_exchange_strong(takenBack, Still::Waiting))
        HandOver(still, content);
    if (!m_patience.isActive())
        m_patience.start(SharePatienceMs);
}

void StillFiles::AnswerPlaced(const StillPointer& still, const Placed& placed, const std::exception_ptr& fault)
{
    if (still->isSpooling) {
        // Which is to end first.
        if (fault == nullptr)
            still->placed = std::make_shared<Placed>(placed);
        else
            still->hand = Still::TakenBack;
        return;
    }
    if (still->spooled == 0) {
        m_road.removeOne(still);
        m_patience.stop();
        if (fault == nullptr) {
            m_list.Add({still->picture.visit, placed.number, m_note(still->picture.visit)});
            Q_EMIT Filed(still->picture.visit, placed.number);
        }
        still->picture.filed(placed.number, fault);
        if (!placed.fault.isEmpty())
            Q_EMIT Tidings(placed.fault);
        // It does answer: the next one has its own second.
        if (std::ranges::any_of(m_road, [](const StillPointer& next) { return next->isEncoded && next->spooled == 0; }))
            m_patience.start(SharePatienceMs);
        return;
    }
    if (fault != nullptr) {
        still->hand = Still::TakenBack;
        if (still->isForgotten)
            Leave(still);
        m_retry.start();
        return;
    }
    still->placed = std::make_shared<Placed>(placed);
    Settle(still);
}

void StillFiles::SpoolAll()
{
    for (const StillPointer& still : QList(m_road)) {
        if (still->isEncoded && still->spooled == 0)
            Spool(still);
    }
}

void StillFiles::Spool(const StillPointer& still)
{
    m_patience.stop();
    if (!m_isAway->exchange(true))
        journal::Note(Journal::Warning, u"저장 폴더가 응답하지 않음, 그림을 이 컴퓨터에 보관함"_s);
    int waiting = Still::Waiting;
    still->hand.compare_exchange_strong(waiting, Still::TakenBack);
    still->isSpooling = true;
    const Visit& visit = still->picture.visit;
    still->spooled = m_list.Spool(visit, still->id, m_note(visit));
    m_local.Post([self = m_self, still, content = still->content, path = SpoolPath(still->id)] {
        std::exception_ptr fault;
        try {
            Files().WritePrivateFile(path, content);
        } catch (const StoredWithFault&) {
        } catch (...) {
            fault = std::current_exception();
        }
        PostToScreen([self, still, fault] {
            if (self)
                self->AnswerSpooled(still, fault);
        });
    });
}

void StillFiles::AnswerSpooled(const StillPointer& still, const std::exception_ptr& fault)
{
    still->isSpooling = false;
    if (fault == nullptr)
        still->content.clear();
    else
        Q_EMIT Tidings(
            u"그림을 이 컴퓨터에 보관하지 못하였습니다.!! 저장 폴더가 응답할 때까지 끄지 마십시오.!!\r\n%1"_s.arg(
                guard::TextOf(fault)));
    if (!still->isForgotten) {
        Q_EMIT Filed(still->picture.visit, still->spooled);
        still->picture.filed(still->spooled, nullptr);
        Q_EMIT Changed();
    } else if (still->hand == Still::TakenBack) {
        Leave(still);
    }
    if (still->placed != nullptr)
        Settle(still);
    else
        MoveNext();
}

void StillFiles::MoveNext()
{
    if (m_road.isEmpty())
        return;
    const StillPointer still = m_road.first();
    if (still->spooled == 0 || still->isSpooling || still->hand != Still::TakenBack)
        return;
    still->hand = Still::AtShare;
    m_share.Post([self = m_self, still, content = still->content, numbers = m_numbers] {
        Place(self, still, [&] {
            return content.isEmpty() ? PlaceSpooled(*still, *numbers) : PlaceFile(*still, content, *numbers);
        });
    });
}

void StillFiles::Settle(const StillPointer& still)
{
    const Visit& visit = still->picture.visit;
    const int number = still->placed->number;
    if (!still->placed->fault.isEmpty())
        Q_EMIT Tidings(still->placed->fault);
    if (number == 0 || still->isForgotten) {
        // Deleted while it was on its way.
        if (number > 0) {
            m_share.Post([visit, number] {
                try {
                    DeleteFile(visit.PicturePath(number));
                } catch (const PlatformError&) {
                    return; // The claim stays with it.
                }
                NumberClaim::Release(visit, number);
            });
        }
        Leave(still);
        MoveNext();
        return;
    }
    // Its rows, and with them the claim, come after the spool file has gone.
    m_local.Post([self = m_self, still, number] {
        DeleteSpoolFile(still->id);
        PostToScreen([self, still, number] {
            if (!self)
                return;
            const Visit visit = still->picture.visit;
            self->m_road.removeOne(still);
            self->LookAtShare();
            self->m_list.File(visit, still->spooled, number);
            Q_EMIT self->Moved(visit, still->spooled, number);
            Q_EMIT self->Filed(visit, number);
            Q_EMIT self->Changed();
            self->MoveNext();
        });
    });
}

void StillFiles::LookAtShare()
{
    const bool isAway = IsShareAway();
    if (m_isAway->exchange(isAway) && !isAway)
        journal::Note(Journal::Information, u"저장 폴더가 다시 응답함, 보관한 그림을 모두 옮김"_s);
}

void StillFiles::Leave(const StillPointer& still)
{
    m_road.removeOne(still);
    LookAtShare();
    m_list.Remove(still->picture.visit, still->spooled);
    m_local.Post([id = still->id] { DeleteSpoolFile(id); });
    Q_EMIT Changed();
}

void StillFiles::Forget(const Visit& visit, int spooled)
{
    for (const StillPointer& still : QList(m_road)) {
        if (still->spooled != spooled || still->picture.visit != visit)
            continue;
        // What has begun at the share is undone when it ends.
        if (still->hand == Still::AtShare || still->isSpooling) {
            still->isForgotten = true;
            m_list.Remove(visit, spooled);
            m_local.Post([id = still->id] { DeleteSpoolFile(id); });
        } else {
            Leave(still);
            MoveNext();
        }
    }
}
