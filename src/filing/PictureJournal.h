#pragma once

#include "contracts/files.h"
#include "filing/DeletionJob.h"
#include "filing/MarkedJob.h"
#include "filing/MovieJob.h"
#include "filing/PictureOutlet.h"
#include "filing/PictureRecord.h"
#include "filing/RestoreJob.h"

#include <QList>
#include <QMap>
#include <QStringList>

#include <atomic>
#include <functional>
#include <memory>
#include <vector>

class LocalDatabase;
class WorkThread;

/// The pictures of this process that aren't safe yet, in the order of the presses: the only place that holds them until
/// their rows are in. It lies in the program's folder, in a file of this process's own, one transaction a step, so that
/// it outlives the program at any moment and no other station with the same folder gets in its way. It also tells in
/// which folders this process has claimed numbers.
///
/// Used by the screen's thread; what it changes is written behind it, in order, by the thread that it is given.
class PictureJournal
{
public:
    /// A section's folder: its year folder and its name.
    struct Folder
    {
        QString captureDir;
        QString etc;

        bool operator==(const Folder&) const = default;
    };

    /// A journal as it lies in a folder.
    struct Found
    {
        QString path;
        Holder holder = Holder::Elsewhere; ///< Of the process whose journal it is.
        QString foreignOwner;              ///< User's name, unless it is this process's user.
        bool isReadable = false;
        QList<PictureRecord> pictures;
        QList<MovieJob> movies;
        QList<RestoreJob> restores;
        QList<MarkedJob> marked;

        qsizetype Size() const { return pictures.size() + movies.size() + restores.size() + marked.size(); }
    };
    /// What tells the other users of this machine how many pictures a process has.
    static QString CountPath(const QString& mark);
    /// The journals in a program's folder, also those that were put aside. Changes none.
    static QList<Found> In(const QString& folder);

    enum class Heir {
        OfTheDead, ///< Takes over the journals of this user's stations on this machine that have died.
        OfNobody,
    };
    /// `fault` hears, on the screen's thread, why it can't be written: it then stands in memory alone.
    PictureJournal(WorkThread& writer, std::function<void(const QString&)> fault, Heir heir = Heir::OfTheDead);
    ~PictureJournal();
    PictureJournal(const PictureJournal&) = delete;
    PictureJournal& operator=(const PictureJournal&) = delete;

    const QList<PictureRecord>& Records() const { return m_pictures; }
    /// Null when it isn't there. Good until the journal is changed.
    const PictureRecord* Find(const QString& id) const;
    const PictureRecord* Find(const Visit& visit, int number) const;
    bool Holds(const Visit& visit, int number) const { return Find(visit, number) != nullptr; }
    /// Those of the visit that aren't deleted.
    QList<PictureRecord> Of(const Visit& visit) const;
    bool HasAny(const Visit& visit) const { return !Of(visit).isEmpty(); }
    /// How many wait for the database, those that it refuses not counted.
    int Waiting() const;
    /// How many aren't safe yet, those that were deleted not counted.
    int Count() const;

    void Add(const PictureRecord& picture);
    using Change = std::function<void(PictureRecord&)>;
    /// Nothing happens when it isn't there.
    void Update(const QString& id, const Change& change);
    /// The operator's text for a visit is now that one: all of its pictures would bring it.
    void setNote(const Visit& visit, const TypedNote& note);
    /// That text is stored: no picture of the visit has to bring it any more.
    void NoteIsStored(const Visit& visit, const QString& text);
    /// Changes what is of this run alone.
    void Mark(const QString& id, const Change& change);
    /// By value: it may be the very one that goes.
    void Remove(QString id);
    /// The picture is safe: the outlet gets it, and the journal lets go of it.
    void HandOver(QString id);
    /// Where pictures go from here, and are withdrawn from when they are to be deleted. Null: nowhere.
    void setOutlet(const std::shared_ptr<PictureOutlet>& outlet);

    /// Deletions that haven't come to their end.
    const QList<DeletionJob>& Deletions() const { return m_deletions; }
    const DeletionJob* FindDeletion(const QString& id) const;
    void StoreDeletion(const DeletionJob& job);
    /// `isWhole`: all that it meant has gone.
    void RemoveDeletion(QString id, bool isWhole);
    /// Pictures of the job's visit, deleted ones aside, that it doesn't mean.
    bool HasAnyBeside(const DeletionJob& job) const;

    /// Movies that aren't on the share yet, in the order in which they were begun.
    const QList<MovieJob>& Movies() const { return m_movies; }
    void StoreMovie(const MovieJob& job);
    /// To be told before the journal knows that the file stands on the share.
    void HandOverMovie(const MovieJob& job, const QString& fileName);
    void RemoveMovie(QString id);

    /// Pictures that come back from the Log folder.
    const QList<RestoreJob>& Restores() const { return m_restores; }
    bool HasRestore(const QString& id) const;
    /// It is on the disk, behind all that came before, when this returns. Throws PlatformError, and then it isn't.
    void StoreRestoreNow(const RestoreJob& job);
    void RemoveRestore(QString id);
    /// The picture is back under that number, or, with 0, nothing had been left to do: the outlet gets it, and the
    /// journal lets go of the job.
    void RestoreHasEnded(QString id, int number);

    /// Pictures that were marked up and whose sums the table hasn't got yet, in the order of their marking.
    const QList<MarkedJob>& Marked() const { return m_marked; }
    /// In the place of an earlier one of the same picture.
    void StoreMarked(const MarkedJob& job);
    void RemoveMarked(QString id);

    /// Numbers are being claimed in that folder from here on: should this process die, they are looked for there.
    void ClaimsIn(const Folder& folder);
    /// Folders in which the stations whose journals were taken over had claimed numbers.
    const QList<Folder>& LeftFolders() const { return m_leftFolders; }
    /// Nothing is left to look for there.
    void LeftFoldersAreSettled();
    /// Names of other users of this machine whose dead stations have left journals; theirs stay for them.
    const QStringList& ForeignOwners() const { return m_foreignOwners; }
    /// How many pictures dead stations of other users have in folders of theirs, by the user's name.
    const QMap<QString, int>& ForeignPictures() const { return m_foreignPictures; }

    /// The station ends: what is left is for the next one. Called behind the last work of the writing thread.
    void End();

private:
    struct Content
    {
        QList<PictureRecord> pictures;
        QList<Folder> folders;
        QList<DeletionJob> deletions;
        QList<MovieJob> movies;
        QList<RestoreJob> restores;
        QList<MarkedJob> marked;
    };
    static Content Read(LocalDatabase& journal);

    void TakeOver();
    /// False when it has to stay where it is.
    bool TakeOverJournal(const QString& path);
    void TakeOverLists();
    void Adopt(const Content& content);
    /// Changes those for which it gives true.
    void UpdateAll(const std::function<bool(PictureRecord&)>& change);
    void Store(const QStringList& statements);
    /// The outlet gets it, and only then the statement takes it out of the journal.
    void PassOn(const PictureRecord& picture, const QList<DeletionJob>& deletions, const QString& removal);
    /// Does it behind what has been stored.
    void Tell(const std::function<void(PictureOutlet&)>& call);
    void LookForForeignPictures();
    /// Tells the other users of this machine how many wait here.
    void TellCount();
    PictureRecord* At(const QString& id);

    WorkThread& m_writer;
    const std::function<void(const QString&)> m_fault;
    std::shared_ptr<LocalDatabase> m_database; ///< Null when it can't be opened.
    std::shared_ptr<PictureOutlet> m_outlet;
    /// The outlet hasn't taken some, which stay in the file for the next start.
    const std::shared_ptr<std::atomic<bool>> m_isAnyLeft = std::make_shared<std::atomic<bool>>(false);
    QList<PictureRecord> m_pictures;
    QList<DeletionJob> m_deletions;
    QList<MovieJob> m_movies;
    QList<RestoreJob> m_restores;
    QList<MarkedJob> m_marked;
    QList<Folder> m_folders;
    QList<Folder> m_leftFolders;
    QStringList m_foreignOwners;
    QMap<QString, int> m_foreignPictures;
    std::unique_ptr<FileLock> m_lock;
    bool m_hasEnded = false;
};
