#include "filing/originals.h"

#include "contracts/files.h"
#include "contracts/PlatformError.h"
#include "filing/capture_folders.h"
#include "filing/capture_wastebasket.h"
#include "frame/journal.h"
#include "frame/services.h"
#include "records/picture_sums.h"

#include <QRegularExpression>
#include <QUuid>

using namespace Qt::StringLiterals;

namespace {

/// Identities of the live picture, that of the table first; its file's own is the last.
struct Identities
{
    QStringList all;
    bool isTableThere = true;
    bool isInTable = false;
};

/// Those of the table.
QStringList LiveIdentities(const Visit& visit, int number)
{
    QStringList identities;
    for (const StoredSum& sum : SumsOf(visit, number)) {
        if (sum.IsLive())
            identities << sum.id;
    }
    return identities;
}

Identities IdentitiesOf(const Visit& visit, int number)
{
    Identities found;
    try {
        found.all = LiveIdentities(visit, number);
    } catch (const PlatformError& error) {
        // A clinic without the table, or an outage: marking goes on.
        journal::NoteFault(error.Text());
        found.isTableThere = false;
    }
    found.isInTable = !found.all.isEmpty();
    const QString own = IdentityOfDeleted(visit.PicturePath(number));
    if (!own.isEmpty() && !found.all.contains(own))
        found.all << own;
    return found;
}

QString PathAmong(const Visit& visit, const QStringList& identities)
{
    for (const QString& identity : identities) {
        QString path = originals::PathFor(visit, identity);
        if (Files().KindOf(path) == FileKind::File)
            return path;
    }
    return {};
}

void Write(const QString& path, const QByteArray& content)
{
    // Another station may have been quicker with the same.
    Files().WriteNewFile(path, content);
    if (Files().KindOf(path) != FileKind::File || Files().ReadArchivedFile(path).size() < content.size())
        throw PlatformError(u"보관한 파일이 온전하지 않습니다.!! (%1)"_s.arg(NativePath(path)));
}

} // namespace

std::optional<originals::Name> originals::Read(const QString& fileName)
{
    static const QRegularExpression form(uR"(^original-(.{8})(\d{8})-(.+)\.(jpg|bmp)$)"_s);
    const QRegularExpressionMatch match = form.match(fileName);
    if (!match.hasMatch())
        return std::nullopt;
    return Name{match.captured(1), match.captured(2), match.captured(3), match.captured(4)};
}

QString originals::PathFor(const Visit& visit, const QString& picture)
{
    return visit.LogFolder() + CheckedPathPart(QString::fromUtf16(Prefix) + visit.PicturePrefix() + u'-' + picture) +
           u'.' + CheckedPathPart(visit.imageExt);
}

QString originals::PathOf(const Visit& visit, int number)
{
    return PathAmong(visit, IdentitiesOf(visit, number).all);
}

QStringList originals::KnownIdentities(const Visit& visit, int number)
{
    try {
        return LiveIdentities(visit, number);
    } catch (const TableRefused&) {
        return {}; // Earlier releases have none.
    }
}

QString originals::PathOf(const Visit& visit, int number, const QStringList& identities)
{
    const QString own = IdentityOfDeleted(visit.PicturePath(number));
    return PathAmong(visit, own.isEmpty() ? identities : identities + QStringList{own});
}

void originals::Adopt(const Visit& visit, int number)
{
    const QString own = IdentityOfDeleted(visit.PicturePath(number));
    if (own.isEmpty() || Files().KindOf(PathFor(visit, own)) != FileKind::File)
        return;
    const Identities present = IdentitiesOf(visit, number);
    if (!present.isInTable || present.all.last() != own || present.all.first() == own ||
        !PathAmong(visit, present.all.first(present.all.size() - 1)).isEmpty())
        return;
    Files().RenameFile(PathFor(visit, own), PathFor(visit, present.all.first()));
    Files().SetFileNote(visit.PicturePath(number), IdentityNote, present.all.first().toLatin1());
}

void OriginalKeeper::Keep()
{
    try {
        Identities present = IdentitiesOf(m_visit, m_number);
        const QString kept = PathAmong(m_visit, present.all);
        if (kept.isEmpty()) {
            const QByteArray content = Files().ReadArchivedFile(m_visit.PicturePath(m_number));
            if (present.isTableThere && !present.isInTable) {
                journal::NotingFaults([&] { TrustSum(m_visit, m_number, SumOf(content)); });
                present = IdentitiesOf(m_visit, m_number);
            }
            const QString identity =
                present.all.isEmpty() ? QUuid::createUuid().toString(QUuid::Id128) : present.all.first();
            EnsureFolderOfYear(m_visit.captureDir, m_visit.LogFolder());
            Write(originals::PathFor(m_visit, identity), content);
            m_ownIdentity = present.isInTable ? QString() : identity;
        } else if (!present.isInTable) {
            m_ownIdentity = originals::Read(kept.sliced(m_visit.LogFolder().size()))->picture;
        }
    } catch (const PlatformError& error) {
        throw PlatformError(u"표시하기 전의 원래 그림을 보관하지 못하여 저장하지 않았습니다.!!\r\n"_s + error.Text());
    }
}

void OriginalKeeper::NoteWritten() const
{
    if (!m_ownIdentity.isEmpty())
        Files().SetFileNote(m_visit.PicturePath(m_number), IdentityNote, m_ownIdentity.toLatin1());
}
