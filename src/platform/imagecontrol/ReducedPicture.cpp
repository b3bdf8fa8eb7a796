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
        for (int x = part.left() / m_divisor; x <= part.right() / m_divisor; ++x) {
            const int left = x * m_divisor;
            row[x] = Mean(bits, stride, left, top, std::min(left + m_divisor, picture.width()), bottom);
        }
    }
}
