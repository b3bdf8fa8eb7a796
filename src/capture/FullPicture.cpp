#include "capture/FullPicture.h"

#include <QCloseEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QScreen>

FullPicture::FullPicture(QWidget& form, QWidget& picture, QWidget& strip)
    : QWidget(&form, Qt::Window | Qt::FramelessWindowHint), m_form(form), m_picture(&picture), m_strip(&strip),
      m_picturePlace(picture.geometry()), m_stripPlace(strip.geometry())
{
    setObjectName(QStringLiteral("fullPicture"));
    setWindowTitle(picture.accessibleName());
    setAutoFillBackground(true);
    setPalette(Qt::black);
    m_picture->installEventFilter(this);
}

FullPicture::~FullPicture()
{
    Return();
}

void FullPicture::Fill()
{
    const bool hasStrip = m_strip->isVisible();
    setGeometry(m_form.screen()->geometry());
    m_picture->setParent(this);
    m_strip->setParent(this);
    showFullScreen();
    m_picture->setGeometry(rect());
    m_picture->show();
    PlaceStrip();
    m_strip->setVisible(hasStrip);
    m_strip->raise();
    activateWindow();
    setFocus();
}

void FullPicture::Return()
{
    if (m_picture == nullptr || m_strip == nullptr || m_picture->parentWidget() != this)
        return;
    const bool hasStrip = m_strip->isVisible();
    m_picture->setParent(&m_form);
    m_picture->setGeometry(m_picturePlace);
    m_picture->lower();
    m_picture->show();
    m_strip->setParent(&m_form);
    m_strip->setGeometry(m_stripPlace);
    m_strip->setVisible(hasStrip);
    m_strip->raise();
    hide();
    m_form.activateWindow();
}

void FullPicture::PlaceStrip()
{
    const int height = m_stripPlace.height();
    m_strip->setGeometry(0, this->height() - height, width(), height);
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
    PlaceStrip();
}
