#pragma once

#include "contracts/ado.h"
#include "frame/WorkThread.h"
#include "platform/sql/SqlSession.h"

/// The connection as the screen's thread has it: hands statements over to the session's thread, and waits for them.
class SqlConnection : public AdoConnection
{
public:
    /// Opens the connection. Throws PlatformError.
    SqlConnection(const DatabaseSettings& settings, std::unique_ptr<SqlEngine> engine);
    /// A statement that still runs is cut off.
    ~SqlConnection() override;
    SqlConnection(const SqlConnection&) = delete;
    SqlConnection& operator=(const SqlConnection&) = delete;

    QString DefaultDatabase() const override;
    std::unique_ptr<AdoRecordset> Execute(const QString& statement,
                                          ExecuteOption option = adOptionUnspecified) override;
    std::unique_ptr<AdoRecordset> NewRecordset() override;
    void Queue(QObject* context, Work work, Done done) override;

    const SqlEngine& Engine() const { return m_session->Engine(); }

private:
    struct Task;

    /// Hands the task over and waits until it has begun to give its rows.
    void Await(const std::shared_ptr<Task>& task);
    /// The session is closed by the thread that opened it.
    void EndSession();

    std::shared_ptr<SqlSession> m_session; ///< Outlives this object when its thread had to be left behind.
    WorkThread m_thread;
};
