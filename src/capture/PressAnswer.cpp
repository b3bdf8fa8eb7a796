#include "capture/PressAnswer.h"

#include <QLinearGradient>
#include <QPainter>
#include <QRegion>
#include <QStyle>

using namespace Qt::StringLiterals;

namespace {
constexpr int LightMs = 250;
/// So many times the edge's width fit into the picture's height.
constexpr int EdgeShare = 14;
constexpr QRgb TakenColour = qRgb(0xff, 0xff, 0xff);
constexpr QRgb RefusedColour = qRgb(0xff, 0xb3, 0x1a);
constexpr double Strongest = 0.85;
} // namespace

PressAnswer::PressAnswer(QWidget& picture, QWidget& count) : QWidget(&picture), m_picture(picture), m_count(count)
{
    setObjectName(u"pressAnswer"_s);
    setAttribute(Qt::WA_TransparentForMouseEvents);
    m_light.setDuration(LightMs);
    m_light.setStartValue(1.0);
    m_light.setEndValue(0.0);
    connect(&m_light, &QVariantAnimation::valueChanged, this, qOverload<>(&QWidget::update));
    connect(&m_light, &QVariantAnimation::finished, this, [this] {
        hide();
        LightCount(false);
    });
    hide();
}

void PressAnswer::Show(bool taken)
{
    m_light.stop();
    m_colour = QColor::fromRgb(taken ? TakenColour : RefusedColour);
    setGeometry(m_picture.rect());
    const int edge = qMax(1, height() / EdgeShare);
    setMask(QRegion(rect()).subtracted(rect().adjusted(edge, edge, -edge, -edge)));
    LightCount(!taken);
    show();
    raise();
    m_light.start();
}

void PressAnswer::LightCount(bool on)
{
    if (m_count.property("refused").toBool() == on)
        return;
    m_count.setProperty("refused", on);
    m_count.style()->unpolish(&m_count);
    m_count.style()->polish(&m_count);
}

void PressAnswer::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    QColor light = m_colour;
    light.setAlphaF(float(Strongest * m_light.currentValue().toDouble()));
    QColor none = m_colour;
    none.setAlpha(0);
    const int edge = qMax(1, height() / EdgeShare);
    const auto paint = [&](QPointF from, QPointF to, const QRect& place) {
        QLinearGradient gradient(from, to);
        gradient.setColorAt(0, light);
        gradient.setColorAt(1, none);
        painter.fillRect(place, gradient);
    };
    const QRectF all = rect();
    paint(all.topLeft(), {0, double(edge)}, QRect(0, 0, width(), edge));
    paint({0, all.bottom()}, {0, all.bottom() - edge}, QRect(0, height() - edge, width(), edge));
    paint(all.topLeft(), {double(edge), 0}, QRect(0, 0, edge, height()));
    paint({all.right(), 0}, {all.right() - edge, 0}, QRect(width() - edge, 0, edge, height()));
}
