#include "platform/imagecontrol/AsidePicture.h"

#include <algorithm>
#include <cstring>
#include <map>
#include <utility>

namespace {
constexpr int TilePixels = 64;
constexpr int WordBytes = 4;

bool IsLike(const QImage& one, const QImage& other)
{
    return one.size() == other.size() && one.format() == other.format() && one.depth() == WordBytes * 8;
}

void CopyPart(const QImage& from, QPoint fromCorner, QImage& to, QPoint toCorner, QSize size)
{
    for (int y = 0; y < size.height(); ++y)
        std::memcpy(to.scanLine(toCorner.y() + y) + toCorner.x() * WordBytes,
                    from.constScanLine(fromCorner.y() + y) + fromCorner.x() * WordBytes,
                    static_cast<size_t>(size.width()) * WordBytes);
}
} // namespace

bool AsidePicture::FindParts(const QImage& base, const QImage& picture, const QList<const AsidePicture*>& others,
                             Parts& parts)
{
    // A mark is in all pictures behind it: its parts are there already.
    std::multimap<std::pair<int, int>, QImage> known;
    for (const AsidePicture* other : others) {
        for (const Part& part : other->m_parts)
            known.emplace(std::pair(part.corner.x(), part.corner.y()), part.picture);
    }
    const int columns = (picture.width() + TilePixels - 1) / TilePixels;
    const int rows = (picture.height() + TilePixels - 1) / TilePixels;
    std::vector<bool> isOther(static_cast<size_t>(columns));
    for (int row = 0; row < rows; ++row) {
        const int top = row * TilePixels;
        const int height = std::min(TilePixels, picture.height() - top);
        isOther.assign(isOther.size(), false);
        for (int y = top; y < top + height; ++y) {
            const uchar* one = base.constScanLine(y);
            const uchar* other = picture.constScanLine(y);
            if (std::memcmp(one, other, static_cast<size_t>(picture.width()) * WordBytes) == 0)
                continue;
            for (int column = 0; column < columns; ++column) {
                const int left = column * TilePixels;
                const auto bytes = static_cast<size_t>(std::min(TilePixels, picture.width() - left)) * WordBytes;
                if (!isOther[static_cast<size_t>(column)] &&
                    std::memcmp(one + left * WordBytes, other + left * WordBytes, bytes) != 0)
                    isOther[static_cast<size_t>(column)] = true;
            }
        }
        for (int column = 0; column < columns; ++column) {
            if (!isOther[static_cast<size_t>(column)])
                continue;
            const QPoint corner(column * TilePixels, top);
            QImage part(QSize(std::min(TilePixels, picture.width() - corner.x()), height), picture.format());
            CopyPart(picture, corner, part, {}, part.size());
            const auto [first, behind] = known.equal_range(std::pair(corner.x(), corner.y()));
            const auto same = std::find_if(first, behind, [&part](const auto& each) { return each.second == part; });
            parts.push_back({corner, same != behind ? same->second : part});
        }
        // A whole picture takes no more than that.
        if (parts.size() * 2 > static_cast<size_t>(columns) * static_cast<size_t>(rows))
            return false;
    }
    return true;
}

void AsidePicture::Keep(const QImage& picture, const QList<const AsidePicture*>& others)
{
    // The same one is put here before a stroke and behind the one before it.
    if (!picture.isNull() && picture.cacheKey() == m_key && !IsEmpty())
        return;
    m_key = picture.cacheKey();
    const auto same = std::ranges::find_if(others, [this](const AsidePicture* other) {
        return other->m_key == m_key && !other->IsEmpty() && other != this;
    });
    if (!picture.isNull() && same != others.end()) {
        m_parts = (*same)->m_parts;
        m_base = (*same)->m_base;
        return;
    }
    QList<qint64> tried;
    for (const AsidePicture* other : others) {
        const QImage base = other->m_base;
        if (!IsLike(base, picture) || tried.contains(base.cacheKey()))
            continue;
        tried << base.cacheKey();
        Parts parts;
        if (FindParts(base, picture, others, parts)) {
            m_parts = std::move(parts);
            m_base = base;
            return;
        }
    }
    m_parts.clear();
    m_base = picture;
}

QImage AsidePicture::Picture() const
{
    if (m_parts.empty())
        return m_base;
    QImage picture = m_base.copy();
    for (const Part& part : m_parts)
        CopyPart(part.picture, {}, picture, part.corner, part.picture.size());
    m_key = picture.cacheKey();
    return picture;
}
