#include "admin/file_checks.h"

#include "contracts/files.h"
#include "frame/services.h"

#include <QtEndian>

namespace {

constexpr uchar Mark = 0xFF;
constexpr uchar Scan = 0xDA;
/// A recording has a handful on its top level.
constexpr int MostChunks = 1000;

quint32 Little32(const QByteArray& bytes, qsizetype at)
{
    return at + 4 <= bytes.size() ? qFromLittleEndian<quint32>(bytes.constData() + at) : 0;
}

/// Where the data of the first scan begin; negative when no segment leads there.
qsizetype ScanDataAt(const QByteArray& jpeg)
{
    const auto* bytes = reinterpret_cast<const uchar*>(jpeg.constData());
    for (qsizetype at = 2; at + 4 <= jpeg.size();) {
        if (bytes[at] != Mark)
            return -1;
        if (bytes[at + 1] == Mark) {
            ++at; // Filling.
            continue;
        }
        const qsizetype next = at + 2 + (bytes[at + 2] << 8 | bytes[at + 3]);
        if (bytes[at + 1] == Scan)
            return next <= jpeg.size() ? next : -1;
        at = next;
    }
    return -1;
}

} // namespace

Look LookAtPicture(const QByteArray& content)
{
    if (content.startsWith("\xFF\xD8")) {
        const qsizetype data = ScanDataAt(content);
        // Within the data no such pair stands but at their end; behind it a camera may have put something of its own.
        return data > 0 && content.lastIndexOf("\xFF\xD9") >= data ? Look::Whole : Look::Broken;
    }
    if (content.startsWith("BM"))
        return Little32(content, 2) <= content.size() ? Look::Whole : Look::Broken;
    // An empty file, or blocks that were never written.
    return content.count('\0') == content.size() ? Look::Broken : Look::Unknown;
}

bool HasMovieIndex(const QString& path)
{
    constexpr qint64 HeadBytes = 12;
    if (!Files().ReadArchivedPiece(path, 0, HeadBytes).startsWith("RIFF"))
        return false;
    bool hasPictures = false;
    qint64 at = HeadBytes;
    for (int chunk = 0; chunk < MostChunks; ++chunk) {
        const QByteArray head = Files().ReadArchivedPiece(path, at, HeadBytes);
        // Blocks that were never written lead from nothing to nothing.
        if (head.size() < 8 || head.startsWith('\0'))
            return false;
        const qint64 size = Little32(head, 4);
        if (hasPictures && head.startsWith("idx1"))
            return !Files().ReadArchivedPiece(path, at + 8 + size - 1, 1).isEmpty();
        const bool isPictures = head.startsWith("LIST") && head.endsWith("movi");
        // A recording that broke off has no size there.
        if (isPictures && size == 0)
            return false;
        hasPictures |= isPictures;
        at += 8 + size + size % 2;
    }
    return false;
}
