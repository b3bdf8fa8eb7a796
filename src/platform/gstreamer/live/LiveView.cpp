#include "platform/gstreamer/live/LiveView.h"

using namespace Qt::StringLiterals;

namespace {
constexpr QRgb QuietText = qRgb(0x8a, 0x92, 0x9a);
constexpr QRgb AlarmText = qRgb(0xf2, 0xc1, 0x4e);

void PaintText(QPainter& painter, QRect bounds, const QString& text, QRgb colour)
{
    QFont font = painter.font();
    font.setPixelSize(qMax(12, bounds.height() / 14));
    painter.setFont(font);
    painter.setPen(QColor(colour));
    painter.drawText(bounds, Qt::AlignCenter, text);
}
} // namespace

int LiveView::Paint(QPainter& painter, QRect bounds, const LiveSession& session)
{
    const LiveSession::State state = session.Present();
    const std::shared_ptr<FrameExchange> frames = session.Frames();
    int newFrame = 0;
    if (state != LiveSession::State::Live)
        m_image = {}; // A frame of the past never passes for a live one.
    else if (frames) {
        FrameExchange::Picture next = frames->TakePicture(m_image);
        if (!next.image.isNull()) {
            m_image = std::move(next.image);
            newFrame = next.frame;
        }
    }

    QRect place;
    if (!m_image.isNull()) {
        place.setSize(m_image.size().scaled(bounds.size(), Qt::KeepAspectRatio));
        place.moveCenter(bounds.center());
        painter.drawImage(place, m_image);
    }
    for (const QRect& bar : QRegion(bounds).subtracted(place))
        painter.fillRect(bar, Qt::black);

    if (state == LiveSession::State::Idle)
        PaintText(painter, bounds, u"대기 중"_s, QuietText);
    else if (state == LiveSession::State::Lost)
        PaintText(painter, bounds, u"신호 없음"_s, AlarmText);
    return newFrame;
}
