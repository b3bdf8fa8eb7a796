#pragma once

#include "admin/table_columns.h"
#include "admin/TableDefinition.h"

#include <QStringList>

/// How the tables of the station are to be made fit.
struct UpgradeWishes
{
    bool toUtf8mb4 = false; ///< Also columns whose set holds Korean, but not all letters.
    /// Character set that texts really are in where a column has another one, or none; empty when nobody has said.
    QString bytes;
    QString captureRoot;
};

/// What one table needs so that whatever the station writes fits and is kept. All is planned from the columns' own
/// types, sets, defaults and comments, and no text is cut or changes: what can't be kept is refused, and then nothing
/// of the table is done. Asks the database that `Connection` reaches, a MariaDB server.
class TableUpgrade
{
public:
    /// Empty for a table that isn't there. Throws PlatformError when the database gives out.
    static TableUpgrade Plan(const QString& table, const UpgradeWishes& wishes);

    const QString& Table() const { return m_table; }
    /// In their order. A stop between two leaves every text as it is, and a plan made then goes on from there.
    const QStringList& Statements() const { return m_statements; }
    /// Why the table is left as it is, one sentence each.
    const QStringList& Refusals() const { return m_refusals; }
    /// Reads all rows, and tells them from others: their number, and sums over what each of them says. `isDone` reads
    /// the texts as the columns have them now, otherwise as they are meant.
    QString Checksum(bool isDone) const;

private:
    void PlanColumn(const TableColumn& column, const TableDefinition::Column& wanted);
    void PlanNumber(const TableColumn& column);
    void PlanText(const TableColumn& column, const TableDefinition::Column& wanted);
    /// Texts whose bytes may be in another set than the column's, in the one that has been said. False when it is
    /// refused.
    bool PlanBytes(const TableColumn& column, const QString& said);
    /// A column that somebody changes by hand takes the table's own set, and so does a default.
    void PlanDefault();
    void PlanKeys(const QStringList& names);
    /// Number of rows for which the condition holds, with the first few: their keys and a text of each.
    QString RowsWhere(const QString& condition, const QString& text) const;
    qint64 Count(const QString& condition) const;

    QString m_table;
    UpgradeWishes m_wishes;
    QStringList m_wantedKeys;
    QList<TableKey> m_keys;
    QStringList m_meant; ///< Expressions of all columns' values, with texts in utf8mb4, before the statements,
    QStringList m_plain; ///< and behind them.
    QStringList m_toBytes;
    QStringList m_toSet;
    QStringList m_changes;
    QStringList m_refusals;
    QStringList m_statements;
};
