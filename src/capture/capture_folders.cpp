#include "capture/capture_folders.h"

#include "contracts/files.h"
#include "contracts/PlatformError.h"
#include "frame/services.h"
#include "text/text_routines.h"
#include "visit/Visit.h"
#include "visit/VisitContext.h"

#include <QComboBox>

using namespace Qt::StringLiterals;

namespace {
void MakeMissingFolder(const QString& path)
{
    if (!FolderExists(path))
        MakeFolder(path);
}
} // namespace

QStringList SectionsOfClient()
{
    QStringList sections = ClientSetup.EtcList.split(u',');
    sections.removeIf([](const QString& piece) { return Trim(piece).isEmpty(); });
    return sections;
}

void PrepareCaptureFolders(const QString& ymd, QComboBox& sections)
{
    sections.clear();
    sections.addItems(SectionsOfClient());
    MakeMissingFolder(ClientSetup.CaptureRoot);
    const QString year = YearFolder(Trim(ClientSetup.CaptureRoot), ymd);
    MakeMissingFolder(year);
    for (const QString& section : SectionsOfClient()) {
        MakeMissingFolder(SectionFolder(year, section));
        MakeMissingFolder(LogFolder(year, section));
    }
    MakeMissingFolder(MovieFolder(year));
}

void EnsureFolderOfYear(const QString& yearFolder, const QString& folder)
{
    if (FolderExists(folder))
        return;
    if (!FolderExists(yearFolder))
        throw PlatformError(
            u"캡쳐 디렉토리가 없습니다.!! 공유 폴더의 연결을 확인하세요.!! (%1)"_s.arg(NativePath(yearFolder)));
    Files().MakeOneFolder(folder);
}
