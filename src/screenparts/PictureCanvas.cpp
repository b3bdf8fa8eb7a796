#include "screenparts/PictureCanvas.h"

#include "frame/colours.h"
#include "frame/plain_text.h"

#include <QMouseEvent>
#include <QPainter>

#include <cmath>

namespace {
constexpr int WheelNotch = 120;
constexpr int TextMargin = 12;
/// From here on the pixels are shown as they are.
constexpr double SmoothZoom = 2;
/// Nearer to it than this, a zoom is the whole picture's.
constexpr double Slack = 1e-6;
} // namespace

PictureCanvas::PictureCanvas(QWidget* parent) : QWidget(parent)
{
    setFocusPolicy(Qt::ClickFocus);
    setAttribute(Qt::WA_OpaquePaintEvent);
    setMinimumSize(40, 40);
}

void PictureCanvas::ShowPicture(const QImage& picture, bool keepView)
{
    const bool keeps = keepView && !m_picture.isNull() && !m_isWhole;
    const View seen = keeps ? Seen() : View();
    m_picture = picture;
    m_reduced.clear();
    m_text.clear();
    if (keeps)
        See(seen);
    else
        SetWhole();
    setCursor(m_picture.isNull() ? Qt::ArrowCursor : Qt::OpenHandCursor);
    update();
}

void PictureCanvas::ShowText(const QString& text)
{
    m_picture = QImage();
    m_reduced.clear();
    m_text = ComposedText(text);
    setCursor(Qt::ArrowCursor);
    update();
}

void PictureCanvas::setMarked(bool marked)
{
    m_isMarked = marked;
    update();
}

double PictureCanvas::WholeZoom() const
{
    const QSizeF room = DevicePixels();
    const double fit = qMin(room.width() / m_picture.width(), room.height() / m_picture.height());
    return qMin(fit, LargestZoom);
}

void PictureCanvas::SetWhole()
{
    m_isWhole = true;
    if (m_picture.isNull())
        return;
    m_zoom = WholeZoom();
    KeepInside();
    update();
}

void PictureCanvas::SetZoom(double zoom, QPointF about)
{
    const QPointF place = PictureFromCanvas(about);
    const double whole = WholeZoom();
    m_zoom = qBound(qMin(whole, 1.0), zoom, LargestZoom);
    m_isWhole = std::abs(m_zoom - whole) < Slack * whole;
    m_corner = about - place * m_zoom;
    KeepInside();
    update();
}

void PictureCanvas::KeepInside()
{
    const QSizeF room = DevicePixels();
    const QSizeF size = QSizeF(m_picture.size()) * m_zoom;
    const auto inside = [](double corner, double extent, double space) {
        return extent <= space ? (space - extent) / 2 : qBound(space - extent, corner, 0.0);
    };
    m_corner = {inside(m_corner.x(), size.width(), room.width()), inside(m_corner.y(), size.height(), room.height())};
}

void PictureCanvas::ZoomTo(double zoom, QPointF about)
{
    if (m_picture.isNull())
        return;
    SetZoom(zoom, about);
    Q_EMIT ViewChanged();
}

void PictureCanvas::ShowWhole()
{
    SetWhole();
    Q_EMIT ViewChanged();
}

void PictureCanvas::ShowPixels()
{
    const QSizeF room = DevicePixels();
    ZoomTo(1, {room.width() / 2, room.height() / 2});
}

PictureCanvas::View PictureCanvas::Seen() const
{
    const QSizeF room = DevicePixels();
    const QPointF middle = PictureFromCanvas({room.width() / 2, room.height() / 2});
    return {m_zoom / WholeZoom(), {middle.x() / m_picture.width(), middle.y() / m_picture.height()}, m_zoom == 1};
}

void PictureCanvas::See(const View& view)
{
    if (m_picture.isNull())
        return;
    const QSizeF room = DevicePixels();
    const QPointF middle(room.width() / 2, room.height() / 2);
    SetZoom(view.isPixels ? 1 : view.zoom * WholeZoom(), middle);
    m_corner = middle - QPointF(view.centre.x() * m_picture.width(), view.centre.y() * m_picture.height()) * m_zoom;
    KeepInside();
    update();
}

void PictureCanvas::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.fillRect(rect(), Qt::black);
    if (m_picture.isNull()) {
        painter.setPen(Qt::white);
        painter.drawText(rect().adjusted(TextMargin, TextMargin, -TextMargin, -TextMargin),
                         Qt::AlignCenter | Qt::TextWordWrap, m_text);
    } else {
        painter.save();
        // In whole device pixels, wherever the window's scale puts the corner of the canvas.
        const QTransform device = painter.deviceTransform();
        const QPoint corner = device.map(QPointF()).toPoint();
        painter.setWorldTransform(QTransform::fromTranslate(corner.x(), corner.y()) * device.inverted());
        if (m_zoom == 1) {
            painter.drawImage(m_corner.toPoint(), m_picture);
        } else {
            const QImage* source = &m_picture;
            for (const QImage& reduced : m_reduced) {
                if (reduced.width() >= m_picture.width() * m_zoom)
                    source = &reduced;
            }
            painter.setRenderHint(QPainter::SmoothPixmapTransform, m_zoom <= SmoothZoom);
            painter.drawImage(QRectF(m_corner, QSizeF(m_picture.size()) * m_zoom), *source, source->rect());
        }
        painter.restore();
    }
    if (m_isMarked) {
        painter.setPen(QPen(QColor(AccentColour), 2));
        painter.drawRect(rect().adjusted(1, 1, -1, -1));
    }
}

void PictureCanvas::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    if (m_picture.isNull())
        return;
    if (m_isWhole)
        SetWhole();
    else
        SetZoom(m_zoom, {0, 0});
}

void PictureCanvas::wheelEvent(QWheelEvent* event)
{
    event->accept();
    m_wheel += event->angleDelta().y();
    const int steps = m_wheel / WheelNotch;
    m_wheel -= steps * WheelNotch;
    if (steps == 0 || m_picture.isNull())
        return;
    double zoom = m_zoom * std::pow(ZoomStep, steps);
    // The picture's own pixels are not stepped over.
    if ((m_zoom < 1 && zoom > 1) || (m_zoom > 1 && zoom < 1))
        zoom = 1;
    // Back from them stands the whole picture.
    if (const double whole = WholeZoom(); steps < 0 && whole < m_zoom)
        zoom = qMax(zoom, whole);
    ZoomTo(zoom, event->position() * devicePixelRatioF());
}

void PictureCanvas::mousePressEvent(QMouseEvent* event)
{
    Q_EMIT Pressed();
    if (event->button() != Qt::LeftButton || m_picture.isNull())
        return;
    m_draggedFrom = event->position();
    setCursor(Qt::ClosedHandCursor);
}

void PictureCanvas::mouseMoveEvent(QMouseEvent* event)
{
    if (!event->buttons().testFlag(Qt::LeftButton) || m_picture.isNull())
        return;
    m_corner += (event->position() - m_draggedFrom) * devicePixelRatioF();
    m_draggedFrom = event->position();
    KeepInside();
    update();
    Q_EMIT ViewChanged();
}

void PictureCanvas::mouseReleaseEvent(QMouseEvent* event)
{
    if (event->button() == Qt::LeftButton && !m_picture.isNull())
        setCursor(Qt::OpenHandCursor);
}

void PictureCanvas::mouseDoubleClickEvent(QMouseEvent* event)
{
    if (event->button() == Qt::LeftButton)
        ShowWhole();
}
