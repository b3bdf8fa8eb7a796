#include "platform/disc/staged_files.h"

#include "contracts/files.h"
#include "frame/services.h"
#include "platform/disc/XorrisoRun.h"

#include <QHash>
#include <QRegularExpression>
#include <QSet>

using namespace Qt::StringLiterals;

namespace {

/// Tables, padding and the record of checksums of a volume.
constexpr qint64 VolumeBytes = 1024 * 1024;
/// Of a name, in the file system and on a disc.
constexpr qsizetype LongestNameBytes = 255;

QString DiscName(const QString& name, DiscNames names, QSet<QString>& taken)
{
    static const QRegularExpression breaking(uR"([\x00-\x1f\x7f])"_s);
    static const QRegularExpression refused(uR"([\x00-\x1f\x7f"*:<>?|\\]|[. ]+$)"_s);
    QString plain = name;
    plain.replace(names == DiscNames::Stick ? refused : breaking, u"_"_s);
    QString chosen = plain;
    for (int number = 2; taken.contains(chosen.toCaseFolded()); ++number)
        chosen = NumberedName(plain, number);
    taken.insert(chosen.toCaseFolded());
    return chosen;
}

void ListInto(StagedFiles& staged, DiscNames names, const QString& root, const QString& below,
              const QString& discFolder)
{
    QSet<QString> taken;
    for (const FolderEntry& entry : Files().Entries(root + below)) {
        if (entry.IsLink)
            continue;
        // No path leads into a folder with a backslash in its name.
        if (entry.IsNameBroken || (entry.IsFolder && !IsPathPart(entry.Name))) {
            staged.unreadable << below + entry.Name;
            continue;
        }
        const QString name = DiscName(entry.Name, names, taken);
        if (name != entry.Name)
            staged.renames.append({discFolder + entry.Name, discFolder + name});
        if (entry.IsFolder) {
            staged.folders.append(below + entry.Name);
            ListInto(staged, names, root, below + entry.Name + u'/', discFolder + name + u'/');
        } else {
            staged.files.append({below + entry.Name, entry.Size, entry.DateLastModified});
        }
    }
}

/// Takes a word out of the quotes that a shell would: 'a'"'"'b' is a'b.
QString Unquoted(QStringView quoted)
{
    QString text;
    QChar open;
    for (const QChar sign : quoted) {
        if (open.isNull() && (sign == u'\'' || sign == u'"'))
            open = sign;
        else if (sign == open)
            open = QChar();
        else
            text += sign;
    }
    return text;
}

} // namespace

QString NumberedName(const QString& name, int number)
{
    const qsizetype point = name.lastIndexOf(u'.');
    const QString end = u" (%1)"_s.arg(number) + (point > 0 ? name.mid(point) : QString());
    QString stem = point > 0 ? name.left(point) : name;
    while (stem.size() > 1 && (stem + end).toUtf8().size() > LongestNameBytes)
        stem.chop(stem.back().isLowSurrogate() ? 2 : 1);
    return stem + end;
}

qint64 StagedFiles::DiscBytes() const
{
    // A folder's record, and the two names that each entry has, are far below two sectors.
    qint64 bytes = VolumeBytes + (folders.size() + 1) * 2 * SectorBytes;
    for (const StagedFile& file : files)
        bytes += (file.bytes + SectorBytes - 1) / SectorBytes * SectorBytes + SectorBytes;
    return bytes;
}

QString StagedFiles::OnDisc(const StagedFile& file) const
{
    QString path = u'/' + file.path;
    for (const DiscRename& rename : renames) {
        if (path == rename.from || path.startsWith(rename.from + u'/'))
            path.replace(0, rename.from.size(), rename.to);
    }
    return path;
}

QHash<QString, qint64> StagedFiles::OnDisc() const
{
    QHash<QString, qint64> expected;
    for (const StagedFile& file : files)
        expected.insert(OnDisc(file), file.bytes);
    return expected;
}

StagedFiles ListStagedFiles(const QString& folder, DiscNames names)
{
    StagedFiles staged;
    ListInto(staged, names, folder, QString(), u"/"_s);
    return staged;
}

QStringList ChangedSince(const QString& folder, const StagedFiles& staged)
{
    QHash<QString, StagedFile> now;
    for (const StagedFile& file : ListStagedFiles(folder).files)
        now.insert(file.path, file);
    QStringList changed;
    for (const StagedFile& file : staged.files) {
        const auto found = now.constFind(file.path);
        if (found == now.constEnd() || found->bytes != file.bytes || found->changed != file.changed)
            changed << file.path;
    }
    return changed;
}

void DeleteStagedFiles(const QString& folder, const StagedFiles& staged)
{
    const QStringList changed = ChangedSince(folder, staged);
    const auto deleteBelow = [&folder](const QString& path) {
        const qsizetype name = path.lastIndexOf(u'/') + 1;
        Files().DeleteEntry(folder + path.left(name), path.mid(name));
    };
    for (const StagedFile& file : staged.files) {
        if (!changed.contains(file.path))
            deleteBelow(file.path);
    }
    for (qsizetype at = staged.folders.size() - 1; at >= 0; --at) {
        const QString& below = staged.folders[at];
        if (FolderExists(folder + below) && Files().Entries(folder + below).isEmpty())
            deleteBelow(below);
    }
}

QHash<QString, qint64> FilesOfListing(const QStringList& lines)
{
    // "-rw-r--r--    1 0        0         3000000 Nov 24 22:42 '/a.jpg'"
    static const QRegularExpression pattern(uR"(^-\S+\s+\d+\s+\S+\s+\S+\s+(\d+)\s.*?\s(['"]/.*)$)"_s);
    QHash<QString, qint64> files;
    for (const QString& line : lines) {
        const QRegularExpressionMatch match = pattern.match(line);
        if (match.hasMatch())
            files.insert(Unquoted(match.capturedView(2)), match.captured(1).toLongLong());
    }
    return files;
}
