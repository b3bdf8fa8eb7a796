#pragma once

#include <QStringList>
#include <QVariantList>

#include <functional>
#include <memory>

/// A database in one file of this machine, for this user alone. What a call has changed outlives this process once the
/// call has returned, and a power cut too, unless it was opened otherwise. May be used on any thread, by one at a time.
class LocalDatabase
{
public:
    virtual ~LocalDatabase() = default;

    /// Runs the statements, of the dialect of the clinic's, as one: all of them or none. Throws PlatformError.
    virtual void Run(const QStringList& statements) = 0;
    /// Does work that is made of calls on this database as one: all of it or nothing. Throws what the work throws.
    virtual void Together(const std::function<void()>& work) = 0;
    /// Texts, whole numbers and nulls, row by row. Throws PlatformError.
    virtual QList<QVariantList> Rows(const QString& statement) = 0;
};

class LocalDatabases
{
public:
    virtual ~LocalDatabases() = default;

    /// What a change outlives.
    enum Outlives {
        PowerCut,
        Process, ///< A power cut may take the latest changes, all from one on: for who can do them again.
    };

    /// Opens the file, which is made when it isn't there. Throws PlatformError, also for a file that is no database.
    virtual std::unique_ptr<LocalDatabase> Open(const QString& path, Outlives outlives = PowerCut) = 0;
    /// Opens one that is there, and that another process may have open, to look at what it holds now: a copy, so that
    /// nothing in it or beside it is touched. It may be another user's, who may have put anything there: a link isn't
    /// followed, a pipe not waited for, and what is too long, or has no end, is a PlatformError, here or when it is
    /// read. Not one that this process has open.
    virtual std::unique_ptr<LocalDatabase> OpenToRead(const QString& path) = 0;
    /// Deletes the file and what lies beside it; one that isn't there is no fault. Nobody may have it open. Throws
    /// PlatformError.
    virtual void Remove(const QString& path) = 0;
    /// Gives the file another name, with what lies beside it. Throws PlatformError.
    virtual void Rename(const QString& from, const QString& to) = 0;
};
