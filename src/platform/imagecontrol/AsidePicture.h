#pragma once

#include <QImage>
#include <QList>

#include <vector>

/// A picture that is kept as what differs from another one, in small rectangles. What several have in common takes its
/// memory once.
class AsidePicture
{
public:
    bool IsEmpty() const { return m_base.isNull(); }
    /// Keeps the picture against what one of these is kept against, itself among them, or whole where it is too
    /// different from all. Null empties it.
    void Keep(const QImage& picture, const QList<const AsidePicture*>& others);
    /// Put together anew, unless it is kept whole.
    QImage Picture() const;

private:
    struct Part
    {
        QPoint corner;
        QImage picture;
    };
    using Parts = std::vector<Part>;
    /// False when too much differs.
    static bool FindParts(const QImage& base, const QImage& picture, const QList<const AsidePicture*>& others,
                          Parts& parts);

    QImage m_base;
    Parts m_parts;
    mutable qint64 m_key = 0; ///< Of the picture that was kept, or put together, last.
};
