#pragma once

#include "filing/ProcessList.h"
#include "visit/Visit.h"

#include <QByteArray>
#include <QList>
#include <QStringList>

#include <functional>

class WorkThread;

/// Pictures whose rows the database has not taken yet, and those whose file isn't in the capture directory either, but
/// in the spool: in the program's folder, while the share doesn't answer. Once they have to wait, the list is kept in
/// that folder as well, in a file of this process's own, so that it outlives the program and no other station with the
/// same folder gets in its way. It also tells in which folders this process has claimed numbers.
class PendingRows
{
public:
    struct Entry
    {
        Visit visit;
        int number = 0;          ///< Below 0 in the spool: unlike any other of this process.
        QString note;            ///< Typed note that was to be stored with the picture; empty when there was none.
        bool refused = false;    ///< The server has refused the rows, and the operator has been told.
        bool waits = false;      ///< It has waited for so long that the screen shows it.
        bool isUnderWay = false; ///< The rows have been handed over, and no answer has come.
        QString spooled = {};    ///< Identity of a picture in the spool.
    };

    /// A section's folder: its year folder and its name.
    struct Folder
    {
        QString captureDir;
        QString etc;

        bool operator==(const Folder&) const = default;
    };

    /// A list as it lies in a folder.
    struct List
    {
        QString path;
        Holder holder = Holder::Elsewhere; ///< Of the process whose list it is.
        QString foreignOwner;              ///< User's name, unless it is this process's user.
        bool isReadable = false;
        QList<Entry> entries; ///< Numbers of the spool are that process's own.
    };
    /// The lists in a program's folder, also those that were put aside. Touches none.
    static QList<List> ListsIn(const QString& folder);

    /// Takes over the lists of this user's stations on this machine that have died. The list is written on `writer`;
    /// `fault` hears, on the user-interface thread, why it can't be: it then stands in memory alone.
    PendingRows(WorkThread& writer, std::function<void(const QString&)> fault);
    ~PendingRows();
    PendingRows(const PendingRows&) = delete;
    PendingRows& operator=(const PendingRows&) = delete;

    /// How many wait for the database, those that it refuses not counted.
    int Waiting() const;
    /// Those in the spool, in the order of the presses.
    QList<Entry> Spooled() const;
    /// Numbers of the visit's pictures in the spool.
    QList<int> SpooledOf(const Visit& visit) const;
    /// A picture of the visit is still to come into the tables.
    bool HasAny(const Visit& visit) const { return !NumbersOf(visit).isEmpty() || !SpooledOf(visit).isEmpty(); }
    int Count() const { return static_cast<int>(m_entries.size()); }
    bool Holds(const Visit& visit, int number) const;
    /// Numbers of the visit's filed pictures whose rows aren't in, in the order in which they came.
    QList<int> NumbersOf(const Visit& visit) const;
    /// All filed ones that aren't in, in that order.
    QList<std::pair<Visit, int>> All() const;
    /// Null when it isn't there. Good until the list is changed.
    Entry* Find(const Visit& visit, int number);

    void Add(const Entry& entry) { m_entries.append(entry); }
    /// A picture goes into the spool; gives its number there. The list is written before what is handed to the writer
    /// next.
    int Spool(const Visit& visit, const QString& picture, const QString& note);
    /// A picture of the spool has been filed.
    void File(const Visit& visit, int spooled, int number);
    void Remove(const Visit& visit, int number);
    /// All of them have to wait: the list outlives the program from here on. Gives those that didn't yet.
    QList<std::pair<Visit, int>> LetAllWait();
    /// The server has refused the rows; the same holds for the picture's.
    void Refuse(const Visit& visit, int number);
    /// What the operator is told of an entry that the server refuses.
    static QString RefusalText(const Entry& entry, const QString& reason);

    /// Numbers are being claimed in that folder from here on: should this process die, they are looked for there.
    void ClaimsIn(const Folder& folder);
    /// Folders in which the stations whose lists were taken over had claimed numbers.
    const QList<Folder>& LeftFolders() const { return m_leftFolders; }
    /// Nothing is left to look for there.
    void LeftFoldersAreSettled();
    /// The station ends: what still waits is left to the next one. Nothing may be added afterwards.
    void End();
    /// Names of other users of this machine whose dead stations have left lists; theirs stay for them.
    const QStringList& ForeignOwners() const { return m_list.ForeignOwners(); }

private:
    void TakeOver();
    void ReadList(const QJsonDocument& document, QList<Folder>& folders);
    QByteArray Content() const;
    void Store();

    WorkThread& m_writer;
    const std::function<void(const QString&)> m_fault;
    QList<Entry> m_entries;
    int m_lastSpooled = 0;
    QList<Folder> m_folders;
    QList<Folder> m_leftFolders;
    ProcessList m_list;
};
