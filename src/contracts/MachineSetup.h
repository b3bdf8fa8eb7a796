#pragma once

#include <QString>
#include <QStringList>

/// What a first setup changes on a machine, and on a server that runs on it; by its root. Each can be done again, and
/// gives a sentence on what has been done, or that nothing was left to do. Throws PlatformError with the reason.
class MachineSetup
{
public:
    virtual ~MachineSetup() = default;

    /// The process may do all that.
    virtual bool MayChange() const = 0;
    /// People who log in here, by name.
    virtual QStringList People() const = 0;
    /// Into those of the groups that there are.
    virtual QString AddToGroups(const QString& user, const QStringList& groups) = 0;
    /// What the user's programs have begun goes on when he has logged out. Where that can't be had, the sentence tells
    /// why.
    virtual QString LetLinger(const QString& user) = 0;
    /// A folder for the group alone, whose files and folders are the group's as well. One that is there stays as it is;
    /// the sentence tells what is wrong with it.
    virtual QString MakeSharedFolder(const QString& path, const QString& group) = 0;

    /// A database server runs on this machine and lets root in.
    virtual bool HasServer() const = 0;
    virtual bool HasDatabase(const QString& name) const = 0;
    /// The station's own tables, those that aren't there.
    virtual QStringList MakeTables(const QString& database) = 0;
    /// An account of this machine with the station's rights in the database, and that password.
    virtual QStringList MakeAccount(const QString& database, const QString& user, const QString& password) = 0;

    virtual bool Exists(const QString& path) const = 0;
    /// Readable by root and the group alone. None is written over.
    virtual QString WriteSecret(const QString& path, const QByteArray& content, const QString& group) = 0;
};
