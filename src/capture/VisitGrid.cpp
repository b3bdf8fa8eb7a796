#include "capture/VisitGrid.h"

#include "contracts/fpSpread.h"
#include "contracts/pictures.h"
#include "contracts/PlatformError.h"
#include "frame/guard.h"
#include "frame/later.h"
#include "frame/services.h"
#include "records/capture_index.h"
#include "records/Statement.h"
#include "screenparts/fill_routines.h"
#include "screenparts/VisitPictures.h"
#include "session/VisitContext.h"

#include <QPointer>
#include <QScopeGuard>

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace {
/// So long after a fill that failed, share and database are asked whether they answer again.
constexpr int AskAgainMs = 1000;

/// Of a picture whose rows the database hasn't taken yet.
const QString PendingMark = u"기록 대기"_s;
} // namespace

VisitGrid::VisitGrid(VisitPictures& pictures, StillFiling& filing) : m_pictures(pictures), m_filing(filing)
{
    m_askAgain.setSingleShot(true);
    m_askAgain.setInterval(AskAgainMs);
    connect(&m_askAgain, &QTimer::timeout, this, &VisitGrid::AskAgain);
    connect(&m_filing.Stills(), &StillFiles::Moved, this, &VisitGrid::ShowMoved);
    connect(&m_filing, &StillFiling::Safe, this, &VisitGrid::ShowSafe);
    connect(&m_filing, &StillFiling::Waits, this, &VisitGrid::ShowWaiting);
}

VisitGrid::~VisitGrid() = default;

int VisitGrid::CountOnRoad(const Visit& visit) const
{
    return static_cast<int>(
        std::ranges::count_if(m_road, [&](const RoadPointer& still) { return still->visit == visit; }));
}

int VisitGrid::Taken() const
{
    const Visit visit = CurrentVisit();
    if (!later::IsHeld(later::Placing))
        return static_cast<int>(m_pictures.All().size()) + CountOnRoad(visit);
    // Pictures that are being filled tell nothing: what they are filled from does.
    if (m_pictures.Shown() != visit)
        return CountOnRoad(visit);
    const auto waiting = std::ranges::count_if(m_filing.Journal().Of(visit), [&](const PictureRecord& picture) {
        return picture.number == 0 && OnRoad(picture.id) == nullptr;
    });
    return static_cast<int>(m_read.second.size() + waiting) + CountOnRoad(visit);
}

bool VisitGrid::HasRoom(int awaited) const
{
    const int taken = Taken() + awaited;
    if (taken < MostPictures || !later::IsHeld(later::Placing))
        return taken < MostPictures;
    // Some of the rows may have lost their files.
    const Visit visit = CurrentVisit();
    const auto gone =
        std::ranges::count_if(m_read.second, [&](int number) { return !PictureExists(visit.PicturePath(number)); });
    return taken - gone < MostPictures;
}

bool VisitGrid::IsAtRest() const
{
    return m_road.isEmpty() || later::IsHeld(later::Placing);
}

void VisitGrid::Expect(const RoadPointer& still)
{
    m_road.append(still);
    TellTaken();
}

void VisitGrid::TakeContent(const RoadPointer& still, const QByteArray& content)
{
    still->thumbnail = Pictures().LoadContent(content, m_pictures.Grid().CellPixels(1, 1));
    connect(still->thumbnail.get(), &PictureBatch::Ready, this, &VisitGrid::ShowReady);
    ShowReady();
    Q_EMIT StillIsEncoded(still.get(), content);
}

void VisitGrid::TakeFiled(const RoadPointer& still, int number)
{
    Q_EMIT StillIsFiled(still.get(), number);
    still->number = number;
    still->mayShow |= number == 0;
    ShowReady();
    TellTaken();
}

void VisitGrid::Drop(const RoadPointer& still)
{
    m_road.removeOne(still);
    ShowReady();
    TellTaken();
}

void VisitGrid::Forget(const QString& id)
{
    if (const RoadPointer still = OnRoad(id))
        Drop(still);
    m_filing.Forget(id);
    Q_EMIT Forgotten(id);
    TellTaken();
}

void VisitGrid::ShowReady()
{
    for (const RoadPointer& still : QList(m_road)) {
        if (!still->mayShow || still->thumbnail == nullptr || !still->thumbnail->IsReady(0))
            return;
        if (!std::exchange(still->isShown, true))
            later::Do(this, later::Placing, [this, still] { ShowStill(still); });
    }
}

void VisitGrid::ShowStill(const RoadPointer& still)
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

VisitGrid::RoadPointer VisitGrid::OnRoad(const QString& id) const
{
    const auto found = std::ranges::find(m_road, id, &RoadStill::id);
    return found != m_road.end() ? *found : nullptr;
}

QString VisitGrid::MarkOf(const QString& id) const
{
    const PictureRecord* picture = m_filing.Journal().Find(id);
    return picture != nullptr && !picture->hasRows ? PendingMark : QString();
}

void VisitGrid::Place(const QString& id, int number, const QImage& thumbnail)
{
    m_pictures.Add({{id, number}, thumbnail, MarkOf(id)});
}

void VisitGrid::ShowPending(const Visit& visit)
{
    for (const PictureRecord& picture : m_filing.Journal().Of(visit)) {
        if (picture.number > 0)
            ShowFiled(picture.id, visit, picture.number);
    }
    ShowUnnumbered(visit);
}

void VisitGrid::ShowUnnumbered(const Visit& visit)
{
    for (const PictureRecord& picture : m_filing.Journal().Of(visit)) {
        if (picture.number == 0 && OnRoad(picture.id) == nullptr && m_pictures.Find({picture.id, 0}) < 0)
            Place(picture.id, 0,
                  Pictures().LoadWithin(StillFiles::LocalPath(picture.id), m_pictures.Grid().CellPixels(1, 1)));
    }
}

void VisitGrid::ShowMoved(const QString& id)
{
    const PictureRecord* picture = m_filing.Journal().Find(id);
    const int number = picture != nullptr ? picture->number : 0;
    if (const RoadPointer still = OnRoad(id)) {
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

void VisitGrid::ShowFiled(const QString& id, const Visit& visit, int number)
{
    const QString path = visit.PicturePath(number);
    if (OnRoad(id) == nullptr && PictureExists(path) && m_pictures.Find({id, number}) < 0)
        Place(id, number, Pictures().LoadWithin(path, m_pictures.Grid().CellPixels(1, 1)));
}

void VisitGrid::ShowNone()
{
    m_pictures.Clear();
    m_pictures.Show(CurrentVisit());
    m_read = {};
    TellTaken();
}

void VisitGrid::ShowPictures(const Visit& visit, bool keepCursor)
{
    const auto tell = qScopeGuard([this] { TellTaken(); });
    const later::Hold hold(later::Fill);
    // The pictures of another visit may not stand there while this one's are awaited.
    m_pictures.Show(visit);
    m_lacksStored = false;
    m_arrived.clear();
    std::optional<later::Hold> placing;
    const auto filled = [&] {
        ShowPending(visit);
        // Their thumbnails came before the fill, their rows behind its question.
        for (const auto& [id, number] : QList(m_arrived))
            ShowFiled(id, visit, number);
        // What is taken from here on has its place, also while a box stands over this fill.
        placing.reset();
        TellTaken();
    };
    try {
        LoadCaptureList(
            visit, m_pictures, keepCursor,
            [&](const QList<int>& numbers) {
                placing.emplace(later::Placing);
                m_read = {visit, numbers};
            },
            filled);
    } catch (const PlatformError&) {
        if (m_pictures.Shown() == visit) {
            ShowPending(visit);
            m_lacksStored = guard::Is<Away>(std::current_exception());
            if (m_lacksStored)
                m_askAgain.start();
        }
        throw;
    }
}

void VisitGrid::AskAgain()
{
    const auto answer = [self = QPointer(this), visit = CurrentVisit()](const std::exception_ptr& fault) {
        if (!self || self->m_hasEnded || !self->m_lacksStored)
            return;
        if (fault != nullptr || visit != CurrentVisit())
            self->m_askAgain.start();
        else
            later::Do(self, later::Screen, [self] {
                if (std::exchange(self->m_lacksStored, false))
                    Q_EMIT self->CanBeShown();
            });
    };
    // Both have to answer; one that is held keeps its own line alone.
    m_filing.Stills().Post([folder = CurrentVisit().captureDir, self = QPointer(this), answer] {
        FolderExists(folder);
        PostToScreen([self, answer] {
            if (self && !self->m_hasEnded)
                QueueStatements(
                    self, [visit = CurrentVisit()] { NextCaptureNo(visit); }, answer);
        });
    });
}

void VisitGrid::ShowSafe(const StillFiling::SafePicture& picture)
{
    if (m_pictures.Shown() == picture.visit)
        m_arrived.append({picture.id, picture.number});
    ShowNumbered(picture.id, picture.visit, picture.number);
}

void VisitGrid::ShowWaiting(const QString& id)
{
    if (const PictureRecord* picture = m_filing.Journal().Find(id))
        ShowNumbered(id, picture->visit, picture->number);
}

void VisitGrid::ShowNumbered(const QString& id, const Visit& visit, int number)
{
    if (const RoadPointer still = OnRoad(id)) {
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

void VisitGrid::End()
{
    m_hasEnded = true;
    m_askAgain.stop();
    later::Drop(this, later::Placing);
}
