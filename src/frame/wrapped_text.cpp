#include "frame/wrapped_text.h"

#include <QFontMetricsF>
#include <QTextLayout>

#include <algorithm>
#include <cmath>

namespace {
constexpr int SmallestPixels = 4;
/// A further attempt's share of the font's size.
constexpr double NextSize = 0.9;

WrappedText Wrapped(const QString& text, const QFont& font, double width)
{
    WrappedText result{font, {}, {}};
    QTextLayout layout(text, font);
    QTextOption option;
    option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    layout.setTextOption(option);
    layout.beginLayout();
    double widest = 0;
    for (QTextLine line = layout.createLine(); line.isValid(); line = layout.createLine()) {
        line.setLineWidth(width);
        widest = std::max(widest, line.naturalTextWidth());
        result.lines << text.mid(line.textStart(), line.textLength());
    }
    layout.endLayout();
    result.size = {std::ceil(widest), QFontMetricsF(font).height() * static_cast<double>(result.lines.size())};
    return result;
}
} // namespace

WrappedText WrapInto(const QString& text, const QFont& font, QSizeF room)
{
    const QFontMetricsF metrics(font);
    if (metrics.horizontalAdvance(text) <= room.width() && metrics.height() <= room.height())
        return {font, {text}, {std::ceil(metrics.horizontalAdvance(text)), metrics.height()}};
    QFont smaller = font;
    for (;;) {
        WrappedText wrapped = Wrapped(text, smaller, room.width());
        const int pixels = smaller.pixelSize();
        if (wrapped.size.height() <= room.height() || pixels <= SmallestPixels)
            return wrapped;
        smaller.setPixelSize(std::max(SmallestPixels, static_cast<int>(pixels * NextSize)));
    }
}

QPointF MovedIn(const QRectF& box, const QRectF& room)
{
    return {std::max(room.left(), std::min(box.left(), room.right() - box.width())),
            std::max(room.top(), std::min(box.top(), room.bottom() - box.height()))};
}
