#include "filing/capture_wastebasket.h"

#include "contracts/desktop.h"
#include "contracts/files.h"
#include "contracts/PlatformError.h"
#include "filing/capture_folders.h"
#include "filing/capture_root.h"
#include "filing/NumberClaim.h"
#include "filing/PictureJournal.h"
#include "frame/components.h"
#include "frame/journal.h"
#include "frame/services.h"
#include "frame/waiting.h"
#include "records/capture_index.h"
#include "visit/Visit.h"

#include <QList>

using namespace Qt::StringLiterals;

namespace {

/// The largest number that the sweep looks at.
constexpr int LastSwept = 75;
/// A still's rows follow its file within this time, whichever station files it.
constexpr int RowsFollowMs = 2000;

} // namespace

void CheckMovable(const Visit& visit, int number)
{
    const QString live = visit.PicturePath(number);
    if (Files().KindOf(live) == FileKind::Other)
        throw PlatformError(u"그림파일이 아니어서 지울 수 없습니다.!! (%1)"_s.arg(NativePath(live)));
}

void MoveToLogFolder(const Visit& visit, int number, const QString& presentYear)
{
    const QString live = visit.PicturePath(number);
    CheckMovable(visit, number);
    if (!PictureExists(live))
        return;
    const QString moved = visit.DeletedPicturePath(number);
    QByteArray content;
    try {
        content = Files().ReadArchivedFile(live);
    } catch (const PlatformError&) {
        // Another station was quicker with the same picture.
        if (!PictureExists(live))
            return;
        throw;
    }
    // A section outside this client's list has no Log folder yet; a year that is over gets none any more.
    if (visit.captureDir == presentYear)
        EnsureFolderOfYear(visit.captureDir, visit.LogFolder());
    WriteWholeFile(moved, content);
    if (Files().ReadArchivedFile(moved) != content)
        throw PlatformError(u"그림파일을 옮기지 못했습니다.!! (%1)"_s.arg(NativePath(moved)));
    DeleteFile(live);
}

void SweepOrphanPictures(const Visit& visit, const PictureJournal& journal)
{
    capture_root::Check(visit.captureDir);
    QList<int> orphans;
    for (int number = 1; number <= LastSwept; ++number) {
        const FileKind kind = Files().KindOf(visit.PicturePath(number));
        if (kind == FileKind::None || NumberClaim::Stands(visit, number) || journal.Holds(visit, number) ||
            HasPictureRow(visit, number))
            continue;
        if (kind == FileKind::File)
            orphans.append(number);
        else
            journal::NoteFault(u"지운 그림의 파일이 없음: %1"_s.arg(NativePath(visit.PicturePath(number))));
    }
    if (orphans.isEmpty())
        return;
    const BusyPointer busy;
    waiting::ServeFor(
        RowsFollowMs, [] { return UseService<Desktop>().EndIsRequested(); }, WaitInput::Dropped);
    for (const int number : orphans) {
        if (NumberClaim::Stands(visit, number) || HasPictureRow(visit, number))
            continue;
        MoveToLogFolder(visit, number, visit.captureDir);
        Files().SetFileNote(visit.DeletedPicturePath(number), SweptNote);
    }
}
