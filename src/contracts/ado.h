#pragma once

#include <QString>
#include <QVariant>

#include <exception>
#include <functional>
#include <memory>

class AdoConnection;
class QObject;

/// The values that the station passes; named as the access layer names them.
enum CursorLocation : int { adUseClient = 3 };
enum CursorType : int { adOpenForwardOnly = 0, adOpenKeyset = 1 };
enum LockType : int { adLockReadOnly = 1 };
enum ExecuteOption : int {
    adOptionUnspecified = -1,
    adAsyncFetch = 32, ///< The first rows are handed over as soon as they are there; the others come in behind them.
};

/// `ADODB.Recordset`: the rows of one statement, read on the client side, so that nothing stays open on the connection
/// while events are served between two rows.
class AdoRecordset
{
public:
    virtual ~AdoRecordset() = default;

    virtual void setCursorLocation(CursorLocation location) = 0;
    virtual void setCursorType(CursorType type) = 0;
    virtual void setLockType(LockType type) = 0;

    /// Runs the statement and stands on its first row. Throws PlatformError with the driver's text when it fails.
    virtual void Open(const QString& source, AdoConnection& activeConnection,
                      ExecuteOption option = adOptionUnspecified) = 0;
    /// Further rows may still come in; `Eof` then tells of those that are there. Throws PlatformError when the rest
    /// can't be read. Never true but with `adAsyncFetch`.
    virtual bool IsFetching() = 0;
    virtual void Close() = 0;

    /// Beyond the last row. Without any row both hold.
    virtual bool Eof() const = 0;
    /// Before the first row.
    virtual bool Bof() const = 0;
    virtual void MoveNext() = 0;

    /// The value of the present row's column; its name without regard to case. Where a name stands twice, the first.
    /// A database null is an invalid variant. A column that isn't there is a fault (PlatformError).
    virtual QVariant Fields(const QString& name) const = 0;
    /// The value of the column that stands in that place of the statement, counted from 0.
    virtual QVariant Fields(int place) const = 0;

    /// How many rows a statement without rows has met, changed or not.
    virtual qint64 RecordsAffected() const = 0;

    /// Keeps the rows in which a column equals a text: " column = 'text' ", both without regard to case. An empty text
    /// lifts the filter. Stands on the first row that remains.
    virtual void setFilter(const QString& criterion) = 0;
};

/// `ADODB.Connection`: the one way to the database. Statements run on a thread of its own, one after the other in the
/// order in which they were handed over: none overtakes another.
class AdoConnection
{
public:
    virtual ~AdoConnection() = default;

    /// Name of the database that statements run in.
    virtual QString DefaultDatabase() const = 0;

    /// Runs one statement and waits for it as `waiting::Await` does. The recordset is empty for a statement that gives
    /// no rows.
    /// A connection found lost is opened again once and the statement repeated; after that DatabaseAway with the
    /// driver's text, and also when the operator gives the wait up: the statement then comes to nothing, now or later.
    /// PlatformError for a statement that the server refuses; TableRefused when it is the table's doing.
    virtual std::unique_ptr<AdoRecordset> Execute(const QString& statement,
                                                  ExecuteOption option = adOptionUnspecified) = 0;

    /// Work made of statements that belong together; within it `Execute` runs at once. It may touch nothing that the
    /// user-interface thread has.
    using Work = std::function<void()>;
    /// Hears on the user-interface thread that the work has ended; with the fault that it threw, or null.
    using Done = std::function<void(std::exception_ptr fault)>;
    /// Hands over work without waiting for it. `done` isn't called any more once the context has gone.
    virtual void Queue(QObject* context, Work work, Done done) = 0;

    /// A recordset that this connection can be opened on.
    virtual std::unique_ptr<AdoRecordset> NewRecordset() = 0;
};

/// The connection is handed from component to component, each of which may hand back another.
using ConnectionPointer = std::shared_ptr<AdoConnection>;
