#include "screenparts/NoticeStrip.h"

#include "contracts/desktop.h"
#include "frame/controls.h"
#include "frame/forms.h"
#include "frame/guard.h"
#include "frame/plain_text.h"
#include "frame/waiting.h"
#include "screenparts/NoticeList.h"

#include <QApplication>
#include <QBoxLayout>
#include <QFontInfo>
#include <QMouseEvent>
#include <QPushButton>
#include <QStyle>

#include <utility>

using namespace Qt::StringLiterals;

namespace {
constexpr int OwnHeight = 26;
constexpr int FlashMs = 400;
/// Properties that the style sheet looks at.
constexpr char Alarm[] = "alarm";
constexpr char Fault[] = "fault";
constexpr char Flashing[] = "flashing";
const QString OwnName = u"waitNotice"_s;

/// The form that the operator has before him; null when none is shown.
StationForm* FormInFront()
{
    for (QWidget* window : {QApplication::activeModalWidget(), QApplication::activeWindow()}) {
        if (auto* form = qobject_cast<StationForm*>(window))
            return form;
    }
    return LastSeenForm();
}

void Show(NoticeStrip& strip, const waiting::Notice& notice)
{
    strip.setNotice(NoticeStrip::Waiting, notice.text);
    strip.setMayCancel(notice.mayCancel && !notice.text.isEmpty());
}

void Present(const waiting::Notice& notice)
{
    StationForm* front = notice.text.isEmpty() ? nullptr : FormInFront();
    if (front != nullptr && front->findChild<NoticeStrip*>() == nullptr) {
        auto* own = Named(new NoticeStrip(front), OwnName, u"알림"_s,
                          QRect(0, front->height() - OwnHeight, front->width(), OwnHeight));
        QObject::connect(own, &NoticeStrip::Cancelled, own, [] { waiting::Cancel(); });
    }
    for (const StationForm* form : LoadedForms()) {
        for (NoticeStrip* strip : form->findChildren<NoticeStrip*>()) {
            Show(*strip, notice);
            if (notice.text.isEmpty() && strip->objectName() == OwnName)
                strip->deleteLater();
        }
    }
}
} // namespace

NoticeStrip::NoticeStrip(QWidget* parent)
    : QWidget(parent), m_row(new QBoxLayout(QBoxLayout::LeftToRight, this)), m_text(new PlainLabel(this)),
      m_further(new PlainLabel(this)), m_offer(new QPushButton(this)), m_cancel(new QPushButton(u"취소"_s, this))
{
    // Its ground is the style sheet's.
    setAttribute(Qt::WA_StyledBackground);
    Named(m_text, u"noticeText"_s, QString());
    // A long text takes the room that there is, and no more.
    m_text->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    Named(m_further, u"noticeFurther"_s, QString());
    m_further->hide();
    Named(m_cancel, u"noticeCancel"_s, u"기다리기 취소"_s);
    m_cancel->setFocusPolicy(Qt::NoFocus);
    m_cancel->hide();
    // What the strip says can be read during a wait, too.
    for (QWidget* each :
         {static_cast<QWidget*>(m_text), static_cast<QWidget*>(m_further), static_cast<QWidget*>(m_cancel)})
        each->setProperty(ServedWhileWaiting, true);
    m_offer->setObjectName(u"noticeOffer"_s);
    m_offer->setFocusPolicy(Qt::NoFocus);
    m_offer->hide();
    connect(m_offer, &QPushButton::clicked, this, GuardedSlot([this] {
                const auto notices = Notices();
                // It may take its own notice away.
                if (const std::function<void()> run = notices.isEmpty() ? nullptr : notices.first().second.offer.run)
                    run();
            }));
    m_row->setContentsMargins(8, 1, 4, 1);
    m_row->addWidget(m_text, 1);
    m_row->addWidget(m_further);
    m_row->addWidget(m_offer);
    m_row->addWidget(m_cancel);
    connect(m_cancel, &QPushButton::clicked, this, &NoticeStrip::Cancelled);
    m_flash.setSingleShot(true);
    m_flash.setInterval(FlashMs);
    connect(&m_flash, &QTimer::timeout, this, [this] { SetLook(Flashing, false); });
    hide();
}

NoticeStrip::~NoticeStrip() = default;

void NoticeStrip::setNotice(Kind kind, const QString& text, const Offer& offer)
{
    if (text.isEmpty())
        m_notices.erase(kind);
    else
        m_notices[kind] = {text, offer, {}};
    Present();
}

void NoticeStrip::setChoices(Kind kind, const QString& text, const QList<Choice>& choices)
{
    if (text.isEmpty())
        m_notices.erase(kind);
    else
        m_notices[kind] = {text, {u"고르기"_s, [this] { ToggleList(); }}, choices};
    Present();
}

QList<std::pair<NoticeStrip::Kind, NoticeStrip::Notice>> NoticeStrip::Notices() const
{
    QList<std::pair<Kind, Notice>> notices;
    for (const auto& [kind, notice] : m_notices) {
        // Who wants to give it up finds the button at once.
        if (MayCancel(kind))
            notices.prepend({kind, notice});
        else
            notices.append({kind, notice});
    }
    return notices;
}

void NoticeStrip::Present()
{
    const auto notices = Notices();
    const auto [kind, notice] = notices.isEmpty() ? std::pair(Patient, Notice()) : notices.first();
    const QString& shown = notice.text;
    m_offer->setText(CaptionText(notice.offer.caption));
    m_offer->setAccessibleName(notice.offer.caption);
    m_offer->setVisible(!notice.offer.caption.isEmpty());
    m_cancel->setVisible(MayCancel(kind) && !shown.isEmpty());
    m_text->setText(shown);
    m_text->setAccessibleName(shown);
    const QString further = notices.size() > 1 ? u"외 %1건"_s.arg(notices.size() - 1) : QString();
    m_further->setText(further);
    m_further->setAccessibleName(further);
    m_further->setVisible(!further.isEmpty());
    SetLook(Alarm, !shown.isEmpty() && kind == Date);
    SetLook(Fault, !shown.isEmpty() && IsFault(kind));
    setVisible(!shown.isEmpty());
    Q_EMIT Shown(!shown.isEmpty());
    if (!shown.isEmpty())
        raise();
    Q_EMIT Changed();
}

void NoticeStrip::setLook(double scale, bool isNarrow)
{
    m_row->setDirection(isNarrow ? QBoxLayout::TopToBottom : QBoxLayout::LeftToRight);
    m_text->setWordWrap(isNarrow);
    const QWidget* usual = window();
    QFont font = parentWidget() != nullptr ? parentWidget()->font() : usual->font();
    if (scale > 1)
        font.setPixelSize(qRound(QFontInfo(font).pixelSize() * scale));
    setFont(font);
    for (QWidget* each : {static_cast<QWidget*>(m_text), static_cast<QWidget*>(m_further),
                          static_cast<QWidget*>(m_offer), static_cast<QWidget*>(m_cancel)})
        each->setFont(font);
}

void NoticeStrip::mousePressEvent(QMouseEvent* event)
{
    if (event->button() == Qt::LeftButton)
        ToggleList();
}

void NoticeStrip::ToggleList()
{
    if (m_list && m_list->isVisible()) {
        m_list->hide();
        m_list->deleteLater();
        return;
    }
    m_list = new NoticeList(*this);
    m_list->show();
}

void NoticeStrip::Flash()
{
    SetLook(Flashing, true);
    m_flash.start();
}

void NoticeStrip::SetLook(const char* property, bool on)
{
    if (this->property(property).toBool() == on)
        return;
    setProperty(property, on);
    for (QWidget* each : {static_cast<QWidget*>(this), static_cast<QWidget*>(m_text)}) {
        each->style()->unpolish(each);
        each->style()->polish(each);
    }
}

void NoticeStrip::setMayCancel(bool mayCancel)
{
    if (mayCancel == std::exchange(m_mayCancel, mayCancel))
        return;
    Present();
}

void ShowWaitsOnForms()
{
    waiting::setPresenter(Present);
}
