#pragma once

#include "contracts/files.h"

#include <QJsonDocument>
#include <QStringList>

#include <functional>
#include <memory>
#include <optional>
#include <vector>

/// A list that waits, kept in the program's folder in a file of this process's own: so it outlives the program, and no
/// other station with the same folder gets in its way. The next start of the same user on the same machine takes it
/// over.
class ProcessList
{
public:
    /// A list as it lies in a folder.
    struct Found
    {
        QString path;
        Holder holder = Holder::Elsewhere; ///< Of the process whose list it is.
        QString foreignOwner;              ///< User's name, unless it is this process's user.
        bool isReadable = false;
        QJsonDocument document;
    };
    /// The lists of that name in a program's folder, also those that were put aside. Touches none.
    static QList<Found> In(const QString& folder, const QString& name);

    /// Holds the list of that name for this process.
    explicit ProcessList(QString name);
    ProcessList(const ProcessList&) = delete;
    ProcessList& operator=(const ProcessList&) = delete;

    using Reader = std::function<void(const QJsonDocument& document, bool isOwn)>;
    /// Reads what a list under this process's own mark holds, then those of this user's processes on this machine that
    /// have died. One that can't be read is put aside under another name, not lost. True when lists were taken over,
    /// which are in the way until `RemoveTaken`.
    bool TakeOver(const Reader& read);
    /// Deletes those that were taken over: the own list holds it all. Throws PlatformError.
    void RemoveTaken();

    QString Path() const;
    /// Puts it in the place of what is there. Any thread. Throws PlatformError when it isn't written.
    static void Write(const QString& path, const QByteArray& content);
    bool HasEnded() const { return m_lock == nullptr; }
    /// What is left for the next start; nothing deletes the list.
    void End(const std::optional<QByteArray>& content);
    /// Names of other users of this machine whose dead processes have left lists; theirs stay for them.
    const QStringList& ForeignOwners() const { return m_foreignOwners; }

private:
    QString PathOf(const QString& mark, QStringView ending) const;
    QString CommonPath() const;
    bool TakeOverList(const QString& mark, const Reader& read);

    const QString m_name;
    QStringList m_taken; ///< Marks.
    bool m_hasCommon = false;
    QStringList m_foreignOwners;
    std::unique_ptr<FileLock> m_lock;
    std::vector<std::unique_ptr<FileLock>> m_foreignLocks; ///< Of lists that were taken over but couldn't be copied.
};
