#pragma once

#include "filing/ProcessList.h"
#include "visit/Visit.h"

#include <QList>

class WorkThread;

/// Pictures that the clinic's server hasn't taken yet, in their order, and what it has taken today. It outlives the
/// program in a file of this process's own, which the next start takes over. The file names no patient but by chart.
class PacsQueue
{
public:
    struct Entry
    {
        Visit visit;
        int number = 0;
        QString doctor;          ///< Code of the visit's examining doctor; empty when it isn't known.
        QString refusal = {};    ///< Why it is set aside; empty while it waits.
        int cuts = 0;            ///< How often the connection broke on it.
        qint64 id = 0;           ///< Of this process's own.
        bool isUnderWay = false; ///< Its file may have been read already.
    };

    /// A list as it lies in a folder.
    struct List
    {
        QString path;
        Holder holder = Holder::Elsewhere;
        QString foreignOwner;
        bool isReadable = false;
        QList<Entry> entries;
        QString away; ///< Why the server took nothing when it was last tried; empty when it did.
    };
    /// The lists in a program's folder. Touches none.
    static QList<List> ListsIn(const QString& folder);

    /// The list is written on `writer`. `today` is `yyyymmdd`.
    PacsQueue(WorkThread& writer, QString today);
    PacsQueue(const PacsQueue&) = delete;
    PacsQueue& operator=(const PacsQueue&) = delete;

    /// Behind the others, unless the picture waits already. One that was set aside waits again. With `isChanged` its
    /// file is another one now: one that is under way may have been read before.
    void Add(const Visit& visit, const QList<int>& numbers, const QString& doctor, bool isChanged);
    /// The first that wait, and are under way from here on.
    QList<Entry> Take(int most);
    /// They wait again.
    void PutBack();
    /// What became of one: the server has it, under that identifier; or there is nothing to be sent any more; or it is
    /// set aside. `Store` is to follow.
    void Sent(const Entry& entry, const QString& uid);
    void Remove(const Entry& entry);
    void Refuse(const Entry& entry, const QString& reason);
    /// Gives how often that was.
    int CountCut(const Entry& entry);
    void Store();
    /// The picture, or all of the visit, has been deleted; gives the entries that were under way.
    QList<qint64> Forget(const Visit& visit, std::optional<int> number);
    void setAway(const QString& reason) { m_away = reason; }

    QStringList SentUids() const;
    /// It waits, or another content of it has been sent.
    bool Knows(const Visit& visit, int number) const;
    int Waiting() const;
    int Refused() const;
    /// Those that were set aside wait again, or go.
    void RetryRefused();
    void DropRefused();
    /// What is left is for the next start. Nothing may be changed afterwards.
    void End();

private:
    /// A picture that the server has.
    struct Mark
    {
        Visit visit; ///< Chart, date and section.
        int number = 0;
        QString uid;
    };

    void Read(const QJsonDocument& document);
    QByteArray Content() const;
    Entry* Find(qint64 id);

    WorkThread& m_writer;
    const QString m_today;
    QList<Entry> m_entries;
    QList<Mark> m_sent; ///< Of today, the latest last.
    QString m_away;
    qint64 m_lastId = 0;
    ProcessList m_list;
};
