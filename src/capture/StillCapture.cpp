#include "capture/StillCapture.h"
#include "session/VisitContext.h"

#include "capture/VisitNote.h"
#include "contracts/desktop.h"
#include "contracts/fpSpread.h"
#include "contracts/ImagXpress.h"
#include "contracts/pictures.h"
#include "contracts/PlatformError.h"
#include "contracts/ShutterSound.h"
#include "contracts/VideoCap.h"
#include "frame/components.h"
#include "frame/guard.h"
#include "frame/later.h"
#include "frame/services.h"
#include "frame/waiting.h"
#include "records/capture_index.h"
#include "records/Statement.h"
#include "screenparts/fill_routines.h"
#include "screenparts/VisitPictures.h"
#include "text/text_routines.h"

#include <QPointer>
#include <QScopeGuard>

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace {
constexpr int StillQuality = 90;

/// What the closing waits for files that are being written, and for rows that are on their way.
constexpr int FilePatienceMs = 2500;
constexpr int RowsPatienceMs = 2000;
/// The message about what is left closes by itself.
constexpr int ClosingPatienceMs = 10000;

/// So long after a fill that failed, share and database are asked whether they answer again.
constexpr int AskAgainMs = 1000;

/// Of a picture whose rows the database hasn't taken yet.
const QString PendingMark = u"기록 대기"_s;
} // namespace

StillCapture::StillCapture(VisitPictures& pictures, VisitNote& note)
    : m_pictures(pictures), m_note(note), m_filing([this](const Visit& visit) { return m_note.Typed(visit); })
{
    connect(&m_leftovers, &Leftovers::AreSettled, this, [this](const Leftovers::Settled& settled) {
        later::Do(this, later::Screen, [this, settled] { TellSettled(settled); });
    });
    m_askAgain.setSingleShot(true);
    m_askAgain.setInterval(AskAgainMs);
    connect(&m_askAgain, &QTimer::timeout, this, &StillCapture::AskAgain);
    connect(&m_room, &RoomWatch::Changed, this, &StillCapture::RoomChanged);
    connect(&m_filing.Pictures(), &StillFiles::Moved, this, &StillCapture::ShowMoved);
    connect(&m_filing, &StillFiling::Safe, this, &StillCapture::ShowSafe);
    connect(&m_filing, &StillFiling::Waits, this, &StillCapture::ShowWaiting);
    connect(&m_filing, &StillFiling::Changed, this, &StillCapture::ShowOutage);
    connect(&m_filing, &StillFiling::Tidings, this,
            [this](const QString& text) { later::Do(this, later::Screen, [text] { ShowInformation(text); }); });
}

StillCapture::~StillCapture() = default;

void StillCapture::SetCaptureValues(VideoCap& capture, const Filed& filed, PictureOrigin origin)
{
    if (!HasChart() || !HasRoom()) {
        filed(nullptr);
        return;
    }
    const std::shared_ptr<const StillFrame> frame = capture.HoldFrame();
    if (frame == nullptr)
        throw PlatformError(u"캡쳐할 영상이 없습니다.!!"_s);
    const auto still = std::make_shared<Still>(Still{CurrentVisit(), origin});
    // The microphone of a movie would hear it.
    still->isHeard = ClientSetup.ShutterSound && !capture.CaptureMode();
    FileStill(
        still, [frame] { return frame->EncodeJPEG(StillQuality); }, filed);
}

void StillCapture::FilePicture(const ImagXpress& picture)
{
    if (!HasChart())
        return;
    const BusyPointer busy;
    if (!HasRoom())
        return;
    FileStill(
        std::make_shared<Still>(Still{CurrentVisit(), PictureOrigin::Import}),
        [content = picture.TargetContent()] { return content; }, guard::Rethrow);
}

bool StillCapture::HasChart() const
{
    if (!Trim(CurrentVisit().chart).isEmpty())
        return true;
    ShowInformation(u"차트번호가 없습니다.!! 확인하세요.!1"_s);
    return false;
}

int StillCapture::CountOnRoad(const Visit& visit) const
{
    return static_cast<int>(
        std::ranges::count_if(m_road, [&](const StillPointer& still) { return still->visit == visit; }));
}

int StillCapture::Taken() const
{
    const Visit visit = CurrentVisit();
    if (!later::IsHeld(later::Placing))
        return static_cast<int>(m_pictures.Pictures().size()) + CountOnRoad(visit);
    // Pictures that are being filled tell nothing: what they are filled from does.
    if (m_pictures.Shown() != visit)
        return CountOnRoad(visit);
    const auto waiting = std::ranges::count_if(m_filing.Journal().Of(visit), [&](const PictureRecord& picture) {
        return picture.number == 0 && OnRoad(picture.id) == nullptr;
    });
    return static_cast<int>(m_read.second.size() + waiting) + CountOnRoad(visit);
}

bool StillCapture::HasRoom() const
{
    const int taken = Taken();
    if (taken < MostPictures || !later::IsHeld(later::Placing))
        return taken < MostPictures;
    // Some of the rows may have lost their files.
    const Visit visit = CurrentVisit();
    const auto gone =
        std::ranges::count_if(m_read.second, [&](int number) { return !PictureExists(visit.PicturePath(number)); });
    return taken - gone < MostPictures;
}

void StillCapture::Sound(const StillPointer& still, bool isSafe)
{
    if (std::exchange(still->isHeard, false) && ServiceSlot<ShutterSound>() != nullptr)
        UseService<ShutterSound>().Play(isSafe ? ShutterSound::Safe : ShutterSound::Waiting);
}

void StillCapture::FileStill(const StillPointer& still, const std::function<QByteArray()>& encode, const Filed& filed)
{
    m_note.BringBack();
    m_road.append(still);
    auto refused = qScopeGuard([&] { m_road.removeOne(still); });
    still->id = m_filing.Pictures().File(
        {still->visit, still->origin, encode,
         [this, still](const QByteArray& content) {
             still->thumbnail = Pictures().LoadContent(content, m_pictures.Grid().CellPixels(1, 1));
             connect(still->thumbnail.get(), &PictureBatch::Ready, this, &StillCapture::ShowReady);
             ShowReady();
         },
         [this, still, filed](int number, const std::exception_ptr& fault) {
             const bool waits = fault == nullptr && number == 0;
             still->number = number;
             still->mayShow |= waits;
             if (waits)
                 Sound(still, false);
             if (fault != nullptr)
                 m_road.removeOne(still);
             if (fault != nullptr || waits)
                 ShowReady();
             TellTaken();
             Guarded([&] { filed(fault); });
         }});
    refused.dismiss();
    TellTaken();
}

void StillCapture::ShowReady()
{
    for (const StillPointer& still : QList(m_road)) {
        if (!still->mayShow || still->thumbnail == nullptr || !still->thumbnail->IsReady(0))
            return;
        if (!std::exchange(still->isShown, true))
            later::Do(this, later::Placing, [this, still] { ShowStill(still); });
    }
}

void StillCapture::ShowStill(const StillPointer& still)
{
    m_road.removeOne(still);
    if (still->visit != CurrentVisit())
        return;
    // A fill that it waited for may have found it already.
    m_pictures.Show(still->visit);
    const ShownPicture picture{still->id, still->number};
    if (m_pictures.Find(picture) < 0)
        Place(still->id, still->number, still->thumbnail->Take(0));
    TellTaken();
    const QPoint place = *m_pictures.PlaceOf(picture);
    m_pictures.Grid().SetActiveCell(1, place.y());
    m_pictures.Grid().FlashCell(place.x(), place.y());
}

StillCapture::StillPointer StillCapture::OnRoad(const QString& id) const
{
    const auto found = std::ranges::find(m_road, id, &Still::id);
    return found != m_road.end() ? *found : nullptr;
}

QString StillCapture::MarkOf(const QString& id) const
{
    return m_filing.Journal().Find(id) != nullptr ? PendingMark : QString();
}

void StillCapture::Place(const QString& id, int number, const QImage& thumbnail)
{
    m_pictures.Add({{id, number}, thumbnail, MarkOf(id)});
}

void StillCapture::ShowPending(const Visit& visit)
{
    for (const PictureRecord& picture : m_filing.Journal().Of(visit)) {
        if (picture.number > 0)
            ShowFiled(picture.id, visit, picture.number);
    }
    ShowUnnumbered(visit);
}

void StillCapture::ShowUnnumbered(const Visit& visit)
{
    for (const PictureRecord& picture : m_filing.Journal().Of(visit)) {
        if (picture.number == 0 && OnRoad(picture.id) == nullptr && m_pictures.Find({picture.id, 0}) < 0)
            Place(picture.id, 0,
                  Pictures().LoadWithin(StillFiles::LocalPath(picture.id), m_pictures.Grid().CellPixels(1, 1)));
    }
}

void StillCapture::ShowMoved(const QString& id)
{
    const PictureRecord* picture = m_filing.Journal().Find(id);
    const int number = picture != nullptr ? picture->number : 0;
    if (const StillPointer still = OnRoad(id)) {
        still->number = number;
        return;
    }
    later::Do(this, later::Placing, [this, id, number, visit = picture != nullptr ? picture->visit : Visit()] {
        if (m_pictures.Shown() != visit)
            return;
        // A fill may have found it by its row.
        if (const qsizetype at = m_pictures.Find({id, number}); at >= 0)
            m_pictures.Update(at, [&](VisitPictures::Picture& shown) {
                shown.id = id;
                shown.number = number;
            });
    });
}

void StillCapture::ShowFiled(const QString& id, const Visit& visit, int number)
{
    const QString path = visit.PicturePath(number);
    if (OnRoad(id) == nullptr && PictureExists(path) && m_pictures.Find({id, number}) < 0)
        Place(id, number, Pictures().LoadWithin(path, m_pictures.Grid().CellPixels(1, 1)));
}

void StillCapture::ShowNone()
{
    m_pictures.Clear();
    m_pictures.Show(CurrentVisit());
    m_read = {};
    TellTaken();
}

void StillCapture::ShowPictures(const Visit& visit, bool keepCursor)
{
    const auto tell = qScopeGuard([this] { TellTaken(); });
    const later::Hold hold(later::Fill);
    // The pictures of another visit may not stand there while this one's are awaited.
    m_pictures.Show(visit);
    m_lacksStored = false;
    m_arrived.clear();
    std::optional<later::Hold> placing;
    try {
        LoadCaptureList(visit, m_pictures, keepCursor, [&](const QList<int>& numbers) {
            placing.emplace(later::Placing);
            m_read = {visit, numbers};
        });
    } catch (const PlatformError&) {
        if (m_pictures.Shown() == visit) {
            ShowPending(visit);
            m_lacksStored = guard::Is<Away>(std::current_exception());
            if (m_lacksStored)
                m_askAgain.start();
        }
        throw;
    }
    // A later fill, of another visit's pictures, has ended this one.
    if (m_pictures.Shown() != visit)
        return;
    ShowPending(visit);
    // Their thumbnails came before the fill, their rows behind its question.
    for (const auto& [id, number] : QList(m_arrived))
        ShowFiled(id, visit, number);
}

void StillCapture::AskAgain()
{
    const auto answer = [self = QPointer(this), visit = CurrentVisit()](const std::exception_ptr& fault) {
        if (!self || self->m_finished || !self->m_lacksStored)
            return;
        if (fault != nullptr || visit != CurrentVisit())
            self->m_askAgain.start();
        else
            later::Do(self, later::Screen, [self] {
                if (self && std::exchange(self->m_lacksStored, false))
                    Q_EMIT self->CanBeShown();
            });
    };
    // Both have to answer; one that is held keeps its own line alone.
    m_filing.Pictures().Post([folder = CurrentVisit().captureDir, self = QPointer(this), answer] {
        FolderExists(folder);
        PostToScreen([self, answer] {
            if (self && !self->m_finished)
                QueueStatements(
                    self, [visit = CurrentVisit()] { NextCaptureNo(visit); }, answer);
        });
    });
}

void StillCapture::ShowSafe(const StillFiling::SafePicture& picture)
{
    if (const QString tidings = m_note.ShowStored(picture.visit, picture.note); !tidings.isEmpty())
        later::Do(this, later::Screen, [tidings] { ShowInformation(tidings); });
    if (m_pictures.Shown() == picture.visit)
        m_arrived.append({picture.id, picture.number});
    if (const StillPointer still = OnRoad(picture.id))
        Sound(still, true);
    ShowNumbered(picture.id, picture.visit, picture.number);
    Q_EMIT StillIsSafe(picture.visit, picture.number);
}

void StillCapture::ShowWaiting(const QString& id)
{
    if (const PictureRecord* picture = m_filing.Journal().Find(id))
        ShowNumbered(id, picture->visit, picture->number);
}

void StillCapture::ShowNumbered(const QString& id, const Visit& visit, int number)
{
    if (const StillPointer still = OnRoad(id)) {
        // Nothing is left to be heard of one that is safe.
        Sound(still, false);
        still->mayShow = true;
        ShowReady();
        return;
    }
    later::Do(this, later::Placing, [this, id, visit, number] {
        if (m_pictures.Shown() != visit)
            return;
        if (const qsizetype at = m_pictures.Find({id, number}); at >= 0)
            m_pictures.Update(at, [&](VisitPictures::Picture& shown) { shown.mark = MarkOf(id); });
        else
            ShowFiled(id, visit, number);
    });
}

void StillCapture::ShowOutage()
{
    const bool isAway = m_filing.IsDatabaseAway();
    const QString text = u"데이터베이스가 응답하지 않습니다. 그림은 파일로 저장되고 있습니다. (%1장 대기)"_s;
    Q_EMIT OutageChanged(isAway ? text.arg(m_filing.Journal().Waiting()) : QString());
    const int waiting = m_filing.Pictures().Waiting();
    const QString shareText = u"저장 폴더가 응답하지 않습니다. 그림은 이 컴퓨터에 보관되고 있습니다. (%1장 대기)"_s;
    Q_EMIT ShareOutageChanged(waiting > 0 ? shareText.arg(waiting) : QString());
}

bool StillCapture::IsAtRest() const
{
    return m_filing.IsAtRest() && (m_road.isEmpty() || later::IsHeld(later::Placing));
}

void StillCapture::Forget(const QString& id)
{
    if (const StillPointer still = OnRoad(id)) {
        m_road.removeOne(still);
        ShowReady();
    }
    m_filing.Forget(id);
    TellTaken();
}

void StillCapture::SaveVisitNote()
{
    const Visit visit = CurrentVisit();
    m_note.BringBack();
    m_filing.WriteWaiting();
    QStringList tidings{u"캡쳐이미지를 저장하였습니다."_s};
    if (const std::optional<TypedNote> typed = m_note.Typed(visit)) {
        const QString told = m_note.ShowTyped(visit, typed->text, m_filing.StoreTyped(visit, *typed), true);
        if (!told.isEmpty())
            tidings.append(told);
    } else {
        m_note.ShowPresent(visit);
    }
    Q_EMIT VisitIsStored(visit);
    later::Do(this, later::Screen, [this, visit, message = tidings.join(u"\r\n"_s)] { ShowSaved(visit, message); });
}

void StillCapture::ShowSaved(const Visit& visit, const QString& message)
{
    {
        const later::Hold hold(later::Fill);
        LoadVisitHistory(visit, u"A"_s);
        if (visit == CurrentVisit())
            ShowPictures(visit, false);
    }
    MarkVisitCaptured(visit, VisitContext.Jinchal, u"1"_s, MarkTableOfSetup());
    ShowInformation(message);
}

void StillCapture::SettleLeftovers(const QStringList& sections)
{
    m_leftovers.Settle(VisitContext.CaptureDir, sections);
}

void StillCapture::TellSettled(const Leftovers::Settled& settled)
{
    if (m_finished)
        return;
    if (settled.visits.contains(CurrentVisit()))
        Guarded([this] { ShowPictures(CurrentVisit(), false); });
    if (!settled.tidings.isEmpty())
        ShowInformation(settled.tidings.join(u"\r\n\r\n"_s));
}

void StillCapture::Finish()
{
    m_finished = true;
    m_askAgain.stop();
    m_leftovers.End();
    later::Drop(this, later::Placing);
    later::Finish(this, later::Screen);
    Guarded([this] {
        waiting::ServeFor(FilePatienceMs, [this] { return m_filing.Pictures().UnderWay() == 0; });
        if (!m_filing.IsDatabaseAway()) {
            m_filing.WriteWaiting();
            waiting::ServeFor(RowsPatienceMs, [this] { return m_filing.IsAtRest() || m_filing.IsDatabaseAway(); });
        }
        if (m_filing.Journal().Count() > 0) {
            ShowInformation(
                u"캡쳐 %1건의 기록을 데이터베이스에 저장하지 못했습니다.!!\r\n"
                "그림파일은 보관되어 있으며, 다음 실행시 다시 저장합니다.!!"_s.arg(m_filing.Journal().Count()),
                ClosingPatienceMs);
        }
    });
    m_filing.End();
}
