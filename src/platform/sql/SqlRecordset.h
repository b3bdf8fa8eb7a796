#pragma once

#include "contracts/ado.h"

#include <QList>
#include <QStringList>

class QSqlQuery;

/// All rows of a statement, in memory.
class SqlRecordset : public AdoRecordset
{
public:
    SqlRecordset() = default;
    /// Takes the rows of a statement that has run; whether all of them came, the query's last error tells.
    explicit SqlRecordset(QSqlQuery& query);

    void setCursorLocation(CursorLocation /*location*/) override {}
    void setCursorType(CursorType /*type*/) override {}
    void setLockType(LockType /*type*/) override {}

    void Open(const QString& source, AdoConnection& activeConnection) override;
    void Close() override;
    bool Eof() const override { return m_position >= m_shown.size(); }
    bool Bof() const override { return m_shown.isEmpty(); }
    void MoveNext() override;
    QVariant Fields(const QString& name) const override;
    QVariant Fields(int place) const override;
    void setFilter(const QString& criterion) override;

private:
    qsizetype Column(const QString& name) const;
    const QVariant& Value(qsizetype row, qsizetype column) const;
    void ShowAll();

    QStringList m_columns;
    QList<QVariant> m_values; ///< Row by row: a list of its own for each would cost a long result dearly.
    qsizetype m_rows = 0;
    QList<qsizetype> m_shown; ///< Rows that pass the filter.
    qsizetype m_position = 0; ///< Within `m_shown`.
};
