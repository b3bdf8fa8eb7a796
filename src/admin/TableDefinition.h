#pragma once

#include <QList>
#include <QString>
#include <QStringList>

/// What a table has to have, read from the definition by which the station makes it.
struct TableDefinition
{
    struct Column
    {
        QString name;      ///< Small letters.
        QString type;      ///< Without its length: `VARCHAR`, `MEDIUMTEXT`, `SMALLINT`.
        qint64 length = 0; ///< Characters that the station may write; 0 for numbers.
    };

    /// Behind the capture root: year, section, file name of a picture.
    static constexpr qint64 LongestPathBelowRoot = 5 + 101 + 30;

    QList<Column> columns;
    QStringList keys;     ///< Columns of each, the primary one first, joined with commas.
    QStringList keyNames; ///< Of the same; empty for the primary one.

    /// Characters that a column has to hold below this capture root; 0 for numbers.
    static qint64 LengthOf(const Column& column, const QString& captureRoot);
    /// Empty for a table that the program knows nothing of.
    static TableDefinition Of(const QString& table);
};
