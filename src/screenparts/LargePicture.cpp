#include "screenparts/LargePicture.h"

#include "contracts/pictures.h"
#include "frame/guard.h"
#include "frame/later.h"
#include "screenparts/PictureCanvas.h"
#include "text/text_routines.h"

#include <QApplication>
#include <QBoxLayout>
#include <QCheckBox>
#include <QKeyEvent>
#include <QLabel>
#include <QToolButton>

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace {
/// So long a picture may take before the operator is told that it is being read.
constexpr int LateMs = 500;
/// What can come later waits so long, until the picture has been painted.
constexpr int AheadMs = 30;

bool IsSame(const ShownPicture& one, const ShownPicture& other)
{
    return one.id.isEmpty() || other.id.isEmpty() ? one.number == other.number && one.number > 0 : one.id == other.id;
}

qsizetype PlaceIn(const QList<ShownPicture>& pages, const ShownPicture& picture)
{
    const auto found = std::ranges::find_if(pages, [&](const ShownPicture& page) { return IsSame(page, picture); });
    return found != pages.end() ? found - pages.begin() : -1;
}
} // namespace

LargePicture::LargePicture(QWidget& form, const QRect& room) : QWidget(&form), m_form(form), m_room(room)
{
    BuildControls();
    hide();
    m_pathOf = [](const Visit& visit, const ShownPicture& picture) {
        return LargeImages::Source{picture.number > 0 ? visit.PicturePath(picture.number) : QString()};
    };
    m_late.setSingleShot(true);
    m_late.setInterval(LateMs);
    connect(&m_late, &QTimer::timeout, this, &LargePicture::TellLate);
    m_ahead.setSingleShot(true);
    m_ahead.setInterval(AheadMs);
    connect(&m_ahead, &QTimer::timeout, this, [this] {
        for (const Half& half : m_halves) {
            if (half.visit)
                m_images.Refine(half.source);
        }
        ReadAhead();
    });
    connect(&m_images, &LargeImages::Ready, this, GuardedSlot([this](const QString& path) {
        for (Half& half : m_halves) {
            if (m_isOpen && half.visit && half.source.path == path && half.image.isEmpty())
                Present(half);
        }
    }));
    connect(&m_images, &LargeImages::Refined, this, [this](const QString& path) {
        for (Half& half : m_halves) {
            const LargeImages::Picture* picture = m_images.Find(path);
            if (half.source.path == path && picture->image.cacheKey() == half.canvas->Picture().cacheKey())
                half.canvas->setReduced(picture->reduced);
        }
    });
    connect(&m_images, &LargeImages::Gone, this, GuardedSlot([this](const QString& path) {
        for (Half& half : m_halves) {
            // What a grid shows is followed by that.
            if (!half.visit || half.source.path != path || ListOf(half) != nullptr)
                continue;
            half.others.removeIf([&](const ShownPicture& other) { return IsSame(other, half.picture); });
            GiveWay(half, half.others);
        }
    }));
    // Behind what Qt does with the windows of a screen that has gone.
    connect(
        qApp, &QGuiApplication::screenRemoved, this,
        [this] {
            if (m_isOpen)
                Stand();
        },
        Qt::QueuedConnection);
}

LargePicture::~LargePicture() = default;

void LargePicture::setRoom(const QRect& room)
{
    if (std::exchange(m_room, room) != room && m_isOpen && !IsElsewhere())
        setGeometry(m_room);
}

void LargePicture::AddPictures(VisitPictures& pictures, const QString& caption)
{
    m_pictures.append({&pictures, caption});
    pictures.Grid().setLens(true);
    connect(&pictures.Grid(), &fpSpread::LensClicked, this,
            GuardedSlot([this, shown = QPointer(&pictures)](int column, int row) {
                if (const VisitPictures::Picture* picture = shown ? shown->At(column, row) : nullptr)
                    Open(*shown->Shown(), *picture);
            }));
    connect(&pictures, &VisitPictures::Changed, this, [this] {
        // Once for all, behind the fill that it comes from.
        if (m_isOpen && !std::exchange(m_followsLater, true))
            later::Post(this, later::Screen | later::Placing, [this] { Follow(); });
    });
}

void LargePicture::OfferLive(const QString& caption, QSize corner)
{
    m_live = caption;
    m_corner = corner;
}

void LargePicture::Open(const Visit& visit, const ShownPicture& picture, const QList<ShownPicture>& others)
{
    const bool comes = !std::exchange(m_isOpen, true);
    if (comes)
        m_told.clear();
    // It is being read while the view comes.
    Half& half = Active();
    half.visit = visit;
    half.others = others;
    Go(half, picture);
    if (comes) {
        Stand();
        Q_EMIT Opened();
    } else if (IsElsewhere()) {
        raise();
    }
}

void LargePicture::Close()
{
    if (!std::exchange(m_isOpen, false))
        return;
    const bool hadFocus = isAncestorOf(QApplication::focusWidget());
    m_late.stop();
    m_ahead.stop();
    SetSecond(false, false);
    for (Half& half : m_halves) {
        Half empty;
        empty.column = half.column;
        empty.canvas = half.canvas;
        empty.label = half.label;
        half = std::move(empty);
        half.canvas->ShowText({});
    }
    m_images.Want({});
    SetFoot(nullptr);
    m_footButton->setChecked(false);
    // What it has of the live picture goes back before it is seen no more.
    Q_EMIT Closed();
    hide();
    if (hadFocus && m_focusBefore && m_focusBefore->isVisible())
        m_focusBefore->setFocus();
    m_focusBefore.clear();
}

const VisitPictures* LargePicture::ListOf(const Half& half) const
{
    for (const auto& [pictures, caption] : m_pictures) {
        if (pictures && half.visit && pictures->Shown() == half.visit)
            return pictures;
    }
    return nullptr;
}

QList<ShownPicture> LargePicture::PagesOf(const Half& half) const
{
    const VisitPictures* list = ListOf(half);
    return list != nullptr ? QList<ShownPicture>(list->All().begin(), list->All().end()) : half.others;
}

void LargePicture::Go(Half& half, const ShownPicture& picture)
{
    half.picture = picture;
    half.at = qMax(qsizetype(0), PlaceIn(PagesOf(half), picture));
    half.image.clear();
    Request(half, false);
}

void LargePicture::Request(Half& half, bool keepView)
{
    half.source = m_pathOf(*half.visit, half.picture);
    half.isShown = false;
    half.isLate = false;
    half.keepView = keepView;
    if (const LargeImages::Picture* known = m_images.Find(half.source.path); known != nullptr) {
        // A fault may have passed.
        if (known->fault.isEmpty())
            Present(half);
        else
            m_images.Forget(half.source.path);
    } else if (half.source.path.isEmpty()) {
        half.isShown = true;
        half.caption = CaptionOf(half);
        half.canvas->ShowText(u"아직 볼 수 없는 그림입니다.!!"_s);
    }
    if (!half.isShown)
        m_late.start();
    ReadAhead();
    ShowState();
}

void LargePicture::ReadAhead()
{
    QList<LargeImages::Source> wanted;
    for (const size_t at : {m_active, 1 - m_active}) {
        if (m_halves[at].visit)
            wanted << m_halves[at].source;
    }
    // While the canvas still shows the picture before, that is one of the three.
    const bool isAwaited = std::ranges::any_of(m_halves, [](const Half& half) { return half.visit && !half.isShown; });
    if (const Half& half = Active(); half.visit && !isAwaited) {
        const QList<ShownPicture> pages = PagesOf(half);
        for (const qsizetype at : {half.at + 1, half.at - 1}) {
            if (at >= 0 && at < pages.size())
                wanted << m_pathOf(*half.visit, pages[at]);
        }
    }
    m_images.Want(wanted);
}

void LargePicture::Present(Half& half)
{
    const LargeImages::Picture& picture = *m_images.Find(half.source.path);
    half.isShown = true;
    if (picture.fault.isEmpty()) {
        half.canvas->ShowPicture(picture.image, half.keepView);
        half.canvas->setReduced(picture.reduced);
    } else {
        half.canvas->ShowText(picture.fault);
    }
    // Read once more, it keeps what is seen of it.
    half.keepView = true;
    half.caption = CaptionOf(half);
    if (&half == &Active())
        ShowFoot();
    m_ahead.start();
    ShowState();
    const std::pair told(*half.visit, half.picture.number);
    if (half.canvas->Picture().isNull() || m_told.contains(told))
        return;
    m_told << told;
    Q_EMIT PictureShown(told.first, told.second);
}

void LargePicture::TellLate()
{
    for (Half& half : m_halves) {
        if (!half.visit || half.isShown)
            continue;
        half.isLate = true;
        half.caption = CaptionOf(half);
        half.canvas->ShowText(u"그림을 읽고 있습니다."_s);
        half.keepView = false;
    }
    ShowState();
}

QString LargePicture::CaptionOf(const Half& half) const
{
    const QString number = half.picture.number > 0 ? NumberText(half.picture.number) : u"대기"_s;
    QString caption = u"%1 %2 %3"_s.arg(LayIntoMask(half.visit->ymd, u"0000-00-00"), half.visit->etc.trimmed(), number);
    const LargeImages::Picture* picture = m_images.Find(half.source.path);
    if (picture == nullptr)
        return caption;
    if (!picture->fileSize.isEmpty())
        caption += u" (%1 x %2에서 줄임)"_s.arg(picture->fileSize.width()).arg(picture->fileSize.height());
    if (!CutFileName(picture->image).isEmpty())
        caption += u" (잘린 파일)"_s;
    return caption;
}

void LargePicture::Turn(int pages)
{
    Half& half = Active();
    if (!half.visit)
        return;
    const QList<ShownPicture> all = PagesOf(half);
    const qsizetype here = PlaceIn(all, half.picture);
    const qsizetype at = (here >= 0 ? here : half.at) + pages;
    if (at >= 0 && at < all.size())
        Go(half, all[at]);
}

void LargePicture::Follow()
{
    m_followsLater = false;
    for (Half& half : m_halves) {
        if (m_isOpen && half.visit)
            FollowHalf(half);
    }
    if (m_isOpen)
        ShowState();
}

void LargePicture::FollowHalf(Half& half)
{
    if (ListOf(half) == nullptr) {
        // Another line or section is shown: it stays for as long as it is there.
        m_images.Check(half.source);
        return;
    }
    const QList<ShownPicture> pages = PagesOf(half);
    const qsizetype at = PlaceIn(pages, half.picture);
    if (at < 0) {
        GiveWay(half, pages);
        return;
    }
    half.at = at;
    half.picture = pages[at];
    // It has come from this machine's disk to the archive.
    if (m_pathOf(*half.visit, half.picture).path != half.source.path && half.image.isEmpty())
        Request(half, true);
    else
        m_images.Check(half.source);
}

void LargePicture::GiveWay(Half& half, const QList<ShownPicture>& left)
{
    if (!left.isEmpty())
        Go(half, left[qMin(half.at, left.size() - 1)]);
    else if (&half == &m_halves[1])
        SetSecond(false, false);
    else
        Close();
}

void LargePicture::SetFoot(QWidget* foot)
{
    if (m_foot == foot)
        return;
    if (m_foot)
        m_foot->hide();
    m_foot = foot;
    if (foot == nullptr)
        return;
    foot->setParent(this);
    m_footRow->addWidget(foot);
    foot->show();
}

void LargePicture::setFootFor(FootFor footFor)
{
    m_footFor = std::move(footFor);
}

void LargePicture::ShowFoot()
{
    const Half& half = Active();
    QWidget* foot = m_footFor && half.visit ? m_footFor(*half.visit, half.picture) : nullptr;
    m_footButton->setVisible(foot != nullptr);
    SetFoot(foot);
    if (foot != nullptr)
        foot->setVisible(m_footButton->isChecked());
}

void LargePicture::ShowImage(const QImage& image, const QString& caption)
{
    Half& half = Active();
    if (!m_isOpen || !half.visit)
        return;
    half.image = caption;
    half.caption = caption;
    half.isShown = true;
    half.canvas->ShowPicture(image, true);
    ShowState();
}

void LargePicture::Link(const Half& moved)
{
    if (m_hasSecond && !m_isLive && m_linked->isChecked() && !moved.canvas->Picture().isNull()) {
        Half& other = &moved == &m_halves[0] ? m_halves[1] : m_halves[0];
        other.canvas->See(moved.canvas->Seen());
    }
    ShowState();
}

void LargePicture::keyPressEvent(QKeyEvent* event)
{
    switch (event->key()) {
    case Qt::Key_Escape:
        Close();
        break;
    case Qt::Key_Left:
    case Qt::Key_Up:
        TurnBack();
        break;
    case Qt::Key_Right:
    case Qt::Key_Down:
        TurnOn();
        break;
    default:
        QWidget::keyPressEvent(event);
    }
}
