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
#include "screenparts/fill_routines.h"
#include "session/VisitContext.h"
#include "text/text_routines.h"

using namespace Qt::StringLiterals;

namespace {
constexpr int StillQuality = 90;

/// What the closing waits for files that are being written, and for rows that are on their way.
constexpr int FilePatienceMs = 2500;
constexpr int RowsPatienceMs = 2000;
/// The message about what is left closes by itself.
constexpr int ClosingPatienceMs = 10000;
} // namespace

StillCapture::StillCapture(VisitGrid& grid, StillFiling& filing, VisitNote& note)
    : m_grid(grid), m_filing(filing), m_note(note)
{
    connect(&m_leftovers, &Leftovers::AreSettled, this, [this](const Leftovers::Settled& settled) {
        later::Do(this, later::Screen, [this, settled] { TellSettled(settled); });
    });
    connect(&m_filing, &StillFiling::Safe, this, &StillCapture::TakeSafe);
    // Nothing is left to be heard of one that is safe.
    connect(&m_filing, &StillFiling::Waits, this, [this](const QString& id) { Sound(id, false); });
    connect(&m_filing, &StillFiling::Tidings, this,
            [this](const QString& text) { later::Do(this, later::Screen, [text] { ShowInformation(text); }); });
}

void StillCapture::SetCaptureValues(VideoCap& capture, const Filed& filed, PictureOrigin origin)
{
    // Before any message: what the operator is told may stand for long.
    const bool hasPlace = !Trim(CurrentVisit().chart).isEmpty() && m_grid.HasRoom();
    const std::shared_ptr<const StillFrame> frame = hasPlace ? capture.HoldFrame() : nullptr;
    Q_EMIT Answered(frame != nullptr);
    if (!hasPlace) {
        HasChart();
        filed(nullptr);
        return;
    }
    if (frame == nullptr)
        throw PlatformError(u"캡쳐할 영상이 없습니다.!!"_s);
    // The microphone of a movie would hear it.
    const bool isHeard = ClientSetup.ShutterSound && !capture.CaptureMode();
    FileStill(
        CurrentVisit(), origin, [frame] { return frame->EncodeJPEG(StillQuality); }, isHeard, filed);
}

void StillCapture::FilePicture(const ImagXpress& picture)
{
    if (!HasChart())
        return;
    const BusyPointer busy;
    if (!m_grid.HasRoom())
        return;
    FileStill(
        CurrentVisit(), PictureOrigin::Import, [content = picture.TargetContent()] { return content; }, false,
        guard::Rethrow);
}

bool StillCapture::FileContent(const Visit& visit, const QByteArray& content, const Filed& filed)
{
    if (!m_grid.HasRoom())
        return false;
    FileStill(
        visit, PictureOrigin::Import, [content] { return content; }, false, filed);
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

void StillCapture::FileStill(const Visit& visit, PictureOrigin origin, const std::function<QByteArray()>& encode,
                             bool isHeard, const Filed& filed)
{
    m_note.BringBack();
    const auto still = std::make_shared<VisitGrid::Still>(VisitGrid::Still{visit});
    still->id = m_filing.Pictures().File(
        {visit, origin, encode, [this, still](const QByteArray& content) { m_grid.TakeContent(still, content); },
         [this, still, filed](int number, const std::exception_ptr& fault) {
             if (fault == nullptr)
                 m_grid.TakeFiled(still, number);
             else
                 m_grid.Drop(still);
             if (fault != nullptr)
                 m_unheard.remove(still->id);
             else if (number == 0)
                 Sound(still->id, false);
             Guarded([&] { filed(fault); });
         }});
    if (isHeard)
        m_unheard.insert(still->id);
    m_grid.Expect(still);
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
    m_finished = true;
    m_grid.End();
    m_leftovers.End();
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
