#include "capture/StillCapture.h"

#include "capture/VisitNote.h"
#include "contracts/desktop.h"
#include "contracts/ImagXpress.h"
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
#include "session/VisitContext.h"
#include "text/text_routines.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {
constexpr int StillQuality = 90;
/// A frame that a press waits for is looked for so often.
constexpr int LookMs = 15;

/// What the closing waits for files that are being written, and for rows that are on their way.
constexpr int FilePatienceMs = 2500;
constexpr int RowsPatienceMs = 2000;
/// The message about what is left closes by itself.
constexpr int ClosingPatienceMs = 10000;
} // namespace

StillCapture::StillCapture(VisitGrid& grid, StillFiling& filing, VisitNote& note)
    : m_grid(grid), m_filing(filing), m_note(note),
      m_moments(std::make_unique<Moments>([this](const Moments::Filing& moment) { FileMoment(moment); }))
{
    m_look.setInterval(LookMs);
    m_look.setTimerType(Qt::PreciseTimer);
    connect(&m_look, &QTimer::timeout, this, &StillCapture::TakeAwaited);
    connect(&m_filing.Stills(), &StillFiles::Filed, this, [this](const QString& id) {
        if (const PictureRecord* picture = m_filing.Journal().Find(id))
            m_moments->setNumber(id, picture->number);
    });
    connect(&m_grid, &VisitGrid::Forgotten, m_moments.get(), &Moments::Forget);
    connect(&m_leftovers, &Leftovers::AreSettled, this, [this](const Leftovers::Settled& settled) {
        later::Do(this, later::Screen, [this, settled] { TellSettled(settled); });
    });
    connect(&m_filing, &StillFiling::Safe, this, &StillCapture::TakeSafe);
    // Nothing is left to be heard of one that is safe.
    connect(&m_filing, &StillFiling::Waits, this, [this](const QString& id) { Sound(id, false); });
    connect(&m_filing, &StillFiling::Tidings, this,
            [this](const QString& text) { later::Do(this, later::Screen, [text] { ShowInformation(text); }); });
}

StillCapture::~StillCapture() = default;

void StillCapture::SetCaptureValues(VideoCap& capture, const Filed& filed, PictureOrigin origin)
{
    Press press{&capture, CurrentVisit(), origin, filed, nullptr};
    const auto awaited = std::ranges::count(m_presses, press.visit, &Press::visit);
    // Answered before any message: what the operator is told may stand for long.
    if (Trim(press.visit.chart).isEmpty() || !m_grid.HasRoom(static_cast<int>(awaited))) {
        Q_EMIT Answered(false);
        HasChart();
        filed(nullptr);
        return;
    }
    // Those before it come first.
    if (m_presses.isEmpty()) {
        if (const std::shared_ptr<const StillFrame> frame = capture.HoldFrame()) {
            Q_EMIT Answered(true);
            TakeFrame(press, frame);
            return;
        }
    }
    press.awaited = capture.AwaitFrame();
    if (press.awaited == nullptr) {
        Q_EMIT Answered(false);
        throw PlatformError(u"캡쳐할 영상이 없습니다.!!"_s);
    }
    m_presses.append(press);
    m_look.start();
}

void StillCapture::TakeAwaited()
{
    while (!m_presses.isEmpty()) {
        const std::shared_ptr<const AwaitedFrame> awaited = m_presses.first().awaited;
        const bool isOver = awaited->IsOver(); // Asked first: the frame is there by then.
        const std::shared_ptr<const StillFrame> frame = awaited->Frame();
        if (frame == nullptr && !isOver)
            return;
        const Press press = m_presses.takeFirst();
        Q_EMIT Answered(frame != nullptr);
        Guarded([&] {
            if (frame != nullptr)
                TakeFrame(press, frame);
            else
                press.filed(nullptr);
        });
    }
    m_look.stop();
}

void StillCapture::TakeFrame(const Press& press, const std::shared_ptr<const StillFrame>& frame)
{
    // The microphone of a movie would hear it.
    const bool isHeard = ClientSetup.ShutterSound && press.capture != nullptr && !press.capture->CaptureMode();
    const auto moments = press.capture != nullptr ? press.capture->HoldMoments(*frame) : nullptr;
    const QString id = FileStill(
        {.visit = press.visit, .origin = press.origin, .encode = [frame] { return frame->EncodeJPEG(StillQuality); }},
        isHeard, press.filed);
    m_moments->Keep(id, press.visit, moments);
}

void StillCapture::FileMoment(const Moments::Filing& filing)
{
    if (filing.visit == CurrentVisit()) {
        FileWhereRoom(filing);
        return;
    }
    // The grid knows nothing of the other section; a database that doesn't answer leaves what is on its way.
    const auto stored = std::make_shared<qsizetype>(0);
    const auto count = [visit = filing.visit, stored] { *stored = StoredNumbers(visit, NumberOrder::Any).size(); };
    QueueStatements(this, count, [this, filing, stored](const std::exception_ptr& fault) {
        Guarded([&] {
            if (m_finished || (fault != nullptr && !guard::Is<DatabaseAway>(fault))) {
                filing.answered(false);
                guard::Rethrow(m_finished ? nullptr : fault);
                return;
            }
            if (filing.visit == CurrentVisit() ||
                *stored + m_filing.Journal().Of(filing.visit).size() < VisitGrid::MostPictures)
                FileWhereRoom(filing);
            else
                filing.answered(false);
        });
    });
}

void StillCapture::FileWhereRoom(const Moments::Filing& filing)
{
    if (filing.visit == CurrentVisit() && !m_grid.HasRoom()) {
        filing.answered(false);
        return;
    }
    FileStill({.visit = filing.visit,
               .encode = [content = filing.content] { return content; },
               .takenAt = filing.takenAt,
               .detail = filing.detail},
              false, [answered = filing.answered](const std::exception_ptr& fault) {
                  if (fault != nullptr)
                      answered(false);
                  guard::Rethrow(fault);
              });
}

void StillCapture::FilePicture(const ImagXpress& picture)
{
    if (!HasChart())
        return;
    const BusyPointer busy;
    if (!m_grid.HasRoom())
        return;
    FileStill({.visit = CurrentVisit(),
               .origin = PictureOrigin::Import,
               .encode = [content = picture.TargetContent()] { return content; }},
              false, guard::Rethrow);
}

bool StillCapture::FileContent(const Visit& visit, const QByteArray& content, const Filed& filed)
{
    if (!m_grid.HasRoom(static_cast<int>(std::ranges::count(m_presses, visit, &Press::visit))))
        return false;
    FileStill({.visit = visit, .origin = PictureOrigin::Import, .encode = [content] { return content; }}, false, filed);
    return true;
}

bool StillCapture::HasChart() const
{
    if (!Trim(CurrentVisit().chart).isEmpty())
        return true;
    ShowInformation(u"차트번호가 없습니다.!! 확인하세요.!1"_s);
    return false;
}

void StillCapture::Sound(const QString& id, bool isSafe)
{
    if (m_unheard.remove(id) && ServiceSlot<ShutterSound>() != nullptr)
        UseService<ShutterSound>().Play(isSafe ? ShutterSound::Safe : ShutterSound::Waiting);
}

QString StillCapture::FileStill(StillFiles::Picture picture, bool isHeard, const Filed& filed)
{
    if (picture.visit == CurrentVisit())
        m_note.BringBack();
    const auto still = std::make_shared<VisitGrid::RoadStill>(VisitGrid::RoadStill{picture.visit});
    picture.encoded = [this, still](const QByteArray& content) { m_grid.TakeContent(still, content); };
    picture.filed = [this, still, filed](int number, const std::exception_ptr& fault) {
        if (fault == nullptr)
            m_grid.TakeFiled(still, number);
        else
            m_grid.Drop(still);
        if (fault != nullptr) {
            m_unheard.remove(still->id);
            m_moments->Forget(still->id);
        } else if (number == 0) {
            Sound(still->id, false);
        }
        Guarded([&] { filed(fault); });
    };
    still->id = m_filing.Stills().File(picture);
    if (isHeard)
        m_unheard.insert(still->id);
    m_grid.Expect(still);
    return still->id;
}

void StillCapture::TakeSafe(const StillFiling::SafePicture& picture)
{
    if (const QString tidings = m_note.ShowStored(picture.visit, picture.note); !tidings.isEmpty())
        later::Do(this, later::Screen, [tidings] { ShowInformation(tidings); });
    Sound(picture.id, true);
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
            m_grid.ShowPictures(visit, false);
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
        Guarded([this] { m_grid.ShowPictures(CurrentVisit(), false); });
    if (!settled.tidings.isEmpty())
        ShowInformation(settled.tidings.join(u"\r\n\r\n"_s));
}

void StillCapture::Finish()
{
    // The device has stopped: none of these waits any more.
    TakeAwaited();
    m_presses.clear();
    m_look.stop();
    m_moments->End();
    m_finished = true;
    m_grid.End();
    m_leftovers.End();
    later::Finish(this, later::Screen);
    Guarded([this] {
        waiting::ServeFor(FilePatienceMs, [this] { return m_filing.Stills().UnderWay() == 0; });
        if (!m_filing.IsDatabaseAway()) {
            m_filing.WriteWaiting();
            const auto isOver = [this] {
                return (m_filing.IsAtRest() && m_filing.Marked().IsAtRest()) || m_filing.IsDatabaseAway();
            };
            waiting::ServeFor(RowsPatienceMs, isOver);
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
