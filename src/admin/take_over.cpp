#include "admin/commands.h"

#include "admin/waiting_lists.h"
#include "contracts/LocalDatabase.h"
#include "contracts/PlatformError.h"
#include "filing/capture_folders.h"
#include "filing/MovieFiling.h"
#include "filing/PictureJournal.h"
#include "filing/StillFiles.h"
#include "frame/components.h"
#include "frame/services.h"
#include "frame/terminal.h"

using namespace Qt::StringLiterals;

namespace {

const QString JournalEnding = u".journal"_s;

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

/// The pictures first: a journal names those that lie beside it. One that was cut off is taken over again.
void TakeOver(const PictureJournal::Found& journal, const QString& folder)
{
    const QString name = journal.path.sliced(folder.size());
    const QString stem = name.chopped(JournalEnding.size());
    const auto lock = Files().Lock(folder + stem + u".lock"_s);
    if (lock == nullptr)
        throw PlatformError(u"실행 중인 스테이션의 것입니다.!! (%1)"_s.arg(NativePath(journal.path)));
    const QStringList beside = FilesOf(journal, folder);
    const auto copy = [&](const QString& each) {
        if (FileExists(folder + each))
            Files().CopyToNewFile(folder + each, LocalFolder() + each, {});
    };
    for (const QString& each : beside)
        copy(each);
    copy(name + u"-wal"_s);
    copy(name);
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
                out << u"이어받음 "_s << NativePath(journal.path)
                    << u" (%1건)\n"_s.arg(journal.pictures.size() + journal.movies.size());
            } catch (const PlatformError& error) {
                out << error.Text() << u'\n';
            }
        }
    }
    return WritePending(out);
}
