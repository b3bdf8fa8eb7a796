#pragma once

#include "platform/sql/SqlEngine.h"

/// MariaDB, MySQL and a Galera cluster of either.
class MariaDbEngine : public SqlEngine
{
public:
    QStringList Drivers() const override;
    void Configure(QSqlDatabase& database, const DatabaseSettings& settings) const override;
    QStringList SessionStatements() const override;
    QStringList ClusterStatements() const override;
    QString DatabaseName(const DatabaseSettings& settings) const override;
    QString Translated(const QString& statement) const override;
    std::unique_ptr<RowSource> Stream(const QSqlDatabase& database, const QString& statement) const override;
    FaultKind Judge(const QSqlError& error) const override;
    QString OpeningFault(const QSqlError& error, const DatabaseSettings& settings) const override;
    std::optional<SessionIdentity> Identify(const FirstRow& ask) const override;
    bool EndSession(const SessionIdentity& old, const SessionIdentity& own, const FirstRow& ask) const override;
    bool IsProtected(const QSqlDatabase& database, const DatabaseSettings& settings) const override;
    int Socket(const QSqlDatabase& database) const override;
    QString TableFolder() const override;
};
