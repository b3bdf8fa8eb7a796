#include "frame/controls.h"
#include "frame/guard.h"
#include "frame/plain_text.h"
#include "screenparts/LargePicture.h"
#include "screenparts/PictureCanvas.h"
#include "text/text_routines.h"
#include "visit/device_settings.h"

#include <QApplication>
#include <QBoxLayout>
#include <QCheckBox>
#include <QCloseEvent>
#include <QMenu>
#include <QScreen>
#include <QToolButton>

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace {
/// The other screen on which pictures are large, counted from 1; 0 for the form's own.
const QString SettingsSection = u"Large"_s;
const QString ScreenKey = u"Screen"_s;
constexpr int SettingBytes = 4;
/// Two pictures of 16:9 or 4:3 stand better side by side from this width on, in heights.
constexpr double WideRoom = 1.4;
constexpr int ButtonPixels = 26;
constexpr int LongestCaption = 200;
} // namespace

void LargePicture::BuildControls()
{
    Named(this, u"largePicture"_s, u"큰 그림"_s);
    setWindowTitle(u"큰 그림"_s);
    setAutoFillBackground(true);
    setAttribute(Qt::WA_ShowWithoutActivating);
    auto* rows = new QVBoxLayout(this);
    rows->setContentsMargins(0, 0, 0, 0);
    rows->setSpacing(1);
    auto* buttons = new QHBoxLayout;
    buttons->setSpacing(2);
    rows->addLayout(buttons);
    m_back = AddButton(*buttons, u"largeBack"_s, u"이전"_s, &LargePicture::TurnBack);
    m_on = AddButton(*buttons, u"largeOn"_s, u"다음"_s, &LargePicture::TurnOn);
    AddButton(*buttons, u"largePixels"_s, u"1:1"_s, &LargePicture::ShowPixels);
    m_beside = AddButton(*buttons, u"largeBeside"_s, u"나란히"_s, nullptr);
    m_besideMenu = new QMenu(this);
    m_beside->setMenu(m_besideMenu);
    m_beside->setPopupMode(QToolButton::InstantPopup);
    connect(m_besideMenu, &QMenu::aboutToShow, this, &LargePicture::FillBesideMenu);
    m_linked = Named(new QCheckBox(u"같이 움직임"_s, this), u"largeLinked"_s, u"같이 움직임"_s);
    m_linked->setFocusPolicy(Qt::NoFocus);
    m_linked->hide();
    connect(m_linked, &QCheckBox::toggled, this, [this] { Link(Active()); });
    buttons->addWidget(m_linked);
    m_footButton = AddButton(*buttons, u"largeFoot"_s, u"앞뒤 장면"_s, &LargePicture::ToggleFoot);
    m_footButton->setCheckable(true);
    m_footButton->hide();
    buttons->addStretch();
    m_elsewhere = AddButton(*buttons, u"largeElsewhere"_s, u"다른 화면"_s, &LargePicture::ChangeScreen);
    m_elsewhere->setCheckable(true);
    AddButton(*buttons, u"largeClose"_s, u"닫기"_s, &LargePicture::Close);

    m_columns = new QHBoxLayout;
    m_columns->setSpacing(2);
    rows->addLayout(m_columns, 1);
    BuildHalves();
    // The foot has the room beside the live picture.
    auto* below = new QHBoxLayout;
    below->setSpacing(0);
    rows->addLayout(below);
    m_footRow = new QVBoxLayout;
    below->addLayout(m_footRow, 1);
    m_cornerRoom = new QWidget(this);
    m_cornerRoom->installEventFilter(this);
    m_cornerRoom->hide();
    below->addWidget(m_cornerRoom, 0, Qt::AlignRight | Qt::AlignBottom);
    connect(qApp, &QApplication::focusChanged, this, &LargePicture::NoteFocus);
    connect(qApp, &QGuiApplication::screenAdded, this, &LargePicture::ShowState);
}

void LargePicture::BuildHalves()
{
    for (size_t at = 0; at < m_halves.size(); ++at) {
        Half& half = m_halves[at];
        half.column = new QWidget(this);
        half.canvas = Named(new PictureCanvas(half.column), u"largeCanvas(%1)"_s.arg(at + 1), u"큰 그림"_s);
        half.label = Named(new PlainLabel(half.column), u"largeCaption(%1)"_s.arg(at + 1), QString());
        // A long text takes the room that there is, and no more.
        half.label->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
        auto* column = new QVBoxLayout(half.column);
        column->setContentsMargins(0, 0, 0, 0);
        column->setSpacing(1);
        column->addWidget(half.canvas, 1);
        column->addWidget(half.label);
        m_columns->addWidget(half.column, 1);
        connect(half.canvas, &PictureCanvas::Pressed, this, [this, at] { Activate(at); });
        connect(half.canvas, &PictureCanvas::ViewChanged, this, [this, &half] { Link(half); });
        half.canvas->installEventFilter(this);
    }
    m_halves[1].column->hide();
}

QToolButton* LargePicture::AddButton(QBoxLayout& row, const QString& name, const QString& caption,
                                     void (LargePicture::*press)())
{
    auto* button = Named(new QToolButton(this), name, caption);
    button->setText(caption);
    button->setFocusPolicy(Qt::NoFocus);
    button->setFixedHeight(ButtonPixels);
    if (press != nullptr)
        connect(button, &QToolButton::clicked, this, GuardedSlot([this, press] { (this->*press)(); }));
    row.addWidget(button);
    return button;
}

QScreen* LargePicture::ChosenScreen() const
{
    const int chosen = static_cast<int>(WholeNumber(ReadSetting(SettingsSection, ScreenKey, SettingBytes)));
    const QList<QScreen*> screens = QGuiApplication::screens();
    if (chosen < 1 || screens.size() < 2)
        return nullptr;
    QScreen* screen = screens.value(chosen - 1, screens.last());
    if (screen != m_form.screen())
        return screen;
    return screens.first() != screen ? screens.first() : screens.last();
}

void LargePicture::Stand()
{
    // The second press of a double click on the lens takes no keyboard.
    for (Half& half : m_halves)
        half.canvas->setFocusPolicy(Qt::NoFocus);
    QTimer::singleShot(QApplication::doubleClickInterval(), this, [this] {
        for (Half& half : m_halves)
            half.canvas->setFocusPolicy(Qt::ClickFocus);
    });
    QScreen* other = ChosenScreen();
    const bool wasElsewhere = IsElsewhere();
    if (other != nullptr) {
        if (!wasElsewhere)
            setParent(&m_form, Qt::Window | Qt::FramelessWindowHint);
        setGeometry(other->geometry());
        // By itself this activates no window, unlike `showFullScreen`.
        setWindowState(Qt::WindowFullScreen);
        show();
    } else {
        if (wasElsewhere) {
            setWindowState(Qt::WindowNoState);
            setParent(&m_form, Qt::Widget);
        }
        setGeometry(m_room);
        show();
        raise();
    }
    ShowState();
    Q_EMIT PlacesChanged();
}

void LargePicture::ChangeScreen()
{
    QList<QScreen*> screens = QGuiApplication::screens();
    const auto other = std::ranges::find_if(screens, [this](QScreen* screen) { return screen != m_form.screen(); });
    const qsizetype number = IsElsewhere() || other == screens.end() ? 0 : other - screens.begin() + 1;
    WriteSetting(SettingsSection, ScreenKey, QString::number(number));
    Stand();
}

void LargePicture::NoteFocus(QWidget* before, QWidget* now)
{
    if (m_isOpen && isAncestorOf(now) && before != nullptr && !isAncestorOf(before))
        m_focusBefore = before;
}

void LargePicture::Activate(size_t half)
{
    if (half == 1 && (!m_hasSecond || m_isLive))
        return;
    if (std::exchange(m_active, half) == half)
        return;
    ShowFoot();
    ReadAhead();
    ShowState();
}

void LargePicture::SetSecond(bool on, bool isLive)
{
    m_hasSecond = on;
    m_isLive = on && isLive;
    Half& second = m_halves[1];
    if (!on || isLive) {
        second.visit.reset();
        second.source = {};
        second.image.clear();
        second.caption = m_isLive ? m_live : QString();
        second.canvas->ShowText({});
        Activate(0);
    }
    second.column->setVisible(on);
    m_linked->setVisible(on && !isLive);
    ShowState();
    Q_EMIT PlacesChanged();
}

void LargePicture::FillBesideMenu()
{
    m_besideMenu->clear();
    for (const auto& [pictures, caption] : m_pictures) {
        QAction* entry = m_besideMenu->addAction(CaptionText(caption));
        entry->setEnabled(pictures && !pictures->All().isEmpty());
        connect(entry, &QAction::triggered, this, GuardedSlot([this, shown = pictures] {
                    if (m_isOpen && shown)
                        OpenBeside(*shown);
                }));
    }
    if (!m_live.isEmpty()) {
        connect(m_besideMenu->addAction(CaptionText(m_live)), &QAction::triggered, this, [this] {
            if (m_isOpen)
                SetSecond(true, true);
        });
    }
    m_besideMenu->addSeparator();
    QAction* end = m_besideMenu->addAction(u"한 장만"_s);
    end->setEnabled(m_hasSecond);
    connect(end, &QAction::triggered, this, [this] { SetSecond(false, false); });
}

void LargePicture::OpenBeside(const VisitPictures& pictures)
{
    const qsizetype count = pictures.All().size();
    if (count == 0)
        return;
    // The one behind the first half's, or of another visit the newest, or of an earlier one the first.
    const Half& first = m_halves[0];
    qsizetype at = pictures.Layout() == 1 ? count - 1 : 0;
    if (pictures.Shown() == first.visit)
        at = first.at + 1 < count ? first.at + 1 : qMax(qsizetype(0), first.at - 1);
    SetSecond(true, false);
    Activate(1);
    Open(*pictures.Shown(), pictures.All()[at]);
}

void LargePicture::ShowPixels()
{
    Active().canvas->ShowPixels();
}

void LargePicture::ToggleFoot()
{
    if (m_foot)
        m_foot->setVisible(m_footButton->isChecked());
}

void LargePicture::ShowState()
{
    const Half& active = Active();
    const QList<ShownPicture> pages = PagesOf(active);
    m_back->setEnabled(active.visit && active.at > 0 && !pages.isEmpty());
    m_on->setEnabled(active.visit && active.at + 1 < pages.size());
    m_elsewhere->setVisible(QGuiApplication::screens().size() > 1);
    m_elsewhere->setChecked(IsElsewhere());
    for (size_t at = 0; at < m_halves.size(); ++at) {
        const Half& half = m_halves[at];
        // The picture before stands there until the new one, with its own words.
        if (half.visit && !half.isShown && !half.isLate)
            continue;
        QString text = half.caption.left(LongestCaption);
        if (const QList<ShownPicture> all = PagesOf(half);
            half.visit && (half.isShown || half.isLate) && !all.isEmpty())
            text += u" · %1/%2"_s.arg(half.at + 1).arg(all.size());
        if (!half.canvas->Picture().isNull())
            text += half.canvas->Zoom() == 1 ? u" · 1:1"_s : u" · %1%"_s.arg(qRound(half.canvas->Zoom() * 100));
        half.label->setText(ComposedText(text));
        half.canvas->setAccessibleName(u"큰 그림 "_s + half.caption.left(LongestCaption));
        half.canvas->setMarked(m_hasSecond && !m_isLive && at == m_active);
    }
    const bool hasCorner = !m_corner.isEmpty() && !m_isLive && !IsElsewhere();
    if (hasCorner)
        m_cornerRoom->setFixedSize(m_corner);
    m_cornerRoom->setVisible(hasCorner);
}

std::optional<QRect> LargePicture::LivePlace() const
{
    const QWidget* room = m_isLive ? static_cast<QWidget*>(m_halves[1].canvas) : m_cornerRoom;
    if (!m_isOpen || room->isHidden())
        return std::nullopt;
    layout()->activate();
    return QRect(room->mapTo(this, QPoint()), room->size());
}

bool LargePicture::eventFilter(QObject* watched, QEvent* event)
{
    const bool isPlace = watched == m_cornerRoom || watched == m_halves[1].canvas;
    if (isPlace && m_isOpen && (event->type() == QEvent::Resize || event->type() == QEvent::Move))
        Q_EMIT PlacesChanged();
    return QWidget::eventFilter(watched, event);
}

void LargePicture::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    // Two pictures are larger one above the other where there is little width.
    const bool isWide = width() > height() * WideRoom;
    m_columns->setDirection(isWide ? QBoxLayout::LeftToRight : QBoxLayout::TopToBottom);
}

void LargePicture::closeEvent(QCloseEvent* event)
{
    event->ignore();
    Close();
}
