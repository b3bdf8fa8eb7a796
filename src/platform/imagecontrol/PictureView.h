#pragma once

#include <QPointF>
#include <QRectF>
#include <QSize>

/// Where a picture lies in a frame: fitted with its shape kept, or at a factor with a scrolled origin. It begins in the
/// frame's left upper corner, so that at natural size a place in the picture is its distance from there.
class PictureView
{
public:
    void setSizes(QSize picture, QSize frame);
    void Fit();
    /// The place in the middle of the view stays there, as far as the picture reaches.
    void ScaleBy(double factor) { ScaleBy(factor, Middle()); }
    /// The place at that point of the frame does.
    void ScaleBy(double factor, QPointF place);
    /// Widths of the scroll bars that a larger picture needs.
    void setBarWidth(int pixels) { m_barWidth = pixels; }

    double Scale() const;
    /// Part of the frame that is left beside the scroll bars.
    QSize Room() const;
    bool NeedsHorizontalBar() const;
    bool NeedsVerticalBar() const;
    /// How far the origin can go.
    QPoint LastOrigin() const;
    QPoint Origin() const { return m_origin; }
    void setOrigin(QPoint origin);

    QPointF ViewFromPicture(QPointF point) const { return point * Scale() - m_origin; }
    QPointF PictureFromView(QPointF point) const { return (point + m_origin) / Scale(); }
    QRectF ViewFromPicture(const QRectF& part) const;
    /// Part of the frame that shows the picture.
    QRect Seen() const { return {QPoint(), Shown().boundedTo(Room())}; }

private:
    QSize Shown() const;
    /// Of what the frame shows of the picture.
    QPointF Middle() const;

    QSize m_picture;
    QSize m_frame;
    bool m_fitted = true;
    double m_factor = 1;
    int m_barWidth = 0;
    QPoint m_origin;
};
