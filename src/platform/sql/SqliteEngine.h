#pragma once

#include "platform/sql/SqlEngine.h"

/// One SQLite file, for a trial or a clinic with one machine.
class SqliteEngine : public SqlEngine
{
public:
    QStringList Drivers() const override;
    void Configure(QSqlDatabase& database, const DatabaseSettings& settings) const override;
    QStringList SessionStatements() const override;
    QString DatabaseName(const DatabaseSettings& settings) const override;
    QString Translated(const QString& statement) const override;
    FaultKind Judge(const QSqlError& error) const override;
    QString OpeningFault(const QSqlError& error, const DatabaseSettings& settings) const override;
    QString TableFolder() const override;
};
