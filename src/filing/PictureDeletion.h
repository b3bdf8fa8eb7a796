#pragma once

#include "filing/DeletionJob.h"
#include "records/capture_index.h"

#include <QObject>
#include <QSet>

#include <exception>
#include <functional>

class StillFiling;

/// Deletes pictures: their files go to the section's Log folder, their rows follow by number, and, where none is left,
/// the visit's row; then the capture mark. Each job stands in the journal from its beginning, so that one that was cut
/// off at any moment is finished by the next start. A new picture under a number that a job has freed is left alone.
class PictureDeletion : public QObject
{
    Q_OBJECT

public:
    struct Result
    {
        Visit visit;
        QList<int> deleted;       ///< Numbers of those that are gone.
        bool isVisitGone = false; ///< The visit's row, too.
        std::exception_ptr fault; ///< What kept others where they were, or null.
    };

    /// What the launched visit and the setup have to say to every job.
    struct Terms
    {
        QString presentYear; ///< Year folder of which sections without a Log folder get one.
        MarkTable marks = MarkTable::Endo;
    };

    /// Goes on with the jobs that the journal holds.
    PictureDeletion(StillFiling& filing, const Terms& terms);

    /// `job` without an id; gives it one.
    QString Begin(DeletionJob job);
    /// It hasn't come to its end, nor to one that the operator has heard of.
    bool IsUnderWay(const QString& id) const;
    /// What is left of it is the database's.
    bool AreFilesMoved(const QString& id) const;
    /// The operator gives it up. False once a file has been moved: it goes on.
    bool GiveUp(const QString& id);
    /// The screen closes; what is left is for the next start.
    void End() { m_hasEnded = true; }

Q_SIGNALS:
    void Ended(const QString& id, const PictureDeletion::Result& result);

private:
    /// The next step of a job, on the screen's thread; each ends in the next.
    void Go(const DeletionJob& job);
    void Identify(const DeletionJob& job);
    void Move(const DeletionJob& job);
    void AskRows(const DeletionJob& job);
    void DeleteRows(const DeletionJob& job, const std::exception_ptr& fault);
    void Finish(const DeletionJob& job, const Result& result);
    /// Does it on the share's thread, with a copy of the job, and answers with that, unless the job has been given up.
    using Answer = void (PictureDeletion::*)(const DeletionJob& job, const std::exception_ptr& fault);
    void AtShare(const DeletionJob& job, const std::function<void(DeletionJob&)>& work, Answer answer);
    /// Asks for the identities that the journal doesn't know, and goes on without them when no answer comes.
    void AskIdentities(const DeletionJob& job);
    void TakeIdentified(const DeletionJob& job, const std::exception_ptr& fault);
    void TakeMoved(const DeletionJob& job, const std::exception_ptr& fault);
    /// The database doesn't answer: the same step again, after a while.
    void TryAgain(const QString& id, void (PictureDeletion::*step)(const DeletionJob& job));

    StillFiling& m_filing;
    const Terms m_terms;
    /// Jobs of an earlier run, which may have moved files without anybody knowing: no fault ends them.
    QSet<QString> m_doubtful;
    QSet<QString> m_refused; ///< Jobs whose rows the server refuses to delete; told.
    bool m_hasEnded = false;
};
