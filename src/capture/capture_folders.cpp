#include "capture/capture_folders.h"

#include "contracts/files.h"
#include "launch/context/VisitContext.h"
#include "records/capture_scheme.h"
#include "records/text/text_routines.h"

#include <QComboBox>

namespace {
void MakeMissingFolder(const QString& path)
{
    if (!FolderExists(path))
        MakeFolder(path);
}
} // namespace

void PrepareCaptureFolders(const QString& ymd, QComboBox& sections)
{
    MakeMissingFolder(ClientSetup.CaptureRoot);
    const QString year = YearFolder(Trim(ClientSetup.CaptureRoot), ymd);
    MakeMissingFolder(year);
    sections.clear();
    const QStringList pieces = ClientSetup.EtcList.split(u',');
    for (const QString& piece : pieces) {
        if (Trim(piece).isEmpty())
            continue;
        sections.addItem(piece);
        MakeMissingFolder(SectionFolder(year, piece));
        MakeMissingFolder(LogFolder(year, piece));
    }
    MakeMissingFolder(MovieFolder(year));
}
