#include "filing/capture_wastebasket.h"

#include "contracts/desktop.h"
#include "contracts/files.h"
#include "contracts/PlatformError.h"
#include "filing/act_faults.h"
#include "filing/capture_folders.h"
#include "filing/capture_root.h"
#include "filing/NumberClaim.h"
#include "filing/PictureJournal.h"
#include "frame/components.h"
#include "frame/journal.h"
#include "frame/services.h"
#include "frame/waiting.h"
#include "records/acts.h"
#include "records/capture_index.h"
#include "records/picture_sums.h"
#include "text/text_routines.h"
#include "visit/Visit.h"

#include <QList>
#include <QUuid>

using namespace Qt::StringLiterals;

namespace {

/// The largest number that the sweep looks at.
constexpr int LastSwept = 75;
/// A still's rows follow its file within this time, whichever station files it.
constexpr int RowsFollowMs = 2000;
/// Other stations that move pictures of the same number meanwhile are no more than that.
constexpr int MostAttempts = 20;

/// Makes way for a newer picture. A rename is one step for everybody: whoever comes second finds nothing.
void SetAside(const QString& path)
{
    QString id = IdentityOfDeleted(path);
    if (id.isEmpty() || Files().KindOf(PathWithIdentity(path, id)) != FileKind::None)
        id = QUuid::createUuid().toString(QUuid::Id128);
    try {
        Files().RenameFile(path, PathWithIdentity(path, id));
    } catch (const PlatformError&) {
        if (Files().KindOf(path) != FileKind::None)
            throw;
    }
}

bool Holds(const QString& path, const QByteArray& content)
{
    return Files().KindOf(path) == FileKind::File && Files().ReadArchivedFile(path) == content;
}

/// Throws PlatformError, also when what stands there is another than the content.
void WriteAsNewest(const QString& path, const QByteArray& content)
{
    for (int attempt = 0; attempt < MostAttempts; ++attempt) {
        if (Files().KindOf(path) == FileKind::None && Files().WriteNewFile(path, content)) {
            if (Files().ReadArchivedFile(path) == content)
                return;
            break;
        }
        // Written by a run that was cut off, or by another station that moves the same picture.
        if (Holds(path, content))
            return;
        SetAside(path);
    }
    throw PlatformError(u"그림파일을 옮기지 못했습니다.!! (%1)"_s.arg(NativePath(path)));
}

QByteArray Copy(const Visit& visit, int number, const QString& presentYear, const QString& picture)
{
    const QString live = visit.PicturePath(number);
    CheckMovable(visit, number);
    if (!PictureExists(live))
        return {};
    const QString moved = visit.DeletedPicturePath(number);
    QByteArray version = Files().VersionOf(live);
    QByteArray content;
    try {
        content = Files().ReadArchivedFile(live);
    } catch (const PlatformError&) {
        // Another station was quicker with the same picture.
        if (!PictureExists(live))
            return {};
        throw;
    }
    // A section outside this client's list has no Log folder yet; a year that is over gets none any more.
    if (visit.captureDir == presentYear)
        EnsureFolderOfYear(visit.captureDir, visit.LogFolder());
    // Where the table tells no identity, the file may do so.
    const QString id = picture.isEmpty() ? IdentityOfDeleted(live) : picture;
    WriteAsNewest(moved, content);
    if (!id.isEmpty())
        Files().SetFileNote(moved, IdentityNote, id.toLatin1());
    // Another station may have moved the same picture, and a new one have taken its number since.
    const QByteArray present = Files().VersionOf(live);
    if (!present.isEmpty() && present != version)
        throw PlatformError(u"그림이 그사이 다른 것으로 바뀌어 지우지 않았습니다.!! (%1)"_s.arg(NativePath(live)));
    return version;
}

} // namespace

QString IdentityOfDeleted(const QString& path)
{
    return QString::fromLatin1(Files().FileNote(path, IdentityNote));
}

QString PathWithIdentity(const QString& path, const QString& id)
{
    const qsizetype dot = path.lastIndexOf(u'.');
    return path.left(dot) + u'-' + id + path.sliced(dot);
}

void CheckMovable(const Visit& visit, int number)
{
    const QString live = visit.PicturePath(number);
    if (Files().KindOf(live) == FileKind::Other)
        throw PlatformError(u"그림파일이 아니어서 지울 수 없습니다.!! (%1)"_s.arg(NativePath(live)));
}

void MoveToLogFolder(const Visit& visit, int number, const QString& presentYear, const QString& picture)
{
    AsPartOf(u"캡쳐 %1번을 지운 그림 폴더로 옮기지 못했습니다.!!"_s.arg(NumberText(number)), [&] {
        if (!Copy(visit, number, presentYear, picture).isEmpty())
            DeleteFile(visit.PicturePath(number));
    });
}

QByteArray CopyToLogFolder(const Visit& visit, int number, const QString& presentYear, const QString& picture)
{
    return Copy(visit, number, presentYear, picture);
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
        const QString id = PictureIdOf(visit, number);
        MoveToLogFolder(visit, number, visit.captureDir, id);
        if (!id.isEmpty())
            SumIsDeleted(visit, number, id);
        Files().SetFileNote(visit.DeletedPicturePath(number), SweptNote, "1");
        acts::Record(acts::Kind::Swept, visit, number);
    }
}
