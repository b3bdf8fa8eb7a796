#pragma once

#include <QList>
#include <QString>
#include <QStringList>

/// A column as the database that `Connection` reaches has it. On SQLite only the name is filled.
struct TableColumn
{
    QString name;       ///< Small letters.
    QString type;       ///< `varchar`, `text`, `smallint`.
    QString fullType;   ///< `varchar(20)`.
    qint64 length = 0;  ///< Characters, of a TEXT bytes; 0 for one that holds no text.
    QString characters; ///< Character set; empty for one that holds no text.
    QString collation;
    bool isNullable = false;
    QString defaultValue; ///< As a statement has it; null without one.
    QString comment;
    QString extra; ///< What makes it more than a plain column: `auto_increment`, `STORED GENERATED`.

    bool IsBinary() const { return type.endsWith(u"binary") || type.endsWith(u"blob"); }
    bool IsWholeNumber() const;
    /// Its set has Hangul.
    bool HoldsKorean() const;
};

struct TableKey
{
    QString name;
    QString columns; ///< Small letters, joined with commas.
    bool isUnique = false;
    bool isPartial = false; ///< Of some column only the beginning counts.
};

/// In their order; empty for a table that isn't there or can't be read.
QList<TableColumn> ColumnsOf(const QString& table, bool isServer);
QList<TableKey> KeysOf(const QString& table, bool isServer);

/// A statement that adds no row, and that the server refuses all the same to whom may not add one. Reads nothing of the
/// table. `columns` are all of the table's.
QString InsertProbe(const QString& table, const QStringList& columns);

/// Keys that a table has too few or too many of, by the columns of the one that a row is known by.
struct KeyFaults
{
    bool lacksOwn = false; ///< REPLACE adds a second row in place of the first.
    QStringList tooNarrow; ///< Names of unique ones by which REPLACE deletes rows that are none of its own.
    QStringList missing;   ///< Columns of those that the lists are read by.
};
/// `wanted` are the definition's, the own one first.
KeyFaults FaultsOf(const QList<TableKey>& keys, const QStringList& wanted);
