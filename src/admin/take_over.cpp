#include "admin/commands.h"

#include "admin/waiting_lists.h"
#include "contracts/LocalDatabase.h"
#include "contracts/PlatformError.h"
#include "filing/capture_folders.h"
#include "filing/journal_rows.h"
#include "filing/MovieFiling.h"
#include "filing/PictureJournal.h"
#include "filing/StillFiles.h"
#include "frame/components.h"
#include "frame/services.h"
#include "frame/terminal.h"
#include "session/VisitContext.h"

using namespace Qt::StringLiterals;

namespace {

const QString JournalEnding = u".journal"_s;
const QString LogEnding = u"-wal"_s;
/// No picture and no movie is longer: what is, is none.
constexpr qint64 LargestFileBytes = 4LL * 1024 * 1024 * 1024;

/// What lies beside a journal and belongs to it.
QStringList FilesOf(const PictureJournal::Found& journal, const QString& folder)
{
    QStringList names;
    for (const PictureRecord& picture : journal.pictures)
        names += Files().FilesStartingWith(folder, QString::fromUtf16(StillFiles::LocalPrefix) + picture.id);
    for (const MovieJob& job : journal.movies)
        names += MovieFiling::NamesIn(folder, job.id);
    return names;
}

bool IsInRoot(const QString& path)
{
    const QString native = NativePath(path);
    return native.startsWith(NativePath(ClientSetup.CaptureRoot)) && !native.split(u'/').contains(u".."_s);
}

bool IsOfRoot(const Visit& visit)
{
    return IsInRoot(visit.captureDir) && IsPathPart(visit.etc);
}

/// Whoever takes a journal over does what stands in it with his own rights: files outside the capture root are no
/// business of a station.
void CheckContent(const QString& path)
{
    const auto database = UseService<LocalDatabases>().OpenToRead(path);
    journal_rows::MakeTables(*database);
    bool isOurs = true;
    for (const PictureRecord& picture : journal_rows::PictureRecords(*database))
        isOurs &= IsOfRoot(picture.visit) && IsPathPart(picture.id);
    for (const PictureJournal::Folder& folder : journal_rows::Folders(*database))
        isOurs &= IsInRoot(folder.captureDir) && IsPathPart(folder.etc);
    for (const DeletionJob& job : journal_rows::Deletions(*database))
        isOurs &= IsOfRoot(job.visit);
    for (const RestoreJob& job : journal_rows::Restores(*database))
        isOurs &= IsOfRoot(job.visit) && IsPathPart(job.id) && IsPathPart(job.source);
    for (const MarkedJob& job : journal_rows::Marked(*database))
        isOurs &= IsOfRoot(job.visit);
    for (const MovieJob& job : journal_rows::Movies(*database)) {
        isOurs &= IsInRoot(job.visit.captureDir) && IsPathPart(job.id);
        for (const MovieJob::File& file : job.earlier + job.brought)
            isOurs &= IsInRoot(file.path) && (file.local.isEmpty() || IsPathPart(file.local));
    }
    if (!isOurs)
        throw PlatformError(u"캡쳐 폴더 밖의 파일이 적힌 목록이어서 이어받지 않습니다.!! (%1)"_s.arg(NativePath(path)));
}

/// Copies into this user's folder. False when it is there already, from a time that was cut off.
bool CopyHere(const QString& folder, const QString& name)
{
    const auto isSmallEnough = [](qint64 /*done*/, qint64 total) { return total <= LargestFileBytes; };
    switch (Files().CopyToNewFile(folder + name, LocalFolder() + name, isSmallEnough)) {
    case CopyOutcome::Copied:
        return true;
    case CopyOutcome::NameTaken:
        if (Files().SameContent(folder + name, LocalFolder() + name))
            return false;
        throw PlatformError(u"같은 이름의 다른 파일이 이미 있습니다.!! (%1)"_s.arg(NativePath(LocalFolder() + name)));
    case CopyOutcome::Stopped:
        break;
    }
    throw PlatformError(u"그림이나 동영상이라기에는 너무 큰 파일입니다.!! (%1)"_s.arg(NativePath(folder + name)));
}

/// The pictures first: a journal names those that lie beside it. One that was cut off is taken over again.
void TakeOver(const PictureJournal::Found& journal, const QString& folder)
{
    const QString name = journal.path.sliced(folder.size());
    const QString stem = name.chopped(JournalEnding.size());
    const auto lock = Files().Lock(folder + stem + u".lock"_s);
    if (lock == nullptr)
        throw PlatformError(u"실행 중인 스테이션의 것입니다.!! (%1)"_s.arg(NativePath(journal.path)));
    const QStringList beside = FilesOf(journal, folder);
    QStringList copied;
    try {
        for (const QString& each : beside + QStringList{name + LogEnding, name}) {
            if (Files().KindOf(folder + each) != FileKind::None && CopyHere(folder, each))
                copied << each;
        }
        // What was copied, not what may stand there by now.
        CheckContent(LocalFolder() + name);
    } catch (const PlatformError&) {
        for (const QString& each : copied)
            DeleteFile(LocalFolder() + each);
        throw;
    }
    UseService<LocalDatabases>().Remove(journal.path);
    for (const QString& each : beside)
        DeleteFile(folder + each);
    DeleteFile(folder + stem + u".lock"_s);
    DeleteFile(PictureJournal::CountPath(stem.section(u'-', 1)));
}

} // namespace

int TakeOverPending(TerminalOutput& out)
{
    for (const QString& other : Surroundings.foldersOfOthers()) {
        const QString folder = other + u'\\';
        for (const PictureJournal::Found& journal : PictureJournal::In(folder)) {
            if (folder == LocalFolder() || journal.holder != Holder::Dead || !journal.path.endsWith(JournalEnding))
                continue;
            try {
                TakeOver(journal, folder);
                out << u"이어받음 "_s << NativePath(journal.path) << u" (%1건)\n"_s.arg(journal.Size());
            } catch (const PlatformError& error) {
                out << error.Text() << u'\n';
            }
        }
    }
    return WritePending(out);
}
