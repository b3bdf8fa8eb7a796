#include "platform/imagecontrol/ReducedPicture.h"

#include <algorithm>

namespace {
/// Mean of a block, channel by channel.
QRgb Mean(const uchar* bits, qsizetype stride, int left, int top, int right, int bottom)
{
    quint32 alphaGreen = 0;
    quint32 redBlue = 0;
    for (int y = top; y < bottom; ++y) {
        const auto* row = reinterpret_cast<const QRgb*>(bits + y * stride);
        for (int x = left; x < right; ++x) {
            // 64 pixels at the most: the sums of two channels can't reach each other.
            alphaGreen += (row[x] >> 8) & 0x00FF00FF;
            redBlue += row[x] & 0x00FF00FF;
        }
    }
    const auto count = static_cast<quint32>((right - left) * (bottom - top));
    const quint32 alpha = (alphaGreen >> 16) / count;
    const quint32 red = (redBlue >> 16) / count;
    const quint32 green = (alphaGreen & 0xFFFF) / count;
    const quint32 blue = (redBlue & 0xFFFF) / count;
    return alpha << 24 | red << 16 | green << 8 | blue;
}
/// A row of whole blocks of four pixels, the commonest case; written so that the compiler takes several at a time.
void MeanOfFour(const QRgb* upper, const QRgb* lower, QRgb* result, int count)
{
    for (int x = 0; x < count; ++x) {
        const QRgb a = upper[2 * x];
        const QRgb b = upper[2 * x + 1];
        const QRgb c = lower[2 * x];
        const QRgb d = lower[2 * x + 1];
        constexpr quint32 Half = 0x00FF00FF;
        const quint32 redBlue = ((a & Half) + (b & Half) + (c & Half) + (d & Half)) >> 2;
        const quint32 alphaGreen = (((a >> 8) & Half) + ((b >> 8) & Half) + ((c >> 8) & Half) + ((d >> 8) & Half)) >> 2;
        result[x] = (redBlue & Half) | (alphaGreen & Half) << 8;
    }
}
} // namespace

int ReducedPicture::DivisorFor(double scale)
{
    for (const int divisor : {8, 4, 2}) {
        if (scale * divisor <= 1)
            return divisor;
    }
    return 1;
}

const QImage& ReducedPicture::Of(const QImage& picture, int divisor)
{
    const QSize size((picture.width() + divisor - 1) / divisor, (picture.height() + divisor - 1) / divisor);
    if (m_of != picture.size() || m_divisor != divisor || m_reduced.format() != picture.format()) {
        m_reduced = QImage(size, picture.format());
        m_of = picture.size();
        m_divisor = divisor;
        m_changed = picture.rect();
    }
    for (const QRect& part : m_changed& picture.rect())
        Reckon(picture, part);
    m_changed = {};
    return m_reduced;
}

void ReducedPicture::Reckon(const QImage& picture, const QRect& part)
{
    const uchar* bits = picture.constBits();
    const qsizetype stride = picture.bytesPerLine();
    for (int y = part.top() / m_divisor; y <= part.bottom() / m_divisor; ++y) {
        auto* row = reinterpret_cast<QRgb*>(m_reduced.scanLine(y));
        const int top = y * m_divisor;
        const int bottom = std::min(top + m_divisor, picture.height());
        int x = part.left() / m_divisor;
        if (m_divisor == 2 && bottom - top == 2) {
            const int whole = std::min(part.right() / 2 + 1, picture.width() / 2);
            const auto* upper = reinterpret_cast<const QRgb*>(bits + top * stride) + 2 * x;
            const auto* lower = reinterpret_cast<const QRgb*>(bits + (top + 1) * stride) + 2 * x;
            MeanOfFour(upper, lower, row + x, std::max(0, whole - x));
            x = std::max(x, whole);
        }
        for (; x <= part.right() / m_divisor; ++x) {
            const int left = x * m_divisor;
            row[x] = Mean(bits, stride, left, top, std::min(left + m_divisor, picture.width()), bottom);
        }
    }
}
