#include "screenparts/NoticeStrip.h"

#include "contracts/desktop.h"
#include "frame/controls.h"
#include "frame/forms.h"
#include "frame/guard.h"
#include "frame/plain_text.h"
#include "frame/waiting.h"

#include <QApplication>
#include <QHBoxLayout>
#include <QPushButton>
#include <QStyle>

using namespace Qt::StringLiterals;

namespace {
constexpr int OwnHeight = 26;
constexpr int FlashMs = 400;
/// Properties that the style sheet looks at.
constexpr char Alarm[] = "alarm";
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
    : QWidget(parent), m_text(new PlainLabel(this)), m_offer(new QPushButton(this)),
      m_cancel(new QPushButton(u"취소"_s, this))
{
    // Its ground is the style sheet's.
    setAttribute(Qt::WA_StyledBackground);
    Named(m_text, u"noticeText"_s, QString());
    // A long text takes the room that there is, and no more.
    m_text->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    Named(m_cancel, u"noticeCancel"_s, u"기다리기 취소"_s);
    m_cancel->setFocusPolicy(Qt::NoFocus);
    m_cancel->setProperty(ServedWhileWaiting, true);
    m_cancel->hide();
    m_offer->setObjectName(u"noticeOffer"_s);
    m_offer->setFocusPolicy(Qt::NoFocus);
    m_offer->hide();
    connect(m_offer, &QPushButton::clicked, this, GuardedSlot([this] {
                // It may take its own notice away.
                if (const std::function<void()> run = m_notices.begin()->second.offer.run)
                    run();
            }));
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(8, 1, 4, 1);
    row->addWidget(m_text, 1);
    row->addWidget(m_offer);
    row->addWidget(m_cancel);
    connect(m_cancel, &QPushButton::clicked, this, &NoticeStrip::Cancelled);
    m_flash.setSingleShot(true);
    m_flash.setInterval(FlashMs);
    connect(&m_flash, &QTimer::timeout, this, [this] { SetLook(Flashing, false); });
    hide();
}

void NoticeStrip::setNotice(Kind kind, const QString& text, const Offer& offer)
{
    if (text.isEmpty())
        m_notices.erase(kind);
    else
        m_notices[kind] = {text, offer};
    const Notice notice = m_notices.empty() ? Notice() : m_notices.begin()->second;
    const QString& shown = notice.text;
    m_offer->setText(CaptionText(notice.offer.caption));
    m_offer->setAccessibleName(notice.offer.caption);
    m_offer->setVisible(!notice.offer.caption.isEmpty());
    m_text->setText(shown);
    m_text->setAccessibleName(shown);
    SetLook(Alarm, !m_notices.empty() && m_notices.begin()->first == Date);
    setVisible(!shown.isEmpty());
    Q_EMIT Shown(!shown.isEmpty());
    if (!shown.isEmpty())
        raise();
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
    m_cancel->setVisible(mayCancel);
}

void ShowWaitsOnForms()
{
    waiting::setPresenter(Present);
}
