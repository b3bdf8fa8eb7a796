#include "capture/StillCapture.h"
#include "visit/VisitContext.h"

#include "capture/capture_folders.h"
#include "capture/NumberClaim.h"
#include "capture/VisitNote.h"
#include "contracts/fpSpread.h"
#include "contracts/ImagXpress.h"
#include "contracts/pictures.h"
#include "contracts/PlatformError.h"
#include "contracts/VideoCap.h"
#include "frame/guard.h"
#include "frame/services.h"
#include "records/capture_index.h"
#include "screenparts/fill_routines.h"
#include "screenparts/picture_grid.h"
#include "text/text_routines.h"

using namespace Qt::StringLiterals;

namespace {
constexpr int StillQuality = 90;
/// Row and column of the last number cell: a visit takes 50 stills.
constexpr int LastRow = 20;
constexpr int LastColumn = 5;
constexpr int MostPictures = 50;

/// Of a picture whose rows the database hasn't taken yet.
const QString PendingMark = u"기록 대기"_s;

void Tell(const QStringList& tidings)
{
    if (!tidings.isEmpty())
        ShowInformation(tidings.join(u"\r\n\r\n"_s));
}

bool IsGridFull(fpSpread& grid)
{
    return grid.DataRowCnt() >= LastRow && !CellText(grid, LastColumn, LastRow).isEmpty();
}
} // namespace

StillCapture::StillCapture(fpSpread& visitGrid, VisitNote& note)
    : m_grid(visitGrid), m_note(note),
      m_filing([this](const Visit& visit, bool mayAsk) { return m_note.NoteToStore(visit, mayAsk); },
               [this](const StillFiling::Safe& picture) { ShowSafe(picture); })
{
    connect(&m_leftovers, &LeftoverNumbers::Found, this, [this](const QList<LeftoverNumber>& numbers) {
        Guarded([&] { m_line.Command([this, numbers] { Settle(numbers); }); });
    });
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
    FileStill(CurrentVisit(), frame->EncodeJPEG(StillQuality));
}

void StillCapture::FilePicture(const ImagXpress& picture)
{
    if (!HasChart())
        return;
    const BusyPointer busy;
    if (HasRoom())
        FileStill(CurrentVisit(), picture.TargetContent());
}

bool StillCapture::HasChart() const
{
    if (!Trim(CurrentVisit().chart).isEmpty())
        return true;
    ShowInformation(u"차트번호가 없습니다.!! 확인하세요.!1"_s);
    return false;
}

bool StillCapture::HasRoom()
{
    if (!m_line.IsHeld())
        return !IsGridFull(m_grid);
    // A grid that is being filled tells nothing: what it is filled from does.
    const Visit visit = CurrentVisit();
    qsizetype pictures = m_filing.Pending().NumbersOf(visit).size();
    try {
        for (const int number : StoredNumbers(visit, NumberOrder::Any))
            pictures += PictureExists(visit.PicturePath(number)) ? 1 : 0;
    } catch (const PlatformError&) {
        // Better one picture too many than one lost.
        return true;
    }
    return pictures < MostPictures;
}

void StillCapture::FileStill(const Visit& visit, const QByteArray& picture)
{
    m_note.BringBack();
    const std::shared_ptr<PictureBatch> thumbnail = Pictures().LoadContent(picture, m_grid.CellPixels(1, 1));
    const StillFiling::Filed filed = m_filing.File(visit, picture);
    ShowStill(visit, filed.number, thumbnail);

    QStringList tidings = filed.tidings;
    if (!filed.rowsFault.isEmpty()) {
        tidings.prepend(u"그림파일은 저장하였으나 데이터베이스에 기록하지 못했습니다.!!\r\n"
                        "연결되면 다시 기록합니다.!!\r\n%1"_s.arg(filed.rowsFault));
    }
    if (!tidings.isEmpty())
        throw PlatformError(tidings.join(u"\r\n\r\n"_s));
}

void StillCapture::ShowStill(const Visit& visit, int number, const std::shared_ptr<PictureBatch>& thumbnail)
{
    const bool waits = m_line.IsHeld();
    m_line.Show([this, visit, number, thumbnail, waits] {
        if (visit != CurrentVisit())
            return;
        // A fill that it waited for may have found it already.
        std::optional<QPoint> place = waits ? FindPicture(m_grid, 1, number) : std::nullopt;
        if (!place)
            place = PlaceThumbnail(visit, number, thumbnail->Take(0));
        m_grid.SetActiveCell(1, place->y());
        m_grid.FlashCell(place->x(), place->y());
    });
}

QPoint StillCapture::PlaceThumbnail(const Visit& visit, int number, const QImage& thumbnail)
{
    int row = 0;
    int column = 0;
    NextGridSlot(number, row, column, 1, m_grid);
    PlacePicture(m_grid, row, column, thumbnail, number);
    if (m_filing.Pending().Holds(visit, number))
        MarkPicture(m_grid, column, row, PendingMark);
    return {column, row};
}

void StillCapture::ShowPending(const Visit& visit)
{
    for (const int number : m_filing.Pending().NumbersOf(visit)) {
        const QString path = visit.PicturePath(number);
        if (PictureExists(path) && !FindPicture(m_grid, 1, number))
            PlaceThumbnail(visit, number, Pictures().LoadWithin(path, m_grid.CellPixels(1, 1)));
    }
}

void StillCapture::ShowPictures(const Visit& visit, bool keepCursor)
{
    const FillLine::Hold hold(m_line);
    LoadCaptureList(visit, m_grid, 1, keepCursor);
    ShowPending(visit);
}

void StillCapture::ShowSafe(const StillFiling::Safe& picture)
{
    if (picture.note.typed) {
        // What can't be read back goes on counting as typed.
        try {
            m_note.CheckStored(picture.visit, picture.note.text);
        } catch (const PlatformError&) {
        }
    }
    if (!picture.waited)
        return;
    m_line.Show([this, visit = picture.visit, number = picture.number] {
        if (visit != CurrentVisit())
            return;
        if (const std::optional<QPoint> place = FindPicture(m_grid, 1, number))
            MarkPicture(m_grid, place->x(), place->y(), QString());
        else
            PlaceThumbnail(visit, number, Pictures().LoadWithin(visit.PicturePath(number), m_grid.CellPixels(1, 1)));
    });
}

void StillCapture::SaveVisitNote()
{
    const Visit visit = CurrentVisit();
    m_note.BringBack();
    QStringList tidings = m_filing.WritePending();
    const QString text = m_note.NoteToStore(visit, true).text;
    UpdateVisitNote(visit, text);
    const VisitNote::Kept kept = m_note.CheckStored(visit, text);
    tidings.prepend(u"캡쳐이미지를 저장하였습니다."_s);
    if (kept.hasRow && !kept.IsWhole()) {
        tidings.insert(1, u"참고사항이 길어 %1자 중 %2자만 저장되었습니다.!!"_s.arg(kept.wanted).arg(kept.stored));
    }
    m_line.Command([this, visit, message = tidings.join(u"\r\n"_s)] { ShowSaved(visit, message); });
}

void StillCapture::ShowSaved(const Visit& visit, const QString& message)
{
    {
        const FillLine::Hold hold(m_line);
        LoadVisitHistory(visit, u"A"_s);
        if (visit == CurrentVisit())
            ShowPictures(visit, false);
    }
    MarkVisitCaptured(visit, u"1"_s);
    ShowInformation(message);
}

void StillCapture::SettleLeftovers()
{
    const Visit visit = CurrentVisit();
    QList<PendingRows::Folder> folders = m_filing.Pending().LeftFolders();
    const auto add = [&](const QString& section) {
        const PendingRows::Folder folder{visit.captureDir, section};
        if (!Trim(section).isEmpty() && !folders.contains(folder))
            folders.append(folder);
    };
    for (const QString& section : SectionsOfClient())
        add(section);
    add(visit.etc);
    m_leftovers.LookIn(folders);
}

void StillCapture::Settle(const QList<LeftoverNumber>& numbers)
{
    if (m_finished)
        return;
    QStringList tidings;
    try {
        tidings = m_filing.WritePending();
        const int settled = WriteLeftoverRows(numbers);
        m_filing.Pending().LeftFoldersAreSettled();
        if (settled > 0)
            tidings.prepend(u"비정상 종료로 기록되지 않은 캡쳐 %1건을 복구하였습니다.!!"_s.arg(settled));
    } catch (const DatabaseAway&) {
        // They keep their claims, and a later start comes back to them.
    }
    for (const QString& owner : m_filing.Pending().ForeignOwners())
        tidings << u"다른 사용자(%1)의 기록되지 않은 캡쳐 목록이 있습니다.!! 그 사용자로 실행하여 주십시오.!!"_s.arg(
            owner);
    Tell(tidings);
}

int StillCapture::WriteLeftoverRows(const QList<LeftoverNumber>& numbers)
{
    int settled = 0;
    bool shown = false;
    const auto show = qScopeGuard([&] {
        if (shown)
            Guarded([this] { ShowPictures(CurrentVisit(), false); });
    });
    for (const auto& [visit, number] : numbers) {
        if (m_filing.Pending().Holds(visit, number))
            continue;
        try {
            if (!HasPictureRow(visit, number)) {
                SaveCaptureRows(visit, number, StoredNote(visit));
                ++settled;
                shown |= visit == CurrentVisit();
            }
            NumberClaim::Release(visit, number);
        } catch (const DatabaseAway&) {
            throw;
        } catch (const PlatformError& error) {
            qWarning("%s", error.what());
        }
    }
    return settled;
}

void StillCapture::Finish()
{
    m_finished = true;
    m_line.Finish();
    Guarded([this] {
        QStringList tidings;
        try {
            tidings = m_filing.WritePending();
        } catch (const DatabaseAway&) {
        }
        if (!m_filing.Pending().IsEmpty()) {
            tidings << u"캡쳐 %1건의 기록을 데이터베이스에 저장하지 못했습니다.!!\r\n"
                       "그림파일은 보관되어 있으며, 다음 실행시 다시 저장합니다.!!"_s.arg(m_filing.Pending().Count());
        }
        Tell(tidings);
    });
    m_filing.Pending().End();
}
