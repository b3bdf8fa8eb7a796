#include "filing/picture_restore.h"

#include "contracts/files.h"
#include "contracts/PlatformError.h"
#include "filing/act_faults.h"
#include "filing/capture_folders.h"
#include "filing/capture_root.h"
#include "filing/capture_wastebasket.h"
#include "filing/NumberClaim.h"
#include "frame/components.h"
#include "frame/services.h"
#include "records/acts.h"
#include "records/capture_index.h"
#include "records/picture_sums.h"

#include <QRegularExpression>

#include <algorithm>
#include <memory>

using namespace Qt::StringLiterals;

namespace {

const QString Prefix = u"restore-"_s;
const QString FailedRestore = u"지운 그림을 되살리지 못했습니다.!!"_s;

QString SourcePath(const RestoreJob& job)
{
    return job.visit.LogFolder() + CheckedPathPart(job.source);
}

QString TakenPath(const RestoreJob& job)
{
    return job.visit.LogFolder() + CheckedPathPart(Prefix + job.id + u'-' + job.source);
}

bool IsThere(const QString& path)
{
    return Files().KindOf(path) != FileKind::None;
}

/// A file that can't be read is a fault, and no difference.
bool HoldTheSame(const QString& one, const QString& other)
{
    return Files().ReadArchivedFile(one) == Files().ReadArchivedFile(other);
}

/// No taken file is seen: so there is none, and no share that has gone.
void CheckShare(const RestoreJob& job)
{
    const QString& year = job.visit.captureDir;
    if (!capture_root::IsGone(year, TakenPath(job)) || !FolderExists(job.visit.LogFolder()))
        throw FilesAway(u"저장 폴더가 응답하지 않습니다.!! (%1)"_s.arg(NativePath(job.visit.LogFolder())));
}

/// Numbers of the visit's pictures in the Log folder.
QList<int> DeletedNumbers(const Visit& visit)
{
    static const QRegularExpression digits(u"^\\d{3,5}"_s);
    QList<int> numbers;
    for (const QString& name : Files().FilesStartingWith(visit.LogFolder(), visit.PicturePrefix()))
        numbers << digits.match(name.sliced(visit.PicturePrefix().size())).captured().toInt();
    return numbers;
}

void DeleteLive(const Visit& visit, int number)
{
    DeleteFile(visit.PicturePath(number));
    NumberClaim::Release(visit, number);
}

/// Under a number whose claim stays.
int WriteUnderNumber(const RestoreJob& job, QStringList& faults)
{
    const Visit& visit = job.visit;
    EnsureFolderOfYear(visit.captureDir, visit.SectionFolder());
    const QByteArray content = Files().ReadArchivedFile(TakenPath(job));
    const QList<int> stored = StoredNumbers(visit, NumberOrder::Any);
    QList<int> known = stored + DeletedNumbers(visit);
    known.removeIf([](int number) { return number > Visit::LargestNumber; });
    const int largest = known.isEmpty() ? 0 : *std::ranges::max_element(known);
    for (int number = job.wanted; number <= Visit::LargestNumber; number = std::max(number, largest) + 1) {
        const auto claim = NumberClaim::Take(visit, number, job.id);
        if (claim == nullptr) {
            // The list of the folder didn't show what an earlier run has brought.
            const auto facts = NumberClaim::Read(visit.ClaimPath(number));
            if (facts && facts->picture == job.id)
                throw FilesAway(u"저장 폴더가 응답하지 않습니다.!! (%1)"_s.arg(NativePath(visit.SectionFolder())));
            continue;
        }
        if (NumberClaim::IsPictureThere(visit, number) || stored.contains(number))
            continue;
        const QString live = visit.PicturePath(number);
        try {
            if (!Files().WriteNewFile(live, content))
                continue;
        } catch (const StoredWithFault& error) {
            faults << error.Text();
        }
        // A later run of this job knows by it that the picture is there.
        claim->Keep();
        try {
            if (Files().ReadArchivedFile(live) != content)
                throw PlatformError(u"그림파일을 옮기지 못했습니다.!! (%1)"_s.arg(NativePath(live)));
        } catch (const FilesAway&) {
            throw;
        } catch (const PlatformError&) {
            DeleteLive(visit, number);
            throw;
        }
        return number;
    }
    throw PlatformError(u"캡쳐번호가 너무 커서 저장할 수 없습니다.!!"_s);
}

/// The number under which an earlier run of this job has brought it.
std::optional<int> NumberOfEarlierRun(const RestoreJob& job)
{
    const std::optional<int> number = NumberClaim::NumberOf(job.visit, job.id);
    if (!number || !IsThere(TakenPath(job)) || HoldTheSame(TakenPath(job), job.visit.PicturePath(*number)))
        return number;
    // Another one that was put there by hand.
    NumberClaim::Release(job.visit, *number);
    return std::nullopt;
}

} // namespace

picture_restore::Taken picture_restore::Take(const RestoreJob& job, const QByteArray& version)
{
    try {
        AsPartOf(FailedRestore, [&job] { Files().RenameFile(SourcePath(job), TakenPath(job)); });
    } catch (const FilesAway&) {
        throw;
    } catch (const PlatformError&) {
        // A share whose answer was lost says so to its repeated question.
        if (!IsThere(TakenPath(job))) {
            if (!IsThere(SourcePath(job)))
                return Taken::Gone;
            throw;
        }
    }
    if (Files().VersionOf(TakenPath(job)) == version)
        return Taken::Yes;
    GiveBack(job);
    return Taken::Another;
}

int picture_restore::Bring(const RestoreJob& job, QStringList& faults)
{
    std::optional<int> number = NumberOfEarlierRun(job);
    if (!number) {
        if (!IsThere(TakenPath(job))) {
            CheckShare(job);
            return 0;
        }
        // It was being given back when that run ended.
        if (IsThere(SourcePath(job)) && HoldTheSame(SourcePath(job), TakenPath(job))) {
            DeleteFile(TakenPath(job));
            return 0;
        }
        number = WriteUnderNumber(job, faults);
    }
    if (!HasPictureRow(job.visit, *number))
        AddCaptureRows(job.visit, *number);
    // What lay in the Log folder tells which picture it is, as long as it lies there.
    if (IsThere(TakenPath(job))) {
        const QString identity = IdentityOfDeleted(TakenPath(job));
        SumIsRestored(job.visit, *number, identity, SumOf(Files().ReadArchivedFile(TakenPath(job))));
        if (!identity.isEmpty())
            Files().SetFileNote(job.visit.PicturePath(*number), IdentityNote, identity.toLatin1());
    }
    try {
        DeleteFile(TakenPath(job));
    } catch (const PlatformError& error) {
        throw Unfinished(error.Text());
    }
    NumberClaim::Release(job.visit, *number);
    return *number;
}

void RecordRestored(const RestoreJob& job, int number)
{
    acts::Act act = acts::Of(acts::Kind::Restored, job.visit, number);
    act.key = job.id;
    acts::Record(act);
}

void picture_restore::GiveBack(const RestoreJob& job)
{
    if (const std::optional<int> number = NumberOfEarlierRun(job))
        DeleteLive(job.visit, *number);
    if (!Files().PlaceNewFile(TakenPath(job), SourcePath(job)))
        AsPartOf(FailedRestore,
                 [&job] { Files().RenameFile(TakenPath(job), PathWithIdentity(SourcePath(job), job.id)); });
}

void picture_restore::DropTaken(const Visit& visit, int number, const QString& id)
{
    for (const QString& name : Files().FilesStartingWith(visit.LogFolder(), Prefix + id + u'-')) {
        if (HoldTheSame(visit.LogFolder() + name, visit.PicturePath(number)))
            DeleteFile(visit.LogFolder() + name);
    }
}

QString picture_restore::SourceOf(const QString& name)
{
    static const QRegularExpression form(u"^restore-[0-9a-f]{32}-(.+)$"_s);
    return form.match(name).captured(1);
}
