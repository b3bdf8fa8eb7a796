#include "sender/pacs_contents.h"

#include "contracts/files.h"
#include "contracts/PlatformError.h"
#include "frame/services.h"

using namespace Qt::StringLiterals;

PacsContent ReadPacsContent(const Visit& visit, int number)
{
    try {
        const QString path = visit.PicturePath(number);
        const FileKind kind = Files().KindOf(path);
        // Without the folder there is no share to tell.
        if (kind == FileKind::None && FolderExists(visit.SectionFolder()))
            return {PacsContent::Gone};
        if (kind == FileKind::None)
            return {PacsContent::Away, {}, {}, u"캡쳐 폴더에 검사 폴더가 없습니다.!!"_s};
        if (kind == FileKind::Other)
            return {PacsContent::Other, {}, {}, u"그림 파일이 아닙니다.!!"_s};
        return {PacsContent::Read, Files().ReadArchivedFile(path), Files().LastModified(path).toLocalTime(), {}};
    } catch (const PlatformError& error) {
        return {PacsContent::Away, {}, {}, error.Text().simplified()};
    }
}
