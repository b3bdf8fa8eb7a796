#include "frame/LensButton.h"

#include "frame/colours.h"
#include "frame/controls.h"

#include <QContextMenuEvent>
#include <QCoreApplication>
#include <QMouseEvent>
#include <QPainter>

using namespace Qt::StringLiterals;

namespace {
constexpr int Margin = 2; // Pixels to the edges of the picture.
} // namespace

LensButton::LensButton(QWidget* parent, QWidget& behind) : QAbstractButton(parent), m_behind(&behind)
{
    Named(this, u"lens"_s, u"크게 보기"_s);
    setToolTip(u"크게 보기"_s);
    setFocusPolicy(Qt::NoFocus);
    setCursor(Qt::PointingHandCursor);
    resize(SidePixels, SidePixels);
    hide();
}

void LensButton::PlaceIn(const QRect& room)
{
    const bool fits = room.width() >= SidePixels + 2 * Margin && room.height() >= SidePixels + 2 * Margin;
    if (fits) {
        move(room.right() - Margin - SidePixels + 1, room.bottom() - Margin - SidePixels + 1);
        raise();
    }
    setVisible(fits);
}

bool LensButton::event(QEvent* event)
{
    switch (event->type()) {
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonRelease:
    case QEvent::MouseButtonDblClick:
        if (static_cast<QMouseEvent*>(event)->button() == Qt::LeftButton)
            return QAbstractButton::event(event);
        [[fallthrough]];
    case QEvent::Wheel:
    case QEvent::ContextMenu:
        PassOn(*event);
        return true;
    default:
        return QAbstractButton::event(event);
    }
}

void LensButton::PassOn(QEvent& event)
{
    if (m_behind == nullptr)
        return;
    if (event.type() == QEvent::Wheel) {
        const auto& wheel = static_cast<QWheelEvent&>(event);
        QWheelEvent passed(m_behind->mapFromGlobal(wheel.globalPosition()), wheel.globalPosition(), wheel.pixelDelta(),
                           wheel.angleDelta(), wheel.buttons(), wheel.modifiers(), wheel.phase(), wheel.inverted());
        QCoreApplication::sendEvent(m_behind, &passed);
    } else if (event.type() == QEvent::ContextMenu) {
        const auto& menu = static_cast<QContextMenuEvent&>(event);
        QContextMenuEvent passed(menu.reason(), m_behind->mapFromGlobal(menu.globalPos()), menu.globalPos(),
                                 menu.modifiers());
        QCoreApplication::sendEvent(m_behind, &passed);
    } else {
        const auto& mouse = static_cast<QMouseEvent&>(event);
        QMouseEvent passed(mouse.type(), m_behind->mapFromGlobal(mouse.globalPosition()), mouse.globalPosition(),
                           mouse.button(), mouse.buttons(), mouse.modifiers());
        QCoreApplication::sendEvent(m_behind, &passed);
    }
}

void LensButton::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(0, 0, 0, underMouse() ? 220 : 150));
    painter.drawRoundedRect(rect(), 4, 4);
    painter.setPen(QPen(underMouse() ? QColor(AccentColour) : QColor(Qt::white), 2, Qt::SolidLine, Qt::RoundCap));
    painter.setBrush(Qt::NoBrush);
    painter.drawEllipse(QRectF(4.5, 4.5, 9, 9));
    painter.drawLine(QPointF(12.5, 12.5), QPointF(17, 17));
}
