#pragma once

#include "contracts/ado.h"
#include "platform/sql/database.h"
#include "platform/sql/SqlEngine.h"

#include <QSqlDatabase>
#include <QSqlQuery>

#include <mutex>

class SqlRows;

/// The session at the database, and all that is done in it, on the connection's thread. It opens itself again when it
/// finds itself lost. Since a statement's rows are read in full before the next one runs, nothing is ever open in it
/// between two statements.
class SqlSession
{
public:
    SqlSession(const DatabaseSettings& settings, std::unique_ptr<SqlEngine> engine);
    SqlSession(const SqlSession&) = delete;
    SqlSession& operator=(const SqlSession&) = delete;

    /// Throws PlatformError.
    void Open();
    /// Nothing can be done any more.
    void End();

    /// Runs one statement. Its rows go into `rows`; `hasBegun` is called when the first ones are there, with
    /// `adAsyncFetch` before the others have come. Throws DatabaseAway and PlatformError as `AdoConnection::Execute`
    /// does.
    void Execute(const QString& statement, ExecuteOption option, SqlRows& rows, const std::function<void()>& hasBegun);

    /// From any thread: the statement that runs, or the next one if none does, is given up, until `Resume`. False when
    /// it lies at the server, where it is cut off: its end comes at once. True when nothing has been sent yet.
    bool Interrupt();
    void Resume();

    const DatabaseSettings& Settings() const { return m_settings; }
    const SqlEngine& Engine() const { return *m_engine; }

private:
    void Close();
    void Reopen();
    void OpenAtHost(const QString& host);
    void EndOldSession();
    void CheckInterrupted() const;
    /// The statement lies at the server from here on.
    void Send();

    const DatabaseSettings m_settings;
    const std::unique_ptr<SqlEngine> m_engine;
    const QString m_name; ///< Of the toolkit's connection; unique in the process.
    QSqlDatabase m_database;
    QString m_host; ///< Where it was opened last.
    std::optional<SessionIdentity> m_identity;
    /// A session that was lost, and in which a statement may still lie.
    std::optional<SessionIdentity> m_old;

    mutable std::mutex m_mutex;
    int m_socket = -1; ///< A handle of its own on the open connection's socket.
    bool m_isSent = false;
    bool m_isInterrupted = false;
};
