#include "capture/FilingNotices.h"

#include "contracts/files.h"
#include "contracts/PlatformError.h"
#include "filing/capture_folders.h"
#include "filing/capture_root.h"
#include "filing/MovieFiling.h"
#include "filing/StillFiling.h"
#include "frame/services.h"
#include "screenparts/NoticeStrip.h"
#include "session/VisitContext.h"

#include <QPointer>

using namespace Qt::StringLiterals;

namespace {
constexpr int RoomEachMs = 20'000;
/// Below this the operator is told. In bytes.
constexpr qint64 LeastBytes = 1'000'000'000;
} // namespace

FilingNotices::FilingNotices(NoticeStrip& strip, StillFiling& filing, MovieFiling& movies)
    : m_strip(strip), m_filing(filing), m_movies(movies)
{
    connect(&m_filing, &StillFiling::Changed, this, &FilingNotices::ShowOutage);
    connect(&m_movies, &MovieFiling::Changed, this, &FilingNotices::ShowMovies);
    connect(&m_roomTimer, &QTimer::timeout, this, &FilingNotices::AskForRoom);
    m_roomTimer.start(RoomEachMs);
    QTimer::singleShot(0, this, &FilingNotices::AskForRoom);
    capture_root::setListener([self = QPointer(this)] {
        if (self)
            self->ShowRoot();
    });
}

void FilingNotices::ShowOutage()
{
    const int atShare = m_filing.Stills().Waiting();
    const bool isShareAway = atShare > 0;
    // Those that wait for the share have no rows to wait for yet.
    const int atDatabase = m_filing.Journal().Waiting();
    const QString database = isShareAway
                                 ? u"데이터베이스가 응답하지 않습니다. (기록 %1건 대기)"_s
                                 : u"데이터베이스가 응답하지 않습니다. 그림은 파일로 저장되고 있습니다. (%1장 대기)"_s;
    m_strip.setNotice(NoticeStrip::Outage, m_filing.IsDatabaseAway() ? database.arg(atDatabase) : QString());
    const QString share = u"저장 폴더가 응답하지 않습니다. 그림은 이 컴퓨터에 보관되고 있습니다. (%1장 대기)"_s;
    m_strip.setNotice(NoticeStrip::Share, isShareAway ? share.arg(atShare) : QString());
}

void FilingNotices::ShowMovies()
{
    m_strip.setNotice(NoticeStrip::Movie, m_movies.IsAway()
                                              ? u"동영상을 저장 폴더로 옮기지 못하여 이 컴퓨터에 보관하고 있습니다."_s
                                              : QString());
}

void FilingNotices::ShowRoot()
{
    const QString refusal = capture_root::Refusal();
    m_strip.setNotice(NoticeStrip::Root, refusal, {u"이 폴더 사용"_s, [] {
                                                       if (AskYesNo(u"이 폴더를 캡쳐 폴더로 쓰시겠습니까?\r\n"
                                                                    "보관한 그림도 이 폴더로 옮겨집니다."_s))
                                                           capture_root::Accept();
                                                   }});
    if (refusal.isEmpty() && VisitContext.YmdIsValid)
        m_filing.MakeFoldersLater(CaptureFolders(ClientSetup.CaptureRoot, VisitContext.Ymd, SectionsOfClient()));
}

void FilingNotices::AskForRoom()
{
    if (m_isAskingForRoom)
        return;
    m_isAskingForRoom = true;
    m_filing.Stills().Post([self = QPointer(this), root = ClientSetup.CaptureRoot] {
        qint64 freeBytes = -1;
        try {
            freeBytes = Files().FreeBytes(root);
        } catch (const PlatformError&) {
            // A share that can't be asked is told of otherwise.
        }
        PostToScreen([self, freeBytes] {
            if (self)
                self->ShowRoom(freeBytes);
        });
    });
}

void FilingNotices::ShowRoom(qint64 freeBytes)
{
    m_isAskingForRoom = false;
    const bool isLow = freeBytes >= 0 && freeBytes < LeastBytes;
    m_strip.setNotice(NoticeStrip::Room,
                      isLow ? u"저장 폴더에 남은 공간이 적습니다. (%1MB)"_s.arg(freeBytes / 1'000'000) : QString());
}
