#pragma once

#include "filing/MovieJob.h"
#include "frame/WorkThread.h"
#include "records/picture_sums.h"

#include <QObject>
#include <QSet>
#include <QTimer>

#include <exception>

class PictureJournal;
class StillFiling;

/// Brings movies to the share. A movie is recorded on this machine's disk, in files of bounded length, so that no share
/// holds it up; each file that is whole goes to the share as soon as that takes it. The earlier movies of the visit go
/// when the first file of the new one is about to take their place, and not before, also those that are still on their
/// way. While another station records the
/// same visit nothing of it is deleted: this one's files go behind the other's numbers. No name is ever taken from
/// another file.
class MovieFiling : public QObject
{
    Q_OBJECT

public:
    /// Makes what an earlier run left unfinished whole, and goes on with it.
    explicit MovieFiling(StillFiling& filing);

    /// A movie of the visit is about to be recorded. Gives the path of its files without number and extension.
    QString Begin(const Visit& visit);
    /// Its first file is being written, or won't be.
    void HasBegun();
    /// Looks whether a file has become whole.
    void Look();
    /// Makes movies whole that an earlier release of this station has left unfinished in a folder of the share.
    void RepairIn(const QString& folder);

    /// The share doesn't take what was recorded.
    bool IsAway() const { return m_isAway; }
    /// All that is whole is on the share, as far as has been looked.
    bool IsAtRest() const;
    /// What is left is for the next start.
    void End();

    /// Names of a movie's files in a folder of this machine, in their order, those that are being written at the end;
    /// of all movies without an identity.
    static QStringList NamesIn(const QString& folder, const QString& id);

Q_SIGNALS:
    /// Whether the share takes them is another now.
    void Changed();

private:
    struct MovieSum
    {
        int number = 0;
        PictureSum sum{};
        QByteArray version{};
    };
    struct Result
    {
        MovieJob job;
        QList<MovieJob> older = {}; ///< Of the same visit, on their way as well.
        bool hasChanged = false;    ///< What stands in the journal of it.
        QList<MovieSum> sums = {};  ///< Of the files that this step has brought.
        QStringList come = {};      ///< Names of those files on the share.
        bool hasPlace = false;      ///< It has taken the place of the older ones.
        bool isOver = false;
        std::exception_ptr fault = {};
    };

    /// On the share's thread.
    static void List(MovieJob& job);
    static void BringFiles(Result& result, bool mayBeThere);
    /// Gives its path.
    static QString BringFile(const QString& local, const Visit& visit, bool mayBeThere);

    /// The next step of the job; it answers.
    void Go(const MovieJob& job);
    void Answer(const Result& result);
    /// All of it is on the share: it is an earlier one to those of the visit that were begun behind it.
    void Close(const MovieJob& job);
    void Forget(const QString& id);
    /// Files that have gone from the share with a later movie: their sums are no more to be found there.
    void ForgetSums(const Visit& visit, const QList<MovieJob::File>& files);
    void setAway(bool isAway, const QString& reason);

    StillFiling& m_filing;
    PictureJournal& m_journal;
    WorkThread m_share;
    QTimer m_again;
    QString m_beginning;      ///< Identity of a job whose first file isn't there yet.
    QSet<QString> m_doubtful; ///< Jobs that may have brought a file without anybody knowing.
    QSet<QString> m_refused;  ///< Jobs whose last step the share has refused.
    int m_looksUnderWay = 0;  ///< So often the step that is under way has been asked for.
    QString m_lookedAt;       ///< Identity of the job that was looked at last in this round; empty behind its end.
    bool m_isUnderWay = false;
    bool m_isAway = false;
    bool m_hasEnded = false;
};
