#include "capture/StillCapture.h"

#include "capture/capture_rows.h"
#include "capture/VisitNote.h"
#include "contracts/desktop.h"
#include "contracts/fpSpread.h"
#include "contracts/guard.h"
#include "contracts/ImagXpress.h"
#include "contracts/pictures.h"
#include "contracts/PlatformError.h"
#include "contracts/VideoCap.h"
#include "records/capture_index.h"
#include "records/picture_grid.h"
#include "records/text/text_routines.h"

using namespace Qt::StringLiterals;

namespace {
constexpr int StillQuality = 90;
/// Row and column of the last number cell: a visit takes 50 stills.
constexpr int LastRow = 20;
constexpr int LastColumn = 5;
} // namespace

StillCapture::StillCapture(fpSpread& visitGrid, VisitNote& note)
    : m_grid(visitGrid), m_note(note), m_filing([this](const CaptureVisit& visit) { return m_note.NoteToStore(visit); },
                                                [this](const StillFiling::Safe& picture) { ShowSafe(picture); })
{
}

StillCapture::~StillCapture() = default;

void StillCapture::SetCaptureValues(VideoCap& capture)
{
    if (!HasChart())
        return;
    const BusyPointer busy;
    if (!HasRoom())
        return;
    const std::shared_ptr<const StillFrame> frame = capture.HoldFrame();
    if (frame == nullptr)
        throw PlatformError(u"캡쳐할 영상이 없습니다.!!"_s);
    const CaptureVisit visit = CaptureVisit::Current();
    InLine([this, visit, frame] { FileStill(visit, [&] { return frame->EncodeJPEG(StillQuality); }); });
}

void StillCapture::FilePicture(const ImagXpress& picture)
{
    if (!HasChart())
        return;
    const BusyPointer busy;
    if (!HasRoom())
        return;
    const CaptureVisit visit = CaptureVisit::Current();
    // The control may hold another picture by the time that the line comes to this one.
    InLine([this, visit, content = picture.TargetContent()] { FileStill(visit, [&] { return content; }); });
}

bool StillCapture::HasChart() const
{
    if (!Trim(CaptureVisit::Current().chart).isEmpty())
        return true;
    ShowInformation(u"차트번호가 없습니다.!! 확인하세요.!1"_s);
    return false;
}

bool StillCapture::HasRoom() const
{
    // A grid that is being filled tells nothing; it is looked at when the line goes on.
    return m_holds > 0 || !IsGridFull();
}

void StillCapture::SaveVisitNote()
{
    const CaptureVisit visit = CaptureVisit::Current();
    InLine([this, visit] { StoreNote(visit); });
}

void StillCapture::InLine(const std::function<void()>& work)
{
    if (m_holds == 0 && m_line.empty() && !m_working) {
        m_working = true;
        // The line goes on also when this piece of work ends with a fault.
        const auto end = qScopeGuard([this] {
            m_working = false;
            if (!m_line.empty())
                QMetaObject::invokeMethod(this, &StillCapture::WorkOff, Qt::QueuedConnection);
        });
        work();
        return;
    }
    m_line.push_back(work);
}

void StillCapture::Release()
{
    if (--m_holds == 0 && !m_line.empty())
        QMetaObject::invokeMethod(this, &StillCapture::WorkOff, Qt::QueuedConnection);
}

void StillCapture::WorkOff()
{
    if (m_working)
        return;
    m_working = true;
    while (m_holds == 0 && !m_line.empty()) {
        const std::function<void()> work = m_line.front();
        m_line.pop_front();
        Guarded(work);
    }
    m_working = false;
}

void StillCapture::Finish()
{
    while (!m_line.empty()) {
        const std::function<void()> work = m_line.front();
        m_line.pop_front();
        Guarded(work);
    }
    try {
        m_filing.WritePending();
    } catch (const PlatformError&) {
        ShowInformation(u"캡쳐 %1건의 기록을 데이터베이스에 저장하지 못했습니다.!!\r\n"
                        "그림파일은 보관되어 있으며, 다음 실행시 다시 저장합니다.!!"_s.arg(Pending().Count()));
    }
}

bool StillCapture::IsGridFull() const
{
    if (m_grid.DataRowCnt() < LastRow)
        return false;
    return !CellText(m_grid, LastColumn, LastRow).isEmpty();
}

void StillCapture::FileStill(const CaptureVisit& visit, const std::function<QByteArray()>& encode)
{
    const BusyPointer busy;
    const bool onScreen = visit == CaptureVisit::Current();
    if (onScreen && IsGridFull())
        return;
    if (onScreen)
        m_note.BringBack();
    const QByteArray picture = encode();
    m_thumbnail = Pictures().LoadContent(picture, m_grid.CellPixels(1, 1));
    const auto drop = qScopeGuard([this] { m_thumbnail.reset(); });
    const StillFiling::Filed filed = m_filing.File(visit, picture);
    if (!filed.rowsFault.isEmpty()) {
        throw PlatformError(u"그림파일은 저장하였으나 데이터베이스에 기록하지 못했습니다.!!\r\n"
                            "연결되면 다시 기록합니다.!!\r\n%1"_s.arg(filed.rowsFault));
    }
}

void StillCapture::ShowSafe(const StillFiling::Safe& picture)
{
    m_note.MarkStored(picture.visit, picture.note);
    if (picture.visit != CaptureVisit::Current())
        return;
    const QImage thumbnail =
        picture.waited ? Pictures().LoadWithin(VisitPicturePath(picture.visit, picture.number), m_grid.CellPixels(1, 1))
                       : m_thumbnail->Take(0);
    int row = 0;
    int column = 0;
    NextGridSlot(picture.number, row, column, 1, m_grid);
    PlacePicture(m_grid, row, column, thumbnail, picture.number);
    m_grid.SetActiveCell(1, row);
    m_grid.FlashCell(column, row);
}

void StillCapture::StoreNote(const CaptureVisit& visit)
{
    if (visit == CaptureVisit::Current())
        m_note.BringBack();
    m_filing.WritePending();
    const QString text = m_note.NoteToStore(visit).text;
    UpdateVisitNote(visit, text);
    // A visit without a picture has no row: its note then waits in the box for the first one.
    if (StoredNote(visit.chart, visit.ymd, visit.etc) == Trim(NoteForStore(text)))
        m_note.MarkStored(visit, text);
    {
        const Hold hold(*this);
        LoadVisitHistory(visit.chart, visit.yuhyung, visit.ymd, visit.captureDir, visit.etc, u"A"_s);
        if (visit == CaptureVisit::Current())
            LoadCaptureList(visit.chart, visit.yuhyung, visit.ymd, visit.captureDir, visit.etc, m_grid, 1, false);
    }
    MarkVisitCaptured(visit, u"1"_s);
    ShowInformation(u"캡쳐이미지를 저장하였습니다."_s);
}
