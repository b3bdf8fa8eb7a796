#pragma once

#include "contracts/ado.h"

#include <QString>

#include <memory>

struct Visit;

/// The one database connection of the process.
extern ConnectionPointer Connection;

/// A statement joined from literal pieces and values. A text value goes between the apostrophes that the pieces around
/// it hold, with an apostrophe inside it doubled, which is all that the connection's dialect needs; a number stands
/// bare.
class Statement
{
public:
    explicit Statement(QStringView piece = {}) : m_text(piece.toString()) {}

    Statement& Piece(QStringView piece);
    Statement& Value(const QString& text);
    Statement& Value(int number);
    /// A piece and the value behind it.
    template <class T>
    Statement& Then(QStringView piece, const T& value)
    {
        return Piece(piece).Value(value);
    }
    /// A piece that opens an apostrophe, a text, and the piece "' " behind it.
    Statement& Quoted(QStringView piece, const QString& text);
    /// The condition that a column holds that value and no other, byte by byte: texts as they are read, whatever the
    /// column's character set and collation.
    Statement& Same(const QString& column, const QVariant& value);
    /// The condition that a row is one of the visit's captures, in a table whose columns have that prefix.
    Statement& OfVisit(const QString& prefix, const Visit& visit);

    const QString& Text() const { return m_text; }

private:
    QString m_text;
};

/// Opens the statement's rows on the global connection, or, in work that was handed over, on the one that does it.
/// Throws PlatformError with the driver's text.
std::unique_ptr<AdoRecordset> OpenRows(const Statement& statement, CursorType cursor = adOpenForwardOnly,
                                       ExecuteOption option = adOptionUnspecified);
/// Runs a statement without rows, and gives how many it has met. Throws PlatformError with the driver's text.
qint64 Execute(const Statement& statement);

/// Hands statements over without waiting for them; see `AdoConnection::Queue`. Whatever keeps them from being done is
/// told by `done`, later.
void QueueStatements(QObject* context, AdoConnection::Work work, AdoConnection::Done done);

/// A row is there unless both ends are reached at once.
bool HasRow(const AdoRecordset& rows);
/// A column as trimmed text; a null is empty.
QString FieldText(const AdoRecordset& rows, const QString& column);
/// The same by the column's place in the statement, counted from 0: for lists that are long.
QString FieldText(const AdoRecordset& rows, int place);
/// A column as a whole number; a null is 0.
int FieldNumber(const AdoRecordset& rows, const QString& column);
