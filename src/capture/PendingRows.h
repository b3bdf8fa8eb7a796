#pragma once

#include "visit/Visit.h"

#include <QList>
#include <QStringList>

#include <functional>
#include <memory>
#include <vector>

class FileLock;

/// Pictures whose file is in the capture directory, but whose rows the database has not taken yet. The list is kept in
/// the program's folder as well, in a file of this process's own, so that it outlives the program and no other station
/// with the same folder gets in its way. It also tells in which folders this process has claimed numbers.
class PendingRows
{
public:
    struct Entry
    {
        Visit visit;
        int number = 0;
        QString note;         ///< Typed note that was to be stored with the picture; empty when there was none.
        bool refused = false; ///< The server has refused the rows, and the operator has been told.
    };

    /// A section's folder: its year folder and its name.
    struct Folder
    {
        QString captureDir;
        QString etc;

        bool operator==(const Folder&) const = default;
    };

    enum class Outcome {
        Written,
        Gone, ///< There is no such picture any more.
        Later ///< Nothing can be told of the picture now.
    };

    /// Takes over the lists of this user's stations on this machine that have died. A list that can't be read is put
    /// aside under another name, not lost.
    PendingRows();
    ~PendingRows();
    PendingRows(const PendingRows&) = delete;
    PendingRows& operator=(const PendingRows&) = delete;

    bool IsEmpty() const { return m_entries.isEmpty(); }
    int Count() const { return static_cast<int>(m_entries.size()); }
    bool Holds(const Visit& visit, int number) const;
    /// Numbers of the visit's pictures that wait, in the order in which they came.
    QList<int> NumbersOf(const Visit& visit) const;

    /// Gives the reason, for the operator, when the list can't be written; it then stands in memory alone.
    [[nodiscard]] QString Add(const Entry& entry);
    void Remove(const Visit& visit, int number);

    /// Hands each entry to `write`, and drops it when that is done with it. An entry that the server refuses stays, and
    /// the next one's turn comes; gives a text for the operator for each that was refused for the first time. Throws
    /// DatabaseAway of `write`; that entry and those behind it then stay.
    QStringList WriteAll(const std::function<Outcome(const Entry&)>& write);

    /// Numbers are being claimed in that folder from here on: should this process die, they are looked for there.
    void ClaimsIn(const Folder& folder);
    /// Folders in which the stations whose lists were taken over had claimed numbers.
    const QList<Folder>& LeftFolders() const { return m_leftFolders; }
    /// Nothing is left to look for there.
    void LeftFoldersAreSettled();
    /// The station ends: what still waits is left to the next one. Nothing may be added afterwards.
    void End();
    /// Names of other users of this machine whose dead stations have left lists; theirs stay for them.
    const QStringList& ForeignOwners() const { return m_foreignOwners; }

private:
    void TakeOver();
    bool TakeOverList(const QString& mark);
    bool ReadList(const QString& path, QList<Folder>& folders);
    QString Store() const;

    QList<Entry> m_entries;
    QList<Folder> m_folders;
    QList<Folder> m_leftFolders;
    QStringList m_foreignOwners;
    std::unique_ptr<FileLock> m_lock;
    std::vector<std::unique_ptr<FileLock>> m_foreignLocks; ///< Of lists that were taken over but couldn't be copied.
};
