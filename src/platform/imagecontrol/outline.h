#pragma once

#include <QPointF>
#include <QRect>
#include <QRegion>
#include <QRgb>

#include <vector>

class QImage;

/// Figures as the pixels of their outlines, without smoothing: painted or inverted they cover the very same pixels,
/// each once. Points are corners between pixels, so that a pen of two pixels lies evenly around them.
namespace outline {
/// Pixels from `left` to before `right` in row `y`; inside the picture.
struct Span
{
    int y;
    int left;
    int right;
};
using Spans = std::vector<Span>;

/// All take corners in any order and anywhere, and give what lies in a picture of `size`. `width` is the pen's, in
/// pixels.
Spans Line(QPointF from, QPointF to, int width, QSize size);
Spans DottedLine(QPointF from, QPointF to, int width, QSize size);
/// Rectangle whose corners are rounded by quarters of an ellipse with these half axes; square corners for 0.
Spans Box(QPointF corner, QPointF corner2, double roundX, double roundY, int width, QSize size);
Spans Ellipse(QPointF corner, QPointF corner2, int width, QSize size);

/// The picture must be of a 32-bit format.
void Paint(QImage& picture, const Spans& spans, QRgb colour);
void Invert(QImage& picture, const Spans& spans);
/// The spans and `margin` pixels around them, in small rectangles of the picture.
QRegion Covered(const Spans& spans, QSize size, int margin);
} // namespace outline
