#include "filing/capture_folders.h"

#include "contracts/desktop.h"
#include "contracts/files.h"
#include "contracts/PlatformError.h"
#include "filing/capture_root.h"
#include "frame/components.h"
#include "frame/services.h"
#include "text/text_routines.h"
#include "visit/Visit.h"

using namespace Qt::StringLiterals;

QString LocalFolder()
{
    return UseService<Desktop>().StateFolder() + u'\\';
}

QStringList CaptureFolders(const QString& root, const QString& ymd, const QStringList& sections)
{
    const QString year = YearFolder(Trim(root), ymd);
    QStringList folders{root, year};
    for (const QString& section : sections)
        folders << SectionFolder(year, section) << LogFolder(year, section);
    folders << MovieFolder(year);
    return folders;
}

void MakeMissingFolders(const QStringList& folders)
{
    if (!folders.isEmpty())
        capture_root::Check(folders.first());
    for (const QString& folder : folders) {
        if (!FolderExists(folder))
            MakeFolder(folder);
    }
}

void EnsureFolderOfYear(const QString& yearFolder, const QString& folder)
{
    capture_root::Check(yearFolder);
    if (FolderExists(folder))
        return;
    if (!FolderExists(yearFolder))
        throw PlatformError(
            u"캡쳐 디렉토리가 없습니다.!! 공유 폴더의 연결을 확인하세요.!! (%1)"_s.arg(NativePath(yearFolder)));
    Files().MakeOneFolder(folder);
}
