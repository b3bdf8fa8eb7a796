#include "sender/pacs_contents.h"

#include "contracts/files.h"
#include "contracts/PlatformError.h"
#include "filing/capture_wastebasket.h"
#include "filing/originals.h"
#include "frame/services.h"
#include "pacs/handed_files.h"
#include "pacs/parts.h"

using namespace Qt::StringLiterals;

namespace {

/// Of what stands under the name: nothing when it is a regular file.
std::optional<PacsContent> WithoutFile(const QString& path, const QString& folder)
{
    const FileKind kind = Files().KindOf(path);
    // Without the folder there is no share to tell.
    if (kind == FileKind::None && FolderExists(folder))
        return PacsContent{PacsContent::Gone};
    if (kind == FileKind::None)
        return PacsContent{PacsContent::Away, {}, {}, {}, u"캡쳐 폴더에 검사 폴더가 없습니다.!!"_s};
    if (kind == FileKind::Other)
        return PacsContent{PacsContent::Other, {}, {}, {}, u"그림 파일이 아닙니다.!!"_s};
    return std::nullopt;
}

PacsContent PictureContent(const PacsEntry& entry, const Visit& visit, const QStringList& identities)
{
    const QString path = visit.PicturePath(entry.number);
    if (const auto without = WithoutFile(path, visit.SectionFolder()))
        return *without;
    PacsContent content{PacsContent::Read, Files().ReadArchivedFile(path)};
    content.takenAt = Files().LastModified(path).toLocalTime();
    const QString original = originals::PathOf(visit, entry.number, identities);
    if (!original.isEmpty())
        content.original = Files().ReadArchivedFile(original);
    if (entry.part == QStringView(parts::Original)) {
        if (content.original.isEmpty())
            return {PacsContent::Gone};
        content.bytes = content.original;
    }
    return content;
}

/// What was deleted, and its original.
PacsContent DeletedContent(const PacsEntry& entry, const Visit& visit)
{
    const QString path = visit.DeletedPicturePath(entry.number);
    if (const auto without = WithoutFile(path, visit.LogFolder()))
        return *without;
    PacsContent content{PacsContent::Read, Files().ReadArchivedFile(path)};
    const QString identity = IdentityOfDeleted(path);
    const QString original = identity.isEmpty() ? QString() : originals::PathFor(visit, identity);
    if (!original.isEmpty() && Files().KindOf(original) == FileKind::File)
        content.original = Files().ReadArchivedFile(original);
    return content;
}

PacsContent MovieContent(const PacsEntry& entry, const Visit& visit)
{
    // One that a later movie has taken the place of doesn't go.
    if (const auto without = WithoutFile(MovieSource(entry, visit), MovieFolder(visit.captureDir)))
        return *without;
    return {Files().KindOf(handed_files::MoviePath(entry.id)) == FileKind::File ? PacsContent::Read : PacsContent::Raw};
}

PacsContent ContentOf(const PacsEntry& entry, const Visit& visit, const QStringList& identities)
{
    if (parts::IsMovie(entry.part))
        return MovieContent(entry, visit);
    if (parts::IsSearch(entry.part))
        return DeletedContent(entry, visit);
    if (!parts::IsReport(entry.part))
        return PictureContent(entry, visit, identities);
    const QString path = handed_files::ReportPath(entry.id);
    if (Files().KindOf(path) != FileKind::File)
        return {PacsContent::Other, {}, {}, {}, u"소견서의 PDF 파일이 없습니다.!! 소견서를 다시 저장하십시오."_s};
    return {PacsContent::Read, Files().ReadArchivedFile(path)};
}

} // namespace

PacsContent ReadPacsContent(const PacsEntry& entry, const Visit& visit, const QStringList& identities)
{
    try {
        return ContentOf(entry, visit, identities);
    } catch (const PlatformError& error) {
        return {PacsContent::Away, {}, {}, {}, error.Text().simplified()};
    }
}

QString MovieSource(const PacsEntry& entry, const Visit& visit)
{
    return MovieFolder(visit.captureDir) + CheckedPathPart(parts::ValueOf(entry.part));
}
