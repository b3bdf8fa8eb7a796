#pragma once

#include "platform/gstreamer/live/LiveSession.h"

#include <QPainter>

/// How the live picture looks on the screen: the frame with its shape kept over black, or what there is to say
/// instead of it.
class LiveView
{
public:
    /// Paints into `bounds`. Gives the number of the frame that shows for the first time, or 0.
    int Paint(QPainter& painter, QRect bounds, const LiveSession& session);

    /// Nothing of the present picture is to be seen again.
    void Clear() { m_image = {}; }
    const QImage& Image() const { return m_image; }

private:
    QImage m_image;
};
