#pragma once

#include "contracts/ActSource.h"
#include "contracts/files.h"
#include "frame/WorkThread.h"
#include "records/acts.h"

#include <QJsonObject>
#include <QList>
#include <QObject>
#include <QTimer>

#include <memory>
#include <mutex>

class LocalDatabase;

/// The acts of this process that the table hasn't got yet, in their order, in a file of this process's own; those of
/// this user's processes that have died are taken over. Made and ended by the program's main file; one of its kind.
class ActJournal : public QObject
{
    Q_OBJECT

public:
    explicit ActJournal(ActSource source);
    ~ActJournal() override;

    /// Any thread.
    void Record(const acts::Act& act);
    /// The program ends: waits for the database to take what waits, no longer than that, and leaves the rest to the
    /// next start.
    void End(int patienceMs = 2000);

private:
    /// An act as it lies in the file: the table's columns but those that the server gives.
    struct Entry
    {
        QString id;
        QJsonObject columns;
    };
    struct Local;

    void TakeOver();
    void TakeIn(const QList<Entry>& entries);
    void Send();
    /// Nothing that was recorded is still to be taken in.
    bool HasAll();
    void Settle(const QList<Entry>& sent, const std::exception_ptr& fault);
    /// The file lets go of them.
    void Forget(const QList<Entry>& entries);

    const ActSource m_source;
    const QString m_run;
    std::mutex m_mutex;
    int m_lastSeq = 0;
    int m_onTheirWay = 0;           ///< Written, or about to be, and not taken in on the screen's thread yet.
    std::shared_ptr<Local> m_local; ///< The writer's.
    WorkThread m_writer;
    QList<Entry> m_waiting;
    QTimer m_retry;
    int m_pauseMs = 0;
    int m_refusals = 0; ///< Of the first that waits, by a server that answers.
    bool m_isSending = false;
    bool m_hasNoTable = false;
    bool m_hasEnded = false;
};
