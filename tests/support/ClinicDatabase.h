#pragma once

#include "platform/sql/database.h"
#include "support/PrivateMariaDb.h"

/// A fresh database of one engine with the tables as an administrator makes them from sql/, filled by the engine's own
/// client program.
class ClinicDatabase
{
public:
    /// `server` is needed for `QMARIADB` and has to run; `QSQLITE` keeps a file in a temporary folder.
    ClinicDatabase(const QString& driver, PrivateMariaDb* server);

    /// Makes the database with the tables of these files of sql/: `ca`, `cap`, `caso`, `endo`, and `clinic` for all
    /// that belong to the clinic. False, with the reason in `Fault`.
    /// Statements of `rows` follow.
    bool Make(const QStringList& tables, const QString& rows = {});
    /// Runs statements beside the station's connection, as another client does. False, with the reason in `Fault`.
    bool Run(const QString& statements);

    const DatabaseSettings& Settings() const { return m_settings; }
    const QString& Fault() const { return m_fault; }

private:
    bool IsServer() const { return m_server != nullptr; }

    PrivateMariaDb* m_server;
    QTemporaryDir m_folder;
    DatabaseSettings m_settings;
    QString m_fault;
};
