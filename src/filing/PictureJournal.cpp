#include "filing/PictureJournal.h"

#include "contracts/desktop.h"
#include "contracts/LocalDatabase.h"
#include "contracts/PlatformError.h"
#include "filing/capture_folders.h"
#include "filing/journal_rows.h"
#include "filing/ProcessList.h"
#include "filing/visit_json.h"
#include "frame/components.h"
#include "frame/journal.h"
#include "frame/services.h"
#include "frame/WorkThread.h"

#include <QJsonArray>
#include <QUuid>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

constexpr char16_t Prefix[] = u"Pictures-";
constexpr char16_t JournalEnding[] = u".journal";
constexpr char16_t LockEnding[] = u".lock";
constexpr char16_t BrokenEnding[] = u".broken";
/// Behind a process's mark, in the folder of all users: how many pictures it has.
constexpr char16_t CountEnding[] = u".count";
constexpr qint64 CountDigits = 6;
/// The lists of an earlier release.
const QString ListName = u"PendingRows"_s;

QString PathOf(const QString& mark, const char16_t* ending)
{
    return LocalFolder() + QString::fromUtf16(Prefix) + mark + QString::fromUtf16(ending);
}

/// Process mark in the name of a journal or its lock; empty for any other name.
QString MarkIn(const QString& name, const char16_t* ending)
{
    if (!name.startsWith(QStringView(Prefix)) || !name.endsWith(QStringView(ending)))
        return {};
    return name.sliced(QStringView(Prefix).size()).chopped(QStringView(ending).size());
}

template <class Jobs>
auto FindJob(Jobs& jobs, const QString& id)
{
    return std::ranges::find_if(jobs, [&id](const auto& job) { return job.id == id; });
}

/// In the place of the one of its identity, or at the end.
template <class Job>
void PutJob(QList<Job>& jobs, const Job& job)
{
    const auto found = FindJob(jobs, job.id);
    if (found != jobs.end())
        *found = job;
    else
        jobs.append(job);
}

/// False when it isn't there.
template <class Job>
bool DropJob(QList<Job>& jobs, const QString& id)
{
    return jobs.removeIf([&id](const Job& job) { return job.id == id; }) > 0;
}

/// Those that aren't there yet, with the statements that write them.
template <class Job>
QStringList AdoptJobs(QList<Job>& jobs, const QList<Job>& others)
{
    QStringList statements;
    for (const Job& job : others) {
        if (FindJob(jobs, job.id) != jobs.end())
            continue;
        jobs.append(job);
        statements << journal_rows::Write(job);
    }
    return statements;
}

bool Means(const DeletionJob& job, const PictureRecord& picture)
{
    return job.visit == picture.visit &&
           (picture.number <= job.rowsUpTo ||
            std::ranges::find(job.items, picture.number, &DeletionJob::Item::number) != job.items.end());
}

QList<PictureRecord> PicturesIn(const QJsonDocument& list)
{
    QList<PictureRecord> pictures;
    const QJsonArray entries = list.isArray() ? list.array() : list.object().value(u"entries"_s).toArray();
    for (const auto& value : entries) {
        const QJsonObject entry = value.toObject();
        PictureRecord picture;
        picture.id = entry.value(u"spooled"_s).toString();
        if (picture.id.isEmpty())
            picture.id = QUuid::createUuid().toString(QUuid::Id128);
        picture.visit = VisitFromJson(entry);
        picture.number = std::max(0, entry.value(u"number"_s).toInt());
        picture.state = entry.value(u"refused"_s).toBool() ? PictureState::SetAside
                        : picture.number > 0               ? PictureState::OnShare
                                                           : PictureState::Local;
        // Lists didn't tell what it was begun from: it goes behind what stands there.
        if (const QString note = entry.value(u"note"_s).toString(); !note.isEmpty())
            picture.note = TypedNote{note, {}};
        pictures.append(picture);
    }
    return pictures;
}

} // namespace

QList<PictureJournal::Found> PictureJournal::In(const QString& folder)
{
    QList<Found> journals;
    for (const QString& name : Files().FilesStartingWith(folder, QString::fromUtf16(Prefix))) {
        const QString mark = MarkIn(name, JournalEnding);
        const bool isBroken = name.endsWith(QStringView(BrokenEnding));
        if (mark.isEmpty() && !isBroken)
            continue;
        Found found{folder + name,
                    isBroken ? Holder::Dead : Files().HolderOf(mark),
                    Files().ForeignOwner(folder + name),
                    false,
                    {},
                    {},
                    {},
                    {}};
        found.isReadable = !isBroken && journal::NotingFaults([&found] {
            const auto database = UseService<LocalDatabases>().OpenToRead(found.path);
            found.pictures = journal_rows::PictureRecords(*database);
            found.movies = journal_rows::Movies(*database);
            found.restores = journal_rows::Restores(*database);
            found.marked = journal_rows::Marked(*database);
        });
        journals.append(found);
    }
    for (const ProcessList::Found& list : ProcessList::In(folder, ListName))
        journals.append(
            {list.path, list.holder, list.foreignOwner, list.isReadable, PicturesIn(list.document), {}, {}, {}});
    return journals;
}

PictureJournal::PictureJournal(WorkThread& writer, std::function<void(const QString&)> fault, Heir heir)
    : m_writer(writer), m_fault(std::move(fault))
{
    const QString mark = Files().ProcessMark();
    journal::NotingFaults([&] {
        m_lock = Files().Lock(PathOf(mark, LockEnding));
        m_database = UseService<LocalDatabases>().Open(PathOf(mark, JournalEnding));
        journal_rows::MakeTables(*m_database);
        const Content own = Read(*m_database);
        m_pictures = own.pictures;
        m_folders = own.folders;
        m_deletions = own.deletions;
        m_movies = own.movies;
        m_restores = own.restores;
        m_marked = own.marked;
    });
    if (heir == Heir::OfNobody)
        return;
    TakeOver();
    TakeOverLists();
    LookForForeignPictures();
    if (!m_pictures.isEmpty())
        TellCount();
    for (PictureRecord& picture : m_pictures)
        picture.waits = picture.isFromEarlierRun = true;
    if (!m_pictures.isEmpty())
        journal::Note(Journal::Warning, u"앞 실행이 남긴 기록 대기 %1건을 이어받음"_s.arg(m_pictures.size()));
}

PictureJournal::~PictureJournal()
{
    End();
}

void PictureJournal::End()
{
    if (std::exchange(m_hasEnded, true))
        return;
    const QString mark = Files().ProcessMark();
    journal::NotingFaults([&] {
        const bool isEmpty = !*m_isAnyLeft && m_pictures.isEmpty() && m_leftFolders.isEmpty() &&
                             m_deletions.isEmpty() && m_movies.isEmpty() && m_restores.isEmpty() && m_marked.isEmpty();
        if (isEmpty && m_database != nullptr) {
            m_database.reset();
            UseService<LocalDatabases>().Remove(PathOf(mark, JournalEnding));
        }
        DeleteFile(PathOf(mark, LockEnding));
    });
    m_database.reset();
    m_lock.reset();
}

void PictureJournal::TakeOver()
{
    const QString own = Files().ProcessMark();
    for (const QString& name : Files().FilesStartingWith(LocalFolder(), QString::fromUtf16(Prefix))) {
        QString mark = MarkIn(name, JournalEnding);
        const bool isJournal = !mark.isEmpty();
        if (!isJournal)
            mark = MarkIn(name, LockEnding);
        const Holder holder = mark.isEmpty() ? Holder::Elsewhere : Files().HolderOf(mark);
        if (mark == own || holder == Holder::Self || holder == Holder::Elsewhere)
            continue;
        const QString owner = Files().ForeignOwner(LocalFolder() + name);
        if (!owner.isEmpty()) {
            if (isJournal && holder == Holder::Dead && !m_foreignOwners.contains(owner))
                m_foreignOwners << owner;
            continue;
        }
        journal::NotingFaults([&] {
            const std::unique_ptr<FileLock> lock = Files().Lock(PathOf(mark, LockEnding));
            if (lock == nullptr)
                return;
            if (isJournal && !TakeOverJournal(LocalFolder() + name))
                return;
            if (isJournal || !FileExists(PathOf(mark, JournalEnding)))
                DeleteFile(PathOf(mark, LockEnding));
        });
    }
}

bool PictureJournal::TakeOverJournal(const QString& path)
{
    LocalDatabases& databases = UseService<LocalDatabases>();
    Content content;
    const bool isReadable = journal::NotingFaults([&] {
        const auto database = databases.Open(path);
        journal_rows::MakeTables(*database);
        content = Read(*database);
    });
    if (!isReadable) {
        databases.Rename(path, path + QString::fromUtf16(BrokenEnding));
        return true;
    }
    Adopt(content);
    // Only a journal that holds it all lets the other one go.
    if (m_database == nullptr)
        return false;
    databases.Remove(path);
    return true;
}

void PictureJournal::TakeOverLists()
{
    ProcessList lists(ListName);
    lists.TakeOver([this](const QJsonDocument& list, bool) {
        QList<Folder> folders;
        const QJsonArray claimed = list.object().value(u"folders"_s).toArray();
        for (const auto& value : claimed)
            folders.append({value[u"captureDir"_s].toString(), value[u"etc"_s].toString()});
        Adopt({PicturesIn(list), folders, {}, {}, {}, {}});
    });
    for (const QString& owner : lists.ForeignOwners()) {
        if (!m_foreignOwners.contains(owner))
            m_foreignOwners << owner;
    }
    if (m_database != nullptr)
        journal::NotingFaults([&lists] { lists.RemoveTaken(); });
    lists.End(std::nullopt);
}

PictureJournal::Content PictureJournal::Read(LocalDatabase& journal)
{
    return {journal_rows::PictureRecords(journal), journal_rows::Folders(journal),  journal_rows::Deletions(journal),
            journal_rows::Movies(journal),         journal_rows::Restores(journal), journal_rows::Marked(journal)};
}

void PictureJournal::Adopt(const Content& content)
{
    QStringList statements;
    QList<PictureRecord> adopted = m_pictures;
    for (const PictureRecord& picture : content.pictures) {
        // One that was being taken over when that process died stands in both.
        if (Find(picture.id) != nullptr)
            continue;
        adopted.append(picture);
        statements << journal_rows::Write(picture);
    }
    for (const Folder& folder : content.folders)
        statements << journal_rows::Write(folder, true);
    statements << AdoptJobs(m_deletions, content.deletions) << AdoptJobs(m_movies, content.movies)
               << AdoptJobs(m_restores, content.restores) << AdoptJobs(m_marked, content.marked);
    if (m_database != nullptr)
        m_database->Run(statements);
    // In the order of the presses, whichever process's they were.
    std::ranges::stable_sort(adopted, {}, &PictureRecord::takenAt);
    m_pictures = adopted;
    m_leftFolders += content.folders;
}

const PictureRecord* PictureJournal::Find(const QString& id) const
{
    const auto found = std::ranges::find(m_pictures, id, &PictureRecord::id);
    return found != m_pictures.end() ? &*found : nullptr;
}

const PictureRecord* PictureJournal::Find(const Visit& visit, int number) const
{
    const auto found = std::ranges::find_if(m_pictures, [&](const PictureRecord& picture) {
        return picture.number == number && number > 0 && picture.visit == visit;
    });
    return found != m_pictures.end() ? &*found : nullptr;
}

PictureRecord* PictureJournal::At(const QString& id)
{
    const auto found = std::ranges::find(m_pictures, id, &PictureRecord::id);
    return found != m_pictures.end() ? &*found : nullptr;
}

QList<PictureRecord> PictureJournal::Of(const Visit& visit) const
{
    QList<PictureRecord> pictures = m_pictures;
    pictures.removeIf([&visit](const PictureRecord& picture) { return picture.IsDeleted() || picture.visit != visit; });
    return pictures;
}

int PictureJournal::Waiting() const
{
    return static_cast<int>(std::ranges::count_if(m_pictures, [](const PictureRecord& picture) {
        return picture.WantsRows() && picture.state != PictureState::SetAside;
    }));
}

int PictureJournal::Count() const
{
    return static_cast<int>(std::ranges::count(m_pictures, false, &PictureRecord::IsDeleted));
}

void PictureJournal::Add(const PictureRecord& picture)
{
    m_pictures.append(picture);
    Store({journal_rows::Write(picture)});
    TellCount();
}

void PictureJournal::Update(const QString& id, const Change& change)
{
    PictureRecord* picture = At(id);
    if (picture == nullptr)
        return;
    change(*picture);
    Store({journal_rows::Write(*picture)});
}

void PictureJournal::setNote(const Visit& visit, const TypedNote& note)
{
    UpdateAll([&](PictureRecord& picture) {
        const bool isOther = picture.visit == visit && picture.note != note;
        if (isOther)
            picture.note = note;
        return isOther;
    });
}

void PictureJournal::NoteIsStored(const Visit& visit, const QString& text)
{
    UpdateAll([&](PictureRecord& picture) {
        const bool isSame = picture.visit == visit && picture.note && picture.note->text == text;
        if (isSame)
            picture.note.reset();
        return isSame;
    });
}

void PictureJournal::UpdateAll(const std::function<bool(PictureRecord&)>& change)
{
    QStringList statements;
    for (PictureRecord& picture : m_pictures) {
        if (change(picture))
            statements << journal_rows::Write(picture);
    }
    if (!statements.isEmpty())
        Store(statements);
}

void PictureJournal::Mark(const QString& id, const Change& change)
{
    if (PictureRecord* picture = At(id))
        change(*picture);
}

// NOLINTNEXTLINE(performance-unnecessary-value-param)
void PictureJournal::Remove(QString id)
{
    if (DropJob(m_pictures, id)) {
        Store({journal_rows::Remove(id)});
        TellCount();
    }
}

// NOLINTNEXTLINE(performance-unnecessary-value-param)
void PictureJournal::HandOver(QString id)
{
    const PictureRecord* found = Find(id);
    if (found == nullptr || m_outlet == nullptr) {
        Remove(id);
        return;
    }
    const PictureRecord picture = *found;
    DropJob(m_pictures, id);
    QList<DeletionJob> deletions = m_deletions;
    deletions.removeIf([&picture](const DeletionJob& job) { return !Means(job, picture); });
    PassOn(picture, deletions, journal_rows::Remove(id));
    TellCount();
}

void PictureJournal::PassOn(const PictureRecord& picture, const QList<DeletionJob>& deletions, const QString& removal)
{
    m_writer.Post([database = m_database, outlet = m_outlet, picture, deletions, removal, told = m_fault,
                   isAnyLeft = m_isAnyLeft] {
        try {
            outlet->HandOver(picture);
            for (const DeletionJob& job : deletions)
                outlet->Withdraw(job);
            if (database != nullptr)
                database->Run({removal});
        } catch (const PlatformError& error) {
            journal::NoteFault(error.Text());
            *isAnyLeft = true;
            PostToScreen(
                [told,
                 text = u"PACS로 보낼 그림의 목록을 저장하지 못했습니다.!! 다음 실행시 다시 넘깁니다.\r\n%1"_s.arg(
                     error.Text())] { told(text); });
        }
    });
}

void PictureJournal::setOutlet(const std::shared_ptr<PictureOutlet>& outlet)
{
    m_outlet = outlet;
    // A run that was killed may not have come to it.
    for (const DeletionJob& job : std::as_const(m_deletions))
        Tell([job](PictureOutlet& each) { each.Withdraw(job); });
}

void PictureJournal::Tell(const std::function<void(PictureOutlet&)>& call)
{
    if (m_outlet == nullptr)
        return;
    m_writer.Post([outlet = m_outlet, call] { journal::NotingFaults([&] { call(*outlet); }); });
}

const DeletionJob* PictureJournal::FindDeletion(const QString& id) const
{
    const auto found = FindJob(m_deletions, id);
    return found != m_deletions.end() ? &*found : nullptr;
}

void PictureJournal::StoreDeletion(const DeletionJob& job)
{
    const DeletionJob* known = FindDeletion(job.id);
    const bool meansMore = known == nullptr || known->items.size() != job.items.size();
    PutJob(m_deletions, job);
    Store({journal_rows::Write(job)});
    if (meansMore)
        Tell([job](PictureOutlet& outlet) { outlet.Withdraw(job); });
}

// NOLINTNEXTLINE(performance-unnecessary-value-param)
void PictureJournal::RemoveDeletion(QString id, bool isWhole)
{
    const DeletionJob* found = FindDeletion(id);
    if (found == nullptr)
        return;
    const DeletionJob job = *found;
    DropJob(m_deletions, id);
    // First: should it end between the two, the deletion is gone through again.
    if (!isWhole)
        Tell([job](PictureOutlet& outlet) { outlet.Restore(job); });
    Store({journal_rows::RemoveDeletion(id)});
}

void PictureJournal::StoreMovie(const MovieJob& job)
{
    PutJob(m_movies, job);
    Store({journal_rows::Write(job)});
}

void PictureJournal::HandOverMovie(const MovieJob& job, const QString& fileName)
{
    Tell([job, fileName](PictureOutlet& outlet) { outlet.HandOverMovie(job, fileName); });
}

// NOLINTNEXTLINE(performance-unnecessary-value-param)
void PictureJournal::RemoveMovie(QString id)
{
    if (DropJob(m_movies, id))
        Store({journal_rows::RemoveMovie(id)});
}

bool PictureJournal::HasRestore(const QString& id) const
{
    return FindJob(m_restores, id) != m_restores.end();
}

void PictureJournal::StoreRestoreNow(const RestoreJob& job)
{
    m_writer.AwaitIdle();
    if (m_database == nullptr)
        throw PlatformError(u"이 컴퓨터의 프로그램 폴더에 쓸 수 없습니다.!! (%1)"_s.arg(
            NativePath(PathOf(Files().ProcessMark(), JournalEnding))));
    m_database->Run({journal_rows::Write(job)});
    PutJob(m_restores, job);
}

// NOLINTNEXTLINE(performance-unnecessary-value-param)
void PictureJournal::RemoveRestore(QString id)
{
    if (DropJob(m_restores, id))
        Store({journal_rows::RemoveRestore(id)});
}

// NOLINTNEXTLINE(performance-unnecessary-value-param)
void PictureJournal::RestoreHasEnded(QString id, int number)
{
    const auto found = FindJob(m_restores, id);
    if (found != m_restores.end() && number > 0)
        RecordRestored(*found, number);
    if (found == m_restores.end() || m_outlet == nullptr || number == 0) {
        RemoveRestore(id);
        return;
    }
    const PictureRecord picture{.id = id, .visit = found->visit, .number = number, .origin = PictureOrigin::Restored};
    DropJob(m_restores, id);
    PassOn(picture, {}, journal_rows::RemoveRestore(id));
}

void PictureJournal::StoreMarked(const MarkedJob& job)
{
    QStringList statements;
    m_marked.removeIf([&](const MarkedJob& earlier) {
        const bool isSame = earlier.visit == job.visit && earlier.number == job.number;
        if (isSame)
            statements << journal_rows::RemoveMarked(earlier.id);
        return isSame;
    });
    m_marked.append(job);
    Store(statements << journal_rows::Write(job));
}

// NOLINTNEXTLINE(performance-unnecessary-value-param)
void PictureJournal::RemoveMarked(QString id)
{
    if (DropJob(m_marked, id))
        Store({journal_rows::RemoveMarked(id)});
}

bool PictureJournal::HasAnyBeside(const DeletionJob& job) const
{
    return std::ranges::any_of(Of(job.visit), [&job](const PictureRecord& picture) {
        return std::ranges::find(job.items, picture.id, &DeletionJob::Item::picture) == job.items.end();
    });
}

void PictureJournal::ClaimsIn(const Folder& folder)
{
    if (m_folders.contains(folder))
        return;
    m_folders.append(folder);
    Store({journal_rows::Write(folder, false)});
}

void PictureJournal::LeftFoldersAreSettled()
{
    if (m_leftFolders.isEmpty())
        return;
    m_leftFolders.clear();
    Store({journal_rows::ForgetLeftFolders()});
}

QString PictureJournal::CountPath(const QString& mark)
{
    return UseService<Desktop>().MachineFolder() + u'\\' + mark + QString::fromUtf16(CountEnding);
}

void PictureJournal::LookForForeignPictures()
{
    const QString folder = UseService<Desktop>().MachineFolder() + u'\\';
    if (folder.size() == 1)
        return;
    for (const QString& name : Files().FilesStartingWith(folder, {})) {
        if (!name.endsWith(QStringView(CountEnding)) ||
            Files().HolderOf(name.chopped(QStringView(CountEnding).size())) != Holder::Dead)
            continue;
        journal::NotingFaults([&] {
            if (const QString owner = Files().ForeignOwner(folder + name); !owner.isEmpty())
                m_foreignPictures[owner] += Files().ReadArchivedPiece(folder + name, 0, CountDigits).toInt();
            else
                DeleteFile(folder + name); // Taken over.
        });
    }
}

void PictureJournal::TellCount()
{
    if (UseService<Desktop>().MachineFolder().isEmpty())
        return;
    m_writer.Post([path = CountPath(Files().ProcessMark()), count = Count()] {
        journal::NotingFaults([&] {
            DeleteFile(path);
            if (count > 0)
                Files().CreateExclusively(path, QByteArray::number(count));
        });
    });
}

void PictureJournal::Store(const QStringList& statements)
{
    m_writer.Post([database = m_database, statements, told = m_fault] {
        try {
            if (database != nullptr)
                database->Run(statements);
        } catch (const PlatformError& error) {
            journal::NoteFault(error.Text());
            PostToScreen([told, text = u"기록을 기다리는 캡쳐의 목록을 저장하지 못했습니다.!!\r\n%1"_s.arg(
                                    error.Text())] { told(text); });
        }
    });
}
