#include "capture/FullPicture.h"

#include <QCloseEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QScreen>

FullPicture::FullPicture(QWidget& form, QWidget& picture, QWidget& strip, QWidget& mark)
    : QWidget(&form, Qt::Window | Qt::FramelessWindowHint), m_form(form), m_picture(&picture), m_strip(&strip),
      m_mark(&mark), m_picturePlace(picture.geometry())
{
    setObjectName(QStringLiteral("fullPicture"));
    setWindowTitle(picture.accessibleName());
    setAutoFillBackground(true);
    setPalette(Qt::black);
    m_picture->installEventFilter(this);
    PlaceOverlays();
}

FullPicture::~FullPicture()
{
    Return();
}

void FullPicture::Fill()
{
    setGeometry(m_form.screen()->geometry());
    MoveTo(*this, rect());
    showFullScreen();
    activateWindow();
    setFocus();
}

void FullPicture::Return()
{
    if (m_picture == nullptr || m_strip == nullptr || m_mark == nullptr || m_picture->parentWidget() != this)
        return;
    MoveTo(m_form, m_picturePlace);
    GoHome();
    hide();
    m_form.activateWindow();
}

void FullPicture::SetHome(QWidget* window, const QRect& place, const QRect& overlaid)
{
    m_home = window;
    m_homePlace = place;
    m_overlaid = overlaid;
    if (m_picture != nullptr && m_strip != nullptr && m_mark != nullptr && m_picture->parentWidget() != this)
        GoHome();
}

void FullPicture::GoHome()
{
    QWidget* window = m_home != nullptr ? m_home.data() : &m_form;
    if (m_picture->parentWidget() != window) {
        const bool isShown = !m_picture->isHidden();
        m_picture->setParent(window);
        m_picture->setVisible(isShown);
    }
    m_picture->setGeometry(m_home != nullptr ? m_homePlace : m_picturePlace);
    if (m_home != nullptr)
        m_picture->raise();
    else
        m_picture->lower();
    PlaceOverlays();
}

void FullPicture::MoveTo(QWidget& window, const QRect& place)
{
    for (QWidget* each : {m_picture.data(), m_strip.data(), m_mark.data()}) {
        const bool isShown = !each->isHidden();
        each->setParent(&window);
        each->setVisible(isShown);
    }
    m_picture->setGeometry(place);
    PlaceOverlays();
}

void FullPicture::PlaceOverlays()
{
    const bool isFull = m_picture->parentWidget() == this;
    const QRect place = isFull ? m_picture->geometry() : m_overlaid.isEmpty() ? m_picturePlace : m_overlaid;
    QRect strip(place.topLeft(), QSize(place.width(), m_strip->height()));
    strip.moveBottom(place.bottom());
    m_strip->setGeometry(strip);
    m_strip->raise();
    QRect mark(QPoint(), m_mark->size());
    mark.moveBottomRight(m_strip->isHidden() ? place.bottomRight() : QPoint(place.right(), strip.top() - 1));
    m_mark->setGeometry(mark);
    m_mark->raise();
}

bool FullPicture::eventFilter(QObject* watched, QEvent* event)
{
    if (watched != m_picture || event->type() != QEvent::MouseButtonDblClick ||
        static_cast<QMouseEvent*>(event)->button() != Qt::LeftButton)
        return QWidget::eventFilter(watched, event);
    if (IsFull())
        Return();
    else
        Fill();
    return true;
}

void FullPicture::keyPressEvent(QKeyEvent* event)
{
    if (event->matches(QKeySequence::Cancel))
        Return();
    else
        QWidget::keyPressEvent(event);
}

void FullPicture::closeEvent(QCloseEvent* event)
{
    event->ignore();
    Return();
}

void FullPicture::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    if (m_picture == nullptr || m_picture->parentWidget() != this)
        return;
    m_picture->setGeometry(rect());
    PlaceOverlays();
}
