#include "admin/patient_traces.h"

#include "admin/commands.h"
#include "admin/deleted_pictures.h"
#include "admin/table_columns.h"
#include "contracts/LocalDatabase.h"
#include "filing/capture_folders.h"
#include "filing/journal_rows.h"
#include "filing/MovieFiling.h"
#include "filing/NumberClaim.h"
#include "filing/originals.h"
#include "filing/PictureJournal.h"
#include "filing/ProcessList.h"
#include "filing/StationLease.h"
#include "filing/StillFiles.h"
#include "frame/components.h"
#include "frame/journal.h"
#include "frame/services.h"
#include "pacs/queue_rows.h"
#include "pacs/SenderQueue.h"
#include "records/Statement.h"
#include "session/VisitContext.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype DateSize = 8;
const QString LogEnding = u"Log"_s;
const QString JournalEnding = u".journal"_s;

/// Files whose names begin with the chart and a date, hidden ones too. A failing list is no empty one.
QStringList NamesOf(const QString& folder, const QString& chart)
{
    const QString original = QString::fromUtf16(originals::Prefix);
    QStringList names = Files().FilesStartingWith(folder, chart) + Files().FilesStartingWith(folder, u'.' + chart) +
                        Files().FilesStartingWith(folder, original + chart);
    if (names.isEmpty())
        Files().Entries(folder);
    names.removeIf([&](const QString& name) {
        const qsizetype before = name.startsWith(original) ? original.size() : name.startsWith(u'.') ? 1 : 0;
        const QString date = name.mid(before + chart.size(), DateSize);
        return date.size() != DateSize || !std::ranges::all_of(date, [](QChar each) { return each.isDigit(); });
    });
    return names;
}

/// Somebody who lives, or may, is working on the file.
bool IsHeldBy(const QString& mark, const QString& path)
{
    const Holder holder = StationLease::HolderOf(ClientSetup.CaptureRoot, mark);
    return holder == Holder::Living || holder == Holder::Self ||
           (holder == Holder::Elsewhere && Files().AgeMs(path) < AbandonedMs);
}

/// Tells of a picture that is being filed, and of a movie that is being written.
void TellHeld(const QString& path, const QString& name, PatientTraces& traces)
{
    QString mark = Files().MarkOfPartial(name);
    const bool isClaim = !name.contains(u'.');
    if (isClaim) {
        const std::optional<NumberClaim::Facts> facts = NumberClaim::Read(path);
        mark = facts ? facts->holder : QString();
    }
    if ((isClaim || !mark.isEmpty()) && IsHeldBy(mark, path))
        traces.openVisits << u"저장하고 있는 파일: "_s + NativePath(path);
}

int LivingStations()
{
    const QString& root = ClientSetup.CaptureRoot;
    const QString prefix = QString::fromUtf16(LeasePrefix);
    int count = 0;
    for (const QString& name : Files().FilesStartingWith(root, prefix)) {
        const Holder holder = StationLease::HolderOf(root, name.sliced(prefix.size()));
        if (holder == Holder::Living ||
            (holder == Holder::Elsewhere && Files().AgeMs(root + name) <= StationLease::OldMs))
            ++count;
    }
    return count;
}

void LookIntoArchive(PatientTraces& traces)
{
    PatientTraces::Files pictures{u"그림"_s, {}};
    PatientTraces::Files deleted{u"삭제된 그림(Log 폴더)"_s, {}};
    PatientTraces::Files unmarked{u"표시하기 전의 원래 그림(Log 폴더)"_s, {}};
    PatientTraces::Files movies{u"동영상"_s, {}};
    PatientTraces::Files claims{u"번호 표시"_s, {}};
    for (const QString& year : ArchiveYears()) {
        const QString yearFolder = YearFolder(ClientSetup.CaptureRoot, year);
        for (const FolderEntry& entry : Files().Entries(yearFolder)) {
            if (!entry.IsFolder || entry.IsLink || !IsPathPart(entry.Name))
                continue;
            const QString folder = yearFolder + entry.Name + u'\\';
            for (const QString& name : NamesOf(folder, traces.chart)) {
                const QString path = folder + name;
                if (folder == MovieFolder(yearFolder))
                    movies.paths << path;
                else if (entry.Name.endsWith(LogEnding))
                    (originals::Read(name) ? unmarked : deleted).paths << path;
                else if (name.contains(u'.'))
                    pictures.paths << path;
                else
                    claims.paths << path;
                TellHeld(path, name, traces);
            }
        }
    }
    traces.archive = {pictures, movies, deleted, unmarked, claims};
}

void LookIntoJournals(const QString& folder, PatientTraces& traces)
{
    for (const PictureJournal::Found& journal : PictureJournal::In(folder)) {
        if (!journal.isReadable) {
            traces.unreadable << NativePath(journal.path);
            continue;
        }
        const bool isJournal = journal.path.endsWith(JournalEnding);
        PatientTraces::Waiting waiting;
        waiting.kind = isJournal ? PatientTraces::Waiting::Journal : PatientTraces::Waiting::OldList;
        waiting.path = journal.path;
        waiting.holder = journal.holder;
        waiting.foreignOwner = journal.foreignOwner;
        waiting.lock = journal.path.chopped(isJournal ? JournalEnding.size() : 0) + u".lock"_s;
        for (const PictureRecord& picture : journal.pictures) {
            if (picture.visit.chart != traces.chart)
                continue;
            waiting.pictures << picture.id;
            for (const QString& name :
                 Files().FilesStartingWith(folder, QString::fromUtf16(StillFiles::LocalPrefix) + picture.id))
                waiting.files << folder + name;
        }
        for (const MovieJob& movie : journal.movies) {
            if (movie.visit.chart != traces.chart)
                continue;
            waiting.movies << movie.id;
            for (const QString& name : MovieFiling::NamesIn(folder, movie.id))
                waiting.files << folder + name;
        }
        if (isJournal)
            journal::NotingFaults([&] {
                for (const DeletionJob& job :
                     journal_rows::Deletions(*UseService<LocalDatabases>().OpenToRead(journal.path))) {
                    if (job.visit.chart == traces.chart)
                        waiting.deletions << job.id;
                }
            });
        waiting.lines = static_cast<int>(waiting.pictures.size() + waiting.movies.size() + waiting.deletions.size());
        if (waiting.lines == 0)
            continue;
        // Another machine's has its own folder, or may live.
        if (journal.holder != Holder::Dead)
            traces.openVisits << u"실행 중일 수 있는 스테이션의 목록: "_s + NativePath(journal.path);
        traces.waiting << waiting;
    }
}

void LookIntoQueues(const QString& folder, PatientTraces& traces)
{
    for (const SenderQueue::Found& queue : SenderQueue::In(folder)) {
        if (!queue.isReadable) {
            traces.unreadable << NativePath(queue.path);
            continue;
        }
        PatientTraces::Waiting waiting;
        waiting.kind = PatientTraces::Waiting::Queue;
        waiting.path = queue.path;
        waiting.foreignOwner = queue.foreignOwner;
        const auto database = UseService<LocalDatabases>().OpenToRead(queue.path);
        for (const QString& table : queue_rows::PatientTables(*database))
            waiting.lines += database
                                 ->Rows(Statement(u"SELECT COUNT(*) FROM ")
                                            .Piece(table)
                                            .Quoted(u" WHERE chart = '", traces.chart)
                                            .Text())
                                 .value(0)
                                 .value(0)
                                 .toInt();
        if (waiting.lines > 0)
            traces.waiting << waiting;
        if (queue.isSenderThere && std::ranges::any_of(queue.entries, [&traces](const PacsEntry& entry) {
                return entry.chart == traces.chart && entry.state == PacsState::UnderWay;
            }))
            traces.openVisits << u"PACS로 보내고 있는 그림: "_s + NativePath(queue.path);
    }
    for (const ProcessList::Found& list : ProcessList::In(folder, u"Pacs"_s)) {
        if (!list.isReadable) {
            traces.unreadable << NativePath(list.path);
            continue;
        }
        PatientTraces::Waiting waiting;
        waiting.kind = PatientTraces::Waiting::OldList;
        waiting.path = list.path;
        waiting.holder = list.holder;
        waiting.foreignOwner = list.foreignOwner;
        waiting.lines = static_cast<int>(list.document.toJson().count('"' + traces.chart.toUtf8() + '"'));
        if (waiting.lines > 0)
            traces.waiting << waiting;
    }
}

void LookIntoTables(bool isServer, PatientTraces& traces)
{
    // In the order in which they go: what tells where a file lay before what tells that there was a visit.
    const QList<std::pair<QString, QString>> tables{{u"ca_sum"_s, u"sum_chart"_s},  {u"cap"_s, u"cap_chart"_s},
                                                    {u"ca"_s, u"ca_chart"_s},       {u"caso"_s, u"caso_chart"_s},
                                                    {u"ca_study"_s, u"st_chart"_s}, {u"ca_uid"_s, u"uid_chart"_s}};
    for (const auto& [table, column] : tables) {
        if (ColumnsOf(table, isServer).isEmpty()) {
            traces.closedTables << table;
            continue;
        }
        const auto row = OpenRows(
            Statement(u" SELECT COUNT(*) FROM %1 WHERE %2 = '"_s.arg(table, column)).Value(traces.chart).Piece(u"' "));
        if (const qint64 count = row->Fields(0).toLongLong(); count > 0)
            traces.rows.append({table, column, count});
    }
}

} // namespace

bool PatientTraces::IsAny() const
{
    return !waiting.isEmpty() || !rows.isEmpty() ||
           std::ranges::any_of(archive, [](const Files& files) { return !files.paths.isEmpty(); });
}

PatientTraces TracesOf(const QString& chart, bool isServer)
{
    PatientTraces traces;
    traces.chart = chart;
    traces.livingStations = LivingStations();
    LookIntoArchive(traces);
    QStringList folders{LocalFolder()};
    for (const QString& folder : Surroundings.foldersOfOthers ? Surroundings.foldersOfOthers() : QStringList()) {
        if (!folders.contains(folder + u'\\'))
            folders << folder + u'\\';
    }
    for (const QString& folder : folders) {
        LookIntoJournals(folder, traces);
        LookIntoQueues(folder, traces);
    }
    LookIntoTables(isServer, traces);
    return traces;
}
