#include "frame/twips.h"
#include "platform/imagecontrol/ImageControl.h"

#include <QMouseEvent>
#include <QPainter>
#include <QScrollBar>

#include <utility>

namespace {
int ButtonNumbers(Qt::MouseButtons buttons)
{
    return (buttons.testFlag(Qt::LeftButton) ? 1 : 0) | (buttons.testFlag(Qt::RightButton) ? 2 : 0) |
           (buttons.testFlag(Qt::MiddleButton) ? 4 : 0);
}

int ShiftNumbers(Qt::KeyboardModifiers modifiers)
{
    return (modifiers.testFlag(Qt::ShiftModifier) ? 1 : 0) | (modifiers.testFlag(Qt::ControlModifier) ? 2 : 0) |
           (modifiers.testFlag(Qt::AltModifier) ? 4 : 0);
}
} // namespace

void ImageControl::paintEvent(QPaintEvent* event)
{
    QPainter painter(this);
    const QRectF shown = m_view.ViewFromPicture(QRectF(m_picture.rect()));
    const QRect room({0, 0}, m_view.Room());
    for (const QRect& beside : event->region() - QRegion(shown.toRect() & room))
        painter.fillRect(beside, palette().color(QPalette::Base));
    if (m_picture.isNull())
        return;
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.setClipRect(room);
    const int divisor = ReducedPicture::DivisorFor(m_view.Scale());
    const QRectF source(QPointF(0, 0), QSizeF(m_picture.size()) / divisor);
    painter.drawImage(shown, divisor == 1 ? m_picture : m_reduced.Of(m_picture, divisor), source);
}

void ImageControl::resizeEvent(QResizeEvent* event)
{
    ImagXpress::resizeEvent(event);
    LayOutView();
}

void ImageControl::wheelEvent(QWheelEvent* event)
{
    event->accept();
    if (event->modifiers().testFlag(Qt::ControlModifier)) {
        // A fine wheel tells parts of a notch.
        m_turned += event->angleDelta().y();
        const int notches = m_turned / QWheelEvent::DefaultDeltasPerStep;
        m_turned -= notches * QWheelEvent::DefaultDeltasPerStep;
        if (notches != 0)
            Q_EMIT ZoomTurned(notches, event->position());
        return;
    }
    m_turned = 0;
    const bool sideways = event->modifiers().testFlag(Qt::ShiftModifier) || !m_verticalBar->isVisible();
    QScrollBar* bar = sideways ? m_horizontalBar : m_verticalBar;
    if (bar->isVisible())
        bar->setValue(bar->value() - event->angleDelta().y());
}

void ImageControl::ScrollBy(QPoint way)
{
    m_horizontalBar->setValue(m_horizontalBar->value() + way.x());
    m_verticalBar->setValue(m_verticalBar->value() + way.y());
}

void ImageControl::mousePressEvent(QMouseEvent* event)
{
    if (event->button() == Qt::MiddleButton)
        m_dragged = event->position().toPoint();
    Tell(&ImagXpress::MouseDown, ButtonNumbers(event->button()), *event);
}

void ImageControl::mouseDoubleClickEvent(QMouseEvent* event)
{
    // The second press of a quick pair is a press like the first.
    mousePressEvent(event);
}

void ImageControl::mouseMoveEvent(QMouseEvent* event)
{
    // A stroke that is under way stays where it was begun.
    if (m_dragged && event->buttons() == Qt::MiddleButton) {
        const QPoint place = event->position().toPoint();
        ScrollBy(*std::exchange(m_dragged, place) - place);
        return;
    }
    Tell(&ImagXpress::MouseMove, ButtonNumbers(event->buttons()), *event);
}

void ImageControl::mouseReleaseEvent(QMouseEvent* event)
{
    if (event->button() == Qt::MiddleButton)
        m_dragged.reset();
    Tell(&ImagXpress::MouseUp, ButtonNumbers(event->button()), *event);
}

void ImageControl::Tell(MouseSignal signal, int button, const QMouseEvent& event)
{
    const QPointF place = m_view.PictureFromView(event.position()) * TwipsPerPixel;
    Q_EMIT(this->*signal)
    (button, ShiftNumbers(event.modifiers()), static_cast<float>(place.x()), static_cast<float>(place.y()));
}
