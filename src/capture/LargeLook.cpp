#include "capture/LargeLook.h"

#include "capture/CaptureHistory.h"
#include "capture/FullPicture.h"
#include "capture/Moments.h"
#include "capture/MomentsPanel.h"
#include "filing/StillFiles.h"
#include "frame/guard.h"
#include "frame/twips.h"
#include "records/acts.h"
#include "screenparts/LargePicture.h"
#include "screenparts/NoticeStrip.h"
#include "screenparts/VisitPictures.h"
#include "session/VisitContext.h"

using namespace Qt::StringLiterals;

namespace {
/// From the top of the live picture to the lower edge of the visit's grid.
constexpr QRect Room = RectFromTwips(0, 690, 8400, 9795);
constexpr QSize Corner(140, 105);
} // namespace

LargeLook::LargeLook(QWidget& form, CaptureHistory& history, FullPicture& live, NoticeStrip& strip, Moments& moments)
    : m_live(live), m_strip(strip), m_view(new LargePicture(form, Room))
{
    m_view->AddPictures(history.PicturesOf(1), u"이 방문의 그림"_s);
    m_view->AddPictures(history.PicturesOf(2), u"지난 방문의 그림"_s);
    m_view->OfferLive(u"영상"_s, Corner);
    m_view->setPathOf([](const Visit& visit, const ShownPicture& picture) {
        return picture.number > 0 ? LargeImages::Source{visit.PicturePath(picture.number)}
                                  : LargeImages::Source{StillFiles::LocalPath(picture.id), true};
    });
    for (const auto changed : {&LargePicture::Opened, &LargePicture::Closed, &LargePicture::PlacesChanged})
        connect(m_view, changed, this, &LargeLook::Arrange);
    connect(&strip, &NoticeStrip::Shown, this, &LargeLook::Arrange);
    OfferMoments(moments);
    connect(m_view, &LargePicture::PictureShown, this, [](const Visit& visit, int number) {
        // The current visit's pictures are before the operator all the time.
        if (visit != CurrentVisit())
            acts::Record(acts::Kind::LookedAt, visit, number, u"크게 보기"_s);
    });
}

void LargeLook::OfferMoments(Moments& moments)
{
    auto* panel = new MomentsPanel(moments, m_view);
    panel->hide();
    m_view->setFootFor([&moments, panel](const Visit& visit, const ShownPicture& picture) -> QWidget* {
        const QString id = moments.Find(visit, picture.number, picture.id);
        if (id.isEmpty())
            return nullptr;
        // Another station may have given the number to a picture of its own: then they go.
        moments.Confirm(id, [](bool) {});
        panel->ShowMoments(id);
        return panel;
    });
    connect(panel, &MomentsPanel::Chosen, m_view, &LargePicture::ShowImage);
}

void LargeLook::Arrange()
{
    if (!m_view->IsOpen()) {
        m_live.SetHome(nullptr, {}, {});
        return;
    }
    // No picture lies under the strip.
    m_view->setRoom(m_strip.isHidden() ? Room : Room.adjusted(0, 0, 0, -m_strip.height()));
    const std::optional<QRect> place = m_view->LivePlace();
    m_live.SetHome(place ? m_view : nullptr, place.value_or(QRect()), m_view->IsElsewhere() ? QRect() : Room);
}

void LargeLook::LeaveSection()
{
    if (!m_view->IsElsewhere())
        m_view->Close();
}

void LargeLook::End()
{
    m_view->Close();
}
