#include "platform/imagecontrol/PictureView.h"

#include <algorithm>
#include <cmath>

namespace {
constexpr double SmallestFactor = 0.01;
constexpr double LargestFactor = 64;
} // namespace

void PictureView::setSizes(QSize picture, QSize frame)
{
    m_picture = picture;
    m_frame = frame;
    setOrigin(m_origin);
}

void PictureView::Fit()
{
    m_fitted = true;
    m_origin = {};
}

void PictureView::ScaleBy(double factor, QPointF place)
{
    const QPointF fixed = PictureFromView(place);
    m_fitted = false;
    m_factor = std::isnan(factor) ? 1 : std::clamp(factor, SmallestFactor, LargestFactor);
    setOrigin((fixed * m_factor - place).toPoint());
}

QPointF PictureView::Middle() const
{
    const QSize seen = Seen().size();
    return {seen.width() / 2.0, seen.height() / 2.0};
}

double PictureView::Scale() const
{
    if (!m_fitted)
        return m_factor;
    if (m_picture.isEmpty() || m_frame.isEmpty())
        return 1;
    return std::min(double(m_frame.width()) / m_picture.width(), double(m_frame.height()) / m_picture.height());
}

QSize PictureView::Shown() const
{
    const double scale = Scale();
    return {static_cast<int>(std::lround(m_picture.width() * scale)),
            static_cast<int>(std::lround(m_picture.height() * scale))};
}

bool PictureView::NeedsHorizontalBar() const
{
    const QSize shown = Shown();
    if (m_fitted)
        return false;
    // The bar of one direction can make the other one necessary.
    return shown.width() > m_frame.width() ||
           (shown.height() > m_frame.height() && shown.width() > m_frame.width() - m_barWidth);
}

bool PictureView::NeedsVerticalBar() const
{
    const QSize shown = Shown();
    if (m_fitted)
        return false;
    return shown.height() > m_frame.height() ||
           (shown.width() > m_frame.width() && shown.height() > m_frame.height() - m_barWidth);
}

QSize PictureView::Room() const
{
    return m_frame - QSize(NeedsVerticalBar() ? m_barWidth : 0, NeedsHorizontalBar() ? m_barWidth : 0);
}

QPoint PictureView::LastOrigin() const
{
    if (m_fitted)
        return {};
    const QSize hidden = (Shown() - Room()).expandedTo({0, 0});
    return {hidden.width(), hidden.height()};
}

void PictureView::setOrigin(QPoint origin)
{
    const QPoint last = LastOrigin();
    m_origin = {std::clamp(origin.x(), 0, last.x()), std::clamp(origin.y(), 0, last.y())};
}

QRectF PictureView::ViewFromPicture(const QRectF& part) const
{
    return {ViewFromPicture(part.topLeft()), part.size() * Scale()};
}
