#include "filing/MovieFiling.h"

#include "contracts/files.h"
#include "contracts/PlatformError.h"
#include "contracts/VideoOptions.h"
#include "filing/capture_folders.h"
#include "filing/capture_root.h"
#include "filing/PictureJournal.h"
#include "filing/StationLease.h"
#include "filing/StillFiling.h"
#include "frame/components.h"
#include "frame/guard.h"
#include "frame/journal.h"
#include "frame/services.h"

#include <QHash>
#include <QPointer>
#include <QUuid>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

/// So often it is looked whether a file has become whole, and a share that refuses is asked again.
constexpr int LookMs = 1000;
/// More than a slow share takes for one file.
constexpr int HeldLooks = 10;
/// Begins the names of movies on this machine, and, behind a point, of those that are being written.
const QString LocalPrefix = u"Movie-"_s;
constexpr char16_t MovieEnding[] = u".avi";
/// Behind the movies' common part and a process's mark: that process records a movie of the visit.
constexpr char16_t RecordingEnding[] = u".recording";

QString StemName(const Visit& visit)
{
    return visit.MovieStem().sliced(MovieFolder(visit.captureDir).size());
}

QString RecordingPrefix(const Visit& visit)
{
    return u'.' + StemName(visit) + u'.';
}

QString RecordingPath(const Visit& visit)
{
    return MovieFolder(visit.captureDir) + RecordingPrefix(visit) + Files().ProcessMark() +
           QString::fromUtf16(RecordingEnding);
}

/// Paths of the marks of processes that record a movie of the visit, or did so when they died.
QHash<QString, Holder> RecordingMarks(const Visit& visit)
{
    const QString prefix = RecordingPrefix(visit);
    QHash<QString, Holder> marks;
    for (const QString& name : Files().FilesStartingWith(MovieFolder(visit.captureDir), prefix)) {
        if (!name.endsWith(QStringView(RecordingEnding)))
            continue;
        const QString mark = name.sliced(prefix.size()).chopped(QStringView(RecordingEnding).size());
        marks.insert(MovieFolder(visit.captureDir) + name, StationLease::HolderOf(RootOfYear(visit.captureDir), mark));
    }
    return marks;
}

/// The visit's movies on the share.
QStringList MoviesOf(const Visit& visit)
{
    const QString folder = MovieFolder(visit.captureDir);
    QStringList paths;
    for (const QString& name : Files().FilesStartingWith(folder, StemName(visit))) {
        if (name.endsWith(QStringView(MovieEnding), Qt::CaseInsensitive))
            paths.append(folder + name);
    }
    return paths;
}

/// 0 in any other name.
int NumberIn(const QString& path, const Visit& visit)
{
    return path.sliced(visit.MovieStem().size()).section(u'.', 0, 0).toInt();
}

/// Path of a movie's files on this machine without number and extension.
QString LocalStem(const QString& id)
{
    return LocalFolder() + LocalPrefix + id + u'-';
}

/// But for others that have come under their names since.
void DeleteFiles(const QList<MovieJob::File>& files)
{
    for (const MovieJob::File& file : files) {
        if (Files().VersionOf(file.path) == file.version)
            DeleteFile(file.path);
    }
}

} // namespace

QStringList MovieFiling::NamesIn(const QString& folder, const QString& id)
{
    const QString prefix = LocalPrefix + id;
    // Asked first: one that becomes whole meanwhile is found under both names, never under none.
    const QStringList beingWritten = Files().FilesStartingWith(folder, u'.' + prefix);
    return Files().FilesStartingWith(folder, prefix) + beingWritten;
}

MovieFiling::MovieFiling(StillFiling& filing) : m_filing(filing), m_journal(filing.Journal())
{
    m_again.setInterval(LookMs);
    connect(&m_again, &QTimer::timeout, this, &MovieFiling::Look);
    for (const MovieJob& job : m_journal.Movies())
        m_doubtful.insert(job.id);
    RepairIn(LocalFolder());
    Look();
}

void MovieFiling::RepairIn(const QString& folder)
{
    // A program without video leaves that to the station.
    if (ServiceSlot<VideoOptions>() != nullptr)
        m_share.Post([folder] { journal::NotingFaults([&] { UseService<VideoOptions>().RepairMovies(folder); }); });
}

QString MovieFiling::Begin(const Visit& visit)
{
    MovieJob job;
    job.id = m_beginning = QUuid::createUuid().toString(QUuid::Id128);
    job.visit = visit;
    job.startedAt = QDateTime::currentDateTime();
    m_journal.StoreMovie(job);
    Look();
    return LocalStem(job.id);
}

void MovieFiling::HasBegun()
{
    m_beginning.clear();
    Look();
}

bool MovieFiling::IsAtRest() const
{
    return m_journal.Movies().isEmpty() || (!m_isUnderWay && !m_isAway && m_lookedAt.isEmpty());
}

void MovieFiling::End()
{
    m_hasEnded = true;
    m_again.stop();
    m_share.End();
}

void MovieFiling::Look()
{
    if (m_hasEnded)
        return;
    const QList<MovieJob>& jobs = m_journal.Movies();
    if (jobs.isEmpty()) {
        m_again.stop();
        return;
    }
    m_again.start();
    if (m_isUnderWay) {
        if (++m_looksUnderWay == HeldLooks)
            setAway(true, u"저장 폴더가 응답하지 않음"_s);
        return;
    }
    const auto last = std::ranges::find(jobs, m_lookedAt, &MovieJob::id);
    Go(last != jobs.end() && last + 1 != jobs.end() ? *(last + 1) : jobs.first());
}

void MovieFiling::Go(const MovieJob& job)
{
    m_isUnderWay = true;
    m_looksUnderWay = 0;
    Result begun{.job = job};
    for (const MovieJob& older : m_journal.Movies()) {
        if (older.id == job.id)
            break;
        if (older.visit.MovieStem() == job.visit.MovieStem())
            begun.older.append(older);
    }
    m_share.Post([result = begun, mayBeThere = m_doubtful.contains(job.id), isBeginning = job.id == m_beginning,
                  self = QPointer(this)]() mutable {
        try {
            if (!result.job.isListed) {
                List(result.job);
                result.hasChanged = true;
            } else {
                BringFiles(result, mayBeThere);
                result.isOver &= !isBeginning;
            }
        } catch (...) {
            result.fault = std::current_exception();
        }
        PostToScreen([self, result] {
            if (self && !self->m_hasEnded)
                self->Answer(result);
        });
    });
}

void MovieFiling::Answer(const Result& result)
{
    m_isUnderWay = false;
    const MovieJob& job = result.job;
    if (result.fault != nullptr) {
        m_doubtful.insert(job.id);
        m_refused.insert(job.id);
        setAway(true, guard::TextOf(result.fault));
    } else {
        m_refused.remove(job.id);
        setAway(!m_refused.isEmpty(), {});
    }
    if (result.hasPlace) {
        for (const MovieJob& older : result.older) {
            ForgetSums(older.visit, older.brought);
            Forget(older.id);
        }
    }
    for (const MovieSum& brought : result.sums)
        m_filing.Marked().AddMovie(job.visit, brought.number, brought.sum, brought.version);
    if (result.hasChanged) {
        for (const QString& name : result.come)
            m_journal.HandOverMovie(job, name);
        m_journal.StoreMovie(job);
        if (result.fault == nullptr) {
            // What is about to be deleted, there or here, stands there first.
            m_isUnderWay = true;
            m_filing.AfterJournal(this, [this, job] { Go(job); });
            return;
        }
    }
    // One that is refused, or whose part couldn't be made whole, keeps no other waiting.
    m_lookedAt = job.id == m_journal.Movies().last().id ? QString() : job.id;
    if (result.isOver)
        Close(job);
    if (result.isOver || !m_lookedAt.isEmpty())
        Look();
}

void MovieFiling::Close(const MovieJob& job)
{
    ForgetSums(job.visit, job.earlier);
    const QList<MovieJob> jobs = m_journal.Movies();
    const auto own = std::ranges::find(jobs, job.id, &MovieJob::id);
    for (auto later = own; later != jobs.end(); ++later) {
        if (later == own || !later->isListed || later->visit.MovieStem() != job.visit.MovieStem())
            continue;
        MovieJob changed = *later;
        changed.earlier += job.brought;
        m_journal.StoreMovie(changed);
    }
    Forget(job.id);
}

void MovieFiling::ForgetSums(const Visit& visit, const QList<MovieJob::File>& files)
{
    for (const MovieJob::File& file : files)
        m_filing.Marked().AddMovie(visit, NumberIn(file.path, visit), {}, {});
}

void MovieFiling::Forget(const QString& id)
{
    m_doubtful.remove(id);
    m_refused.remove(id);
    m_journal.RemoveMovie(id);
}

void MovieFiling::setAway(bool isAway, const QString& reason)
{
    if (isAway == std::exchange(m_isAway, isAway))
        return;
    if (isAway)
        journal::Note(Journal::Warning, u"동영상을 저장 폴더로 옮기지 못하여 이 컴퓨터에 보관함: %1"_s.arg(reason));
    else
        journal::Note(Journal::Information, u"저장 폴더가 동영상을 다시 받음"_s);
    Q_EMIT Changed();
}

void MovieFiling::List(MovieJob& job)
{
    const Visit& visit = job.visit;
    EnsureFolderOfYear(visit.captureDir, MovieFolder(visit.captureDir));
    // Of two that begin at the same moment, one at least sees the other.
    Files().CreateExclusively(RecordingPath(visit), {});
    for (const QString& path : MoviesOf(visit))
        job.earlier.append({path, Files().VersionOf(path)});
    const QHash<QString, Holder> marks = RecordingMarks(visit);
    const bool anotherRecords = std::ranges::any_of(
        marks, [](Holder holder) { return holder == Holder::Living || holder == Holder::Elsewhere; });
    // A folder that has gone meanwhile has told nothing of what lies in it.
    if (!FileExists(RecordingPath(visit)))
        throw FilesAway(u"저장 폴더가 응답하지 않습니다.!!"_s);
    if (anotherRecords)
        job.earlier.clear();
    job.isListed = true;
}

void MovieFiling::BringFiles(Result& result, bool mayBeThere)
{
    MovieJob& job = result.job;
    capture_root::Check(job.visit.captureDir);
    QStringList names = NamesIn(LocalFolder(), job.id);
    const bool isBeingRecorded =
        names.removeIf([](const QString& name) { return !name.endsWith(QStringView(MovieEnding)); }) > 0;
    if (!names.isEmpty()) {
        DeleteFiles(job.earlier);
        for (const MovieJob& older : result.older) {
            DeleteFiles(older.brought);
            for (const QString& name : NamesIn(LocalFolder(), older.id))
                DeleteFile(LocalFolder() + name);
        }
        result.hasPlace = true;
    }
    const QList<MovieJob::File> known = job.brought;
    for (const QString& name : names) {
        // The journal knows of it by now.
        if (std::ranges::find(known, name, &MovieJob::File::local) != known.end()) {
            DeleteFile(LocalFolder() + name);
            continue;
        }
        const QString path = BringFile(LocalFolder() + name, job.visit, mayBeThere);
        job.brought.append({path, Files().VersionOf(path), name});
        result.come.append(path.sliced(MovieFolder(job.visit.captureDir).size()));
        result.hasChanged = true;
        journal::NotingFaults([&] {
            result.sums.append(
                {NumberIn(path, job.visit), SumOfFile(LocalFolder() + name), job.brought.last().version});
        });
    }
    if (isBeingRecorded || result.hasChanged)
        return;
    const QHash<QString, Holder> marks = RecordingMarks(job.visit);
    for (auto mark = marks.begin(); mark != marks.end(); ++mark) {
        if (mark.value() == Holder::Self || mark.value() == Holder::Dead)
            DeleteFile(mark.key());
    }
    result.isOver = true;
}

QString MovieFiling::BringFile(const QString& local, const Visit& visit, bool mayBeThere)
{
    int number = 0;
    for (const QString& path : MoviesOf(visit)) {
        if (mayBeThere && Files().SameContent(local, path))
            return path;
        number = std::max(number, NumberIn(path, visit));
    }
    while (true) {
        QString path = MoviePath(visit.MovieStem(), ++number);
        if (Files().CopyToNewFile(local, path, {}) != CopyOutcome::NameTaken)
            return path;
    }
}
