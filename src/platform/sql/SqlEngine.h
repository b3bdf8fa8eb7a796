#pragma once

#include <QStringList>

#include <functional>
#include <memory>
#include <optional>

class QSqlDatabase;
class QSqlError;
class RowSource;
struct DatabaseSettings;

/// What a failed statement calls for.
enum class FaultKind {
    Final,      ///< The statement is wrong, or refused: no use in repeating it.
    NoTable,    ///< The same, for its table isn't there, or isn't open to the account in that way.
    Lost,       ///< The connection is gone: open it again.
    Contention, ///< Another client or node was in the way: repeat after a short while.
    NotNow,     ///< The server takes no such statement for the time being, such as with a full disk or a locked table.
};

/// A session as its server knows it.
struct SessionIdentity
{
    QString id;     ///< Of the session within the server's process.
    QString server; ///< Of that process: host name, port and the time of its start.
    QString token;  ///< A lock of the server's that the session alone holds while it lives.
};

/// Gives the columns of a statement's first row, none without a row; nothing when the statement fails.
using FirstRow = std::function<std::optional<QStringList>(const QString& statement)>;

/// What one kind of database does differently from the other.
class SqlEngine
{
public:
    virtual ~SqlEngine() = default;

    /// Names under which the toolkit may hold the driver, the best first.
    virtual QStringList Drivers() const = 0;
    /// Fills in where the database is; it is opened afterwards.
    virtual void Configure(QSqlDatabase& database, const DatabaseSettings& settings) const = 0;
    /// Statements that make a session what the station relies on. They run after each opening.
    virtual QStringList SessionStatements() const = 0;
    /// Statements by which a session sees what other stations have written through other nodes. They run behind those
    /// above; a server that doesn't know them is none of a cluster.
    virtual QStringList ClusterStatements() const = 0;
    /// The name by which statements can call the database.
    virtual QString DatabaseName(const DatabaseSettings& settings) const = 0;
    /// The station's statement in the engine's own dialect.
    virtual QString Translated(const QString& statement) const = 0;
    /// Sends a statement whose first rows are wanted before the last ones have come.
    virtual std::unique_ptr<RowSource> Stream(const QSqlDatabase& database, const QString& statement) const = 0;
    virtual FaultKind Judge(const QSqlError& error) const = 0;
    /// Reason in Korean why opening failed.
    virtual QString OpeningFault(const QSqlError& error, const DatabaseSettings& settings) const = 0;
    /// Who the session is that has just been opened; nothing where a statement can't outlive its session.
    virtual std::optional<SessionIdentity> Identify(const FirstRow& ask) const = 0;
    /// Ends an earlier session of this station, in which a statement may still lie, and sees it gone. False when it
    /// lives on.
    virtual bool EndSession(const SessionIdentity& old, const SessionIdentity& own, const FirstRow& ask) const = 0;
    /// False when an open connection should be encrypted and isn't.
    virtual bool IsProtected(const QSqlDatabase& database, const DatabaseSettings& settings) const = 0;
    /// Socket of an open connection, -1 for none.
    virtual int Socket(const QSqlDatabase& database) const = 0;
    /// Folder of the engine's table definitions among the program's resources.
    virtual QString TableFolder() const = 0;
};

/// Null for a driver name that is none of ours.
std::unique_ptr<SqlEngine> MakeEngine(const QString& driver);
