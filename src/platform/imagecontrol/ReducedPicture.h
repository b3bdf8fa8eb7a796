#pragma once

#include <QImage>
#include <QRegion>

/// A picture shrunk by 2, 4 or 8 as the mean of its pixels, so that a line two pixels wide stays a line in a view that
/// is much smaller than the picture. Only parts that have changed are reckoned anew.
class ReducedPicture
{
public:
    /// A whole number by which the picture can be shrunk before it is shown at that scale; 1 to leave it as it is.
    static int DivisorFor(double scale);

    /// These parts of the picture have changed; the region may reach beyond it.
    void MarkChanged(const QRegion& parts) { m_changed += parts; }
    /// The picture shrunk by `divisor`, rounded up to whole pixels. It must be of a 32-bit format.
    const QImage& Of(const QImage& picture, int divisor);

private:
    void Reckon(const QImage& picture, const QRect& part);

    QImage m_reduced;
    QSize m_of;
    int m_divisor = 0;
    QRegion m_changed;
};
