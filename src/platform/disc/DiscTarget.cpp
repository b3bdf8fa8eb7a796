#include "platform/disc/DiscTarget.h"

#include "contracts/files.h"
#include "contracts/PlatformError.h"
#include "frame/services.h"
#include "platform/disc/XorrisoRun.h"

#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

QString FolderOf(const QString& path)
{
    return QFileInfo(NativePath(path)).absolutePath() + u'/';
}

/// What xorriso tells of a drive's medium: profile, state, blocks, and the room left.
DiscMedium MediumFromReport(const QString& profile, const QString& status, const QString& blocks, const QString& space)
{
    static const QRegularExpression rewritable(u"RW|RAM|BD-RE"_s);
    static const QRegularExpression overall(uR"((\d+) overall)"_s);
    DiscMedium medium;
    medium.once = !rewritable.match(profile).hasMatch();
    const bool blank = status.contains(u"is blank"_s);
    medium.holdsData = !blank && status.contains(u"is written"_s);
    medium.writable = blank || (medium.holdsData && !medium.once);
    const qint64 sectors = medium.holdsData ? overall.match(blocks).captured(1).toLongLong()
                                            : QString(space).remove(u's').trimmed().toLongLong();
    medium.freeBytes = medium.writable ? sectors * SectorBytes : 0;
    if (status.contains(u"is not present"_s))
        medium.reason = QString::fromUtf16(NoDiscText);
    else if (medium.holdsData)
        medium.reason = QString::fromUtf16(NotBlankText);
    else
        medium.reason = QString::fromUtf16(UnsuitableText);
    return medium;
}

} // namespace

DiscMedium DiscTarget::ImageMedium() const
{
    const QString folder = FolderOf(m_path);
    DiscMedium medium;
    medium.writable = FolderExists(folder) && QFileInfo(NativePath(folder)).isWritable();
    medium.freeBytes = Files().FreeBytes(folder);
    medium.reason = u"이미지를 저장할 폴더에 쓸 수 없습니다.!! (%1)"_s.arg(NativePath(folder));
    return medium;
}

QStringList DiscTarget::LookCommands() const
{
    return {u"-outdev"_s, m_path, u"-toc"_s, u"-tell_media_space"_s};
}

DiscMedium DiscTarget::MediumOf(const XorrisoRun& run)
{
    if (!run.Succeeded()) {
        DiscMedium none;
        none.reason = run.Reason();
        return none;
    }
    return MediumFromReport(run.Told(u"Media current"_s), run.Told(u"Media status"_s), run.Told(u"Media blocks"_s),
                            run.Told(u"Media space"_s));
}

QString DiscTarget::Begin()
{
    if (m_isImage) {
        const QString folder = FolderOf(m_path);
        Files().RemoveLeftovers(folder);
        m_partial = Files().PartialPath(folder);
    }
    return Address();
}

QString DiscTarget::Address() const
{
    return m_isImage ? u"stdio:"_s + m_partial : m_path;
}

QString DiscTarget::Keep()
{
    if (!m_isImage)
        return {};
    const QFileInfo image(NativePath(m_path));
    const QString folder = FolderOf(m_path);
    const QString ending = image.suffix().isEmpty() ? QString() : u'.' + image.suffix();
    for (int number = 1;; ++number) {
        const QString name = image.completeBaseName() + (number > 1 ? u"-%1"_s.arg(number) : QString()) + ending;
        QString path = folder + name;
        if (Files().KindOf(path) == FileKind::File && QFileInfo(NativePath(path)).size() == 0)
            DeleteFile(path);
        if (!Files().PlaceNewFile(m_partial, path))
            continue;
        m_partial.clear();
        return path;
    }
}

void DiscTarget::Discard()
{
    if (!m_partial.isEmpty())
        DeleteFile(m_partial);
    m_partial.clear();
}

QList<DriveEntry> ListDiscDrives(const QString& image, const QString& devices)
{
    if (!image.isEmpty())
        return {{DriveTypeCd, NativePath(image)}};
    QStringList names = QDir(devices).entryList({u"sr[0-9]*"_s}, QDir::Files | QDir::System);
    const auto number = [](const QString& name) { return name.mid(2).toInt(); };
    std::sort(names.begin(), names.end(),
              [&](const QString& one, const QString& other) { return number(one) < number(other); });
    QList<DriveEntry> drives;
    for (const QString& name : names)
        drives.append({DriveTypeCd, devices + name});
    return drives;
}
