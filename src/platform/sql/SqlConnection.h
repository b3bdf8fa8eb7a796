#pragma once

#include "contracts/ado.h"
#include "platform/sql/database.h"
#include "platform/sql/SqlEngine.h"

#include <QSqlDatabase>
#include <QSqlQuery>

/// A connection that opens itself again when it finds itself lost. Since a statement's rows are read in full before it
/// is handed back, nothing is ever open on the connection between two statements.
class SqlConnection : public AdoConnection
{
public:
    /// Opens the connection. Throws PlatformError.
    SqlConnection(const DatabaseSettings& settings, std::unique_ptr<SqlEngine> engine);
    ~SqlConnection() override;
    SqlConnection(const SqlConnection&) = delete;
    SqlConnection& operator=(const SqlConnection&) = delete;

    QString DefaultDatabase() const override;
    std::unique_ptr<AdoRecordset> Execute(const QString& statement) override;
    std::unique_ptr<AdoRecordset> NewRecordset() override;

    const SqlEngine& Engine() const { return *m_engine; }

private:
    void Open();
    QSqlQuery Run(const QString& statement);

    DatabaseSettings m_settings;
    std::unique_ptr<SqlEngine> m_engine;
    QString m_name; ///< Of the toolkit's connection; unique in the process.
    QSqlDatabase m_database;
};
