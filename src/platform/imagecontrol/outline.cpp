#include "platform/imagecontrol/outline.h"

#include <QImage>

#include <algorithm>
#include <array>
#include <cmath>

namespace {
using outline::Span;
using outline::Spans;

/// Rows and columns of the rectangles that are shown anew.
constexpr int TileWidth = 64;
constexpr int TileHeight = 32;

/// Beyond this no picture reaches, and sums of squares stay exact.
constexpr double Farthest = 1e6;

struct Interval
{
    double left = 1;
    double right = -1;

    bool IsEmpty() const { return left > right; }
    void Cover(double from, double to)
    {
        if (from > to)
            return;
        const bool first = IsEmpty();
        left = first ? from : std::min(left, from);
        right = first ? to : std::max(right, to);
    }
};

/// A pen of even width is even around whole coordinates only.
QPointF Snapped(QPointF point)
{
    const auto snap = [](double value) {
        return std::isnan(value) ? 0.0 : std::round(std::clamp(value, -Farthest, Farthest));
    };
    return {snap(point.x()), snap(point.y())};
}

/// Adds the pixels whose centres lie in an interval of row `y`, from column `first` on. Gives the column behind them.
int AddSpan(Spans& spans, int y, const Interval& interval, QSize size, int first = 0)
{
    if (interval.IsEmpty())
        return first;
    const int left =
        std::max(first, static_cast<int>(std::clamp(std::ceil(interval.left - 0.5), 0.0, double(size.width()))));
    const int right = static_cast<int>(std::clamp(std::floor(interval.right - 0.5) + 1, 0.0, double(size.width())));
    if (left < right)
        spans.push_back({y, left, right});
    return std::max(first, right);
}

struct Rows
{
    int first;
    int end;
};

Rows RowsWithin(double top, double bottom, QSize size)
{
    return {static_cast<int>(std::clamp(std::floor(top), 0.0, double(size.height()))),
            static_cast<int>(std::clamp(std::ceil(bottom), 0.0, double(size.height())))};
}

/// Keeps the part of `interval` in which low <= slope * x + offset <= high.
void Limit(Interval& interval, double slope, double offset, double low, double high)
{
    if (slope == 0) {
        if (offset < low || offset > high)
            interval = {};
        return;
    }
    const auto [first, second] = std::minmax({(low - offset) / slope, (high - offset) / slope});
    interval.left = std::max(interval.left, first);
    interval.right = std::min(interval.right, second);
}

/// The part of a row that a segment with round ends covers.
Interval SegmentInRow(QPointF from, QPointF to, double radius, double y)
{
    Interval covered;
    for (const QPointF& end : {from, to}) {
        const double off = y - end.y();
        if (std::abs(off) < radius) {
            const double half = std::sqrt(radius * radius - off * off);
            covered.Cover(end.x() - half, end.x() + half);
        }
    }
    const QPointF along = to - from;
    const double length = std::hypot(along.x(), along.y());
    if (length == 0)
        return covered;
    const double off = y - from.y();
    Interval body{-2 * Farthest, 2 * Farthest};
    Limit(body, along.x(), off * along.y() - from.x() * along.x(), 0, length * length);
    // A pixel whose centre lies on the edge belongs to the stroke on one side only.
    Limit(body, -along.y(), off * along.x() + from.x() * along.y(), -radius * length, radius * length * (1 - 1e-9));
    if (!body.IsEmpty())
        covered.Cover(body.left, body.right);
    return covered;
}

void AddSegment(Spans& spans, QPointF from, QPointF to, double radius, QSize size)
{
    const auto [top, bottom] = std::minmax({from.y(), to.y()});
    const Rows rows = RowsWithin(top - radius, bottom + radius, size);
    for (int y = rows.first; y < rows.end; ++y)
        AddSpan(spans, y, SegmentInRow(from, to, radius, y + 0.5), size);
}

/// The part of the way from `from` to `to`, of that length, which runs inside or near a picture.
Interval WayWithin(QPointF from, QPointF direction, double length, double margin, QSize size)
{
    Interval way{0, length};
    Limit(way, direction.x(), from.x(), -margin, size.width() + margin);
    if (!way.IsEmpty())
        Limit(way, direction.y(), from.y(), -margin, size.height() + margin);
    return way;
}

/// The curve of a rounded rectangle, and where it lies at a height.
struct RoundedRectangle
{
    QRectF frame;
    double roundX;
    double roundY;

    /// Distance of the curve from the frame's left and right sides; negative where the height is outside.
    double Inset(double y) const
    {
        if (y < frame.top() || y > frame.bottom())
            return -1;
        const double intoCorner = std::max(frame.top() + roundY - y, y - (frame.bottom() - roundY));
        if (intoCorner <= 0 || roundY == 0)
            return 0;
        const double share = intoCorner / roundY;
        return roundX * (1 - std::sqrt(std::max(0.0, 1 - share * share)));
    }
};

/// A round pen, sampled at five heights: each in half the pen's width, with the half of its breadth there.
const std::array<std::pair<double, double>, 5> PenSamples{
    {{-1 + 1e-9, 0}, {-0.5, std::sqrt(0.75)}, {0, 1 - 1e-9}, {0.5, std::sqrt(0.75)}, {1 - 1e-9, 0}}};
using Insets = std::array<double, PenSamples.size()>;

/// What the pen covers in row `y` when it is led along the curve; `insets` belong to the heights of the samples.
void AddCurveRow(Spans& spans, const RoundedRectangle& curve, const Insets& insets, double radius, int y, QSize size)
{
    Interval left;
    Interval right;
    bool beyond = false;
    for (size_t sample = 0; sample < insets.size(); ++sample) {
        const double inset = insets[sample];
        if (inset < 0) {
            beyond = true;
            continue;
        }
        const double reach = PenSamples[sample].second * radius;
        left.Cover(curve.frame.left() + inset - reach, curve.frame.left() + inset + reach);
        right.Cover(curve.frame.right() - inset - reach, curve.frame.right() - inset + reach);
    }
    if (left.IsEmpty())
        return;
    if (beyond || left.right >= right.left) {
        AddSpan(spans, y, {left.left, right.right}, size);
        return;
    }
    const int behind = AddSpan(spans, y, left, size);
    AddSpan(spans, y, right, size, behind);
}

Spans Curve(const RoundedRectangle& curve, int width, QSize size)
{
    Spans spans;
    const double radius = width / 2.0;
    const Rows rows = RowsWithin(curve.frame.top() - radius, curve.frame.bottom() + radius, size);
    spans.reserve(2 * static_cast<size_t>(rows.end - rows.first));
    Insets insets{};
    for (int y = rows.first; y < rows.end; ++y) {
        // For the pen of two pixels three of the heights were already reckoned in the row above.
        const bool shared = width == 2 && y > rows.first;
        for (size_t sample = 0; sample < insets.size(); ++sample)
            insets[sample] = shared && sample + 2 < insets.size()
                                 ? insets[sample + 2]
                                 : curve.Inset(y + 0.5 + PenSamples[sample].first * radius);
        AddCurveRow(spans, curve, insets, radius, y, size);
    }
    return spans;
}

template <class Change>
void ForEachPixel(QImage& picture, const Spans& spans, Change change)
{
    Q_ASSERT(picture.depth() == 32);
    uchar* const bits = picture.bits();
    const qsizetype stride = picture.bytesPerLine();
    for (const Span& span : spans) {
        auto* row = reinterpret_cast<QRgb*>(bits + span.y * stride);
        for (int x = span.left; x < span.right; ++x)
            change(row[x]);
    }
}
} // namespace

outline::Spans outline::Line(QPointF from, QPointF to, int width, QSize size)
{
    Spans spans;
    AddSegment(spans, Snapped(from), Snapped(to), width / 2.0, size);
    return spans;
}

outline::Spans outline::DottedLine(QPointF from, QPointF to, int width, QSize size)
{
    const QPointF start = Snapped(from);
    const QPointF along = Snapped(to) - start;
    const double length = std::hypot(along.x(), along.y());
    if (length == 0)
        return Line(from, to, width, size);
    const QPointF direction = along / length;
    // With its round ends a dot is twice as long as the pen is wide, and so is the gap.
    const double dot = width;
    const double period = 4.0 * width;
    Spans spans;
    const Interval way = WayWithin(start, direction, length, period, size);
    if (way.IsEmpty())
        return spans;
    for (double at = std::floor(way.left / period) * period; at <= way.right; at += period)
        AddSegment(spans, Snapped(start + direction * at), Snapped(start + direction * std::min(at + dot, length)),
                   width / 2.0, size);
    return spans;
}

outline::Spans outline::Box(QPointF corner, QPointF corner2, double roundX, double roundY, int width, QSize size)
{
    const QRectF frame = QRectF(Snapped(corner), Snapped(corner2)).normalized();
    return Curve({frame, std::clamp(roundX, 0.0, frame.width() / 2), std::clamp(roundY, 0.0, frame.height() / 2)},
                 width, size);
}

outline::Spans outline::Ellipse(QPointF corner, QPointF corner2, int width, QSize size)
{
    const QRectF frame = QRectF(Snapped(corner), Snapped(corner2)).normalized();
    return Curve({frame, frame.width() / 2, frame.height() / 2}, width, size);
}

void outline::Paint(QImage& picture, const Spans& spans, QRgb colour)
{
    ForEachPixel(picture, spans, [colour](QRgb& pixel) { pixel = colour; });
}

void outline::Invert(QImage& picture, const Spans& spans)
{
    ForEachPixel(picture, spans, [](QRgb& pixel) { pixel ^= 0x00FFFFFF; });
}

QRegion outline::Covered(const Spans& spans, QSize size, int margin)
{
    const int columns = size.width() / TileWidth + 1;
    const int rows = size.height() / TileHeight + 1;
    std::vector<char> touched(static_cast<size_t>(columns) * static_cast<size_t>(rows), 0);
    for (const Span& span : spans) {
        const int first = std::max(0, span.left - margin) / TileWidth;
        const int last = std::min(size.width(), span.right - 1 + margin) / TileWidth;
        const int lastRow = std::min(size.height(), span.y + margin) / TileHeight;
        for (int row = std::max(0, span.y - margin) / TileHeight; row <= lastRow; ++row)
            std::fill_n(touched.data() + static_cast<ptrdiff_t>(row) * columns + first, last - first + 1, char(1));
    }
    std::vector<QRect> tiles;
    for (int row = 0; row < rows; ++row) {
        const char* marks = touched.data() + static_cast<ptrdiff_t>(row) * columns;
        for (int column = 0; column < columns; ++column) {
            if (marks[column] == 0)
                continue;
            const int first = column;
            while (column < columns && marks[column] != 0)
                ++column;
            tiles.emplace_back(first * TileWidth, row * TileHeight, (column - first) * TileWidth, TileHeight);
        }
    }
    QRegion region;
    region.setRects(tiles.data(), static_cast<int>(tiles.size()));
    return region;
}
