#include "platform/disc/BurnWindow.h"

#include "contracts/desktop.h"
#include "frame/controls.h"
#include "frame/forms.h"
#include "frame/guard.h"
#include "frame/plain_text.h"

#include <QCloseEvent>
#include <QKeyEvent>
#include <QProgressBar>
#include <QPushButton>
#include <QScreen>
#include <QTimer>
#include <QVBoxLayout>
#include <QWindow>

using namespace Qt::StringLiterals;

namespace {
constexpr int WidthPixels = 460;
constexpr int BarSteps = 1000;
constexpr int SettledMs = 200;
} // namespace

BurnWindow::BurnWindow()
{
    setObjectName(u"burnWindow"_s);
    setWindowTitle(u"CD저장"_s);
    // Other windows are nobody's.
    setWindowFlags(Qt::Dialog);
    setAttribute(Qt::WA_StyledBackground);
    m_lblStage = Named(new PlainLabel(this), u"lblStage"_s, u"상태"_s);
    m_lblStage->setTextFormat(Qt::PlainText);
    m_lblStage->setWordWrap(true);
    m_barBurn = Named(new QProgressBar(this), u"barBurn"_s, u"진행"_s);
    m_lblDetail = Named(new PlainLabel(this), u"lblDetail"_s, u"속도와 남은 시간"_s);
    m_lblRemark = Named(new PlainLabel(this), u"lblRemark"_s, u"알림"_s);
    m_lblRemark->setWordWrap(true);
    m_lblRemark->hide();
    m_cmdCancel = Named(new QPushButton(u"취소"_s, this), u"cmdCancel"_s, u"취소"_s);
    // Whoever waits for the end waits for this.
    m_cmdCancel->setProperty(ServedWhileWaiting, true);
    m_cmdEmpty = Named(new QPushButton(u"저장한 파일 비우기"_s, this), u"cmdEmpty"_s, u"저장한 파일 비우기"_s);
    m_cmdClose = Named(new QPushButton(u"닫기"_s, this), u"cmdClose"_s, u"닫기"_s);

    auto* buttons = new QHBoxLayout;
    buttons->addWidget(m_cmdEmpty);
    buttons->addStretch();
    buttons->addWidget(m_cmdCancel);
    buttons->addWidget(m_cmdClose);
    auto* lines = new QVBoxLayout(this);
    lines->addWidget(m_lblStage);
    lines->addWidget(m_barBurn);
    lines->addWidget(m_lblDetail);
    lines->addWidget(m_lblRemark);
    lines->addLayout(buttons);

    connect(m_cmdCancel, &QPushButton::clicked, this, GuardedSlot([this](bool) {
                m_cmdCancel->setEnabled(false);
                Q_EMIT CancelPressed();
            }));
    connect(m_cmdEmpty, &QPushButton::clicked, this, GuardedSlot([this](bool) {
                m_cmdEmpty->setEnabled(false);
                Q_EMIT EmptyPressed();
            }));
    connect(m_cmdClose, &QPushButton::clicked, this, GuardedSlot([this](bool) { close(); }));
}

void BurnWindow::setScreen(QWidget* screen)
{
    if (m_screen == screen)
        return;
    m_screen = screen;
    // It goes on over the screen that is left.
    if (auto* form = qobject_cast<StationForm*>(screen))
        connect(form, &StationForm::Unloaded, this, [this] {
            if (isVisible()) {
                hide();
                Bring();
            }
        });
}

void BurnWindow::setRemark(const QString& text)
{
    m_lblRemark->setText(text);
    m_lblRemark->setVisible(!text.isEmpty());
    if (isVisible())
        Bring();
}

/// A window manager keeps it in front of its screen, and of no other, from when it is shown.
QWidget* BurnWindow::StandOverScreen()
{
    QWidget* owner = m_screen && m_screen->isVisible() ? m_screen.data() : LastSeenForm();
    windowHandle()->setTransientParent(owner != nullptr ? owner->windowHandle() : nullptr);
    return owner;
}

void BurnWindow::Bring()
{
    winId();
    const QWidget* owner = isVisible() ? nullptr : StandOverScreen();
    setFixedSize(WidthPixels, layout()->totalHeightForWidth(WidthPixels));
    if (!isVisible()) {
        if (owner != nullptr) {
            // The frame that it will get is that of the screen.
            const QRect frame = owner->frameGeometry();
            const QSize margins = frame.size() - owner->size();
            QRect place(QPoint(), size() + margins);
            place.moveCenter(frame.center());
            const QPoint at = MovedInside(place, owner->screen()->availableGeometry()).topLeft();
            move(at);
            windowHandle()->setFramePosition(at);
        }
        show();
    }
    raise();
    // What the window manager has made of it is known a moment later.
    QTimer::singleShot(SettledMs, this, [this] { StayInSight(); });
}

void BurnWindow::StayInSight()
{
    const QRect frame = frameGeometry();
    const QPoint at = MovedInside(frame, screen()->availableGeometry()).topLeft();
    if (isVisible() && at != frame.topLeft())
        windowHandle()->setFramePosition(at);
}

void BurnWindow::ShowStage(const QString& text, bool canCancel)
{
    m_working = true;
    m_lblStage->setText(text);
    m_barBurn->show();
    m_lblDetail->show();
    m_cmdCancel->show();
    m_cmdCancel->setEnabled(canCancel);
    m_cmdCancel->setToolTip(canCancel ? QString() : u"이 CD는 쓰는 동안 멈출 수 없습니다."_s);
    m_cmdEmpty->hide();
    m_cmdClose->hide();
    ShowProgress(-1, QString());
    Bring();
}

void BurnWindow::ShowProgress(double share, const QString& detail)
{
    m_barBurn->setRange(0, share < 0 ? 0 : BarSteps);
    m_barBurn->setValue(share < 0 ? 0 : qBound(0, qRound(share * BarSteps), BarSteps));
    m_barBurn->setTextVisible(share >= 0);
    m_lblDetail->setText(detail);
}

void BurnWindow::ShowEnd(const QString& text, bool canEmpty)
{
    m_working = false;
    m_lblStage->setText(text);
    m_barBurn->hide();
    m_lblDetail->hide();
    m_cmdCancel->hide();
    m_cmdEmpty->setVisible(canEmpty);
    m_cmdEmpty->setEnabled(canEmpty);
    m_cmdClose->show();
    // Enter closes the window: without a dialog's default button that is the focus's.
    m_cmdClose->setDefault(true);
    m_cmdClose->setFocus();
    Bring();
}

void BurnWindow::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Escape)
        close();
    else
        QWidget::keyPressEvent(event);
}

void BurnWindow::closeEvent(QCloseEvent* event)
{
    event->setAccepted(!m_working);
}
