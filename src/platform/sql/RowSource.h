#pragma once

#include <QSqlError>
#include <QSqlQuery>
#include <QStringList>
#include <QVariant>

/// Where the rows of a statement that has been sent come from, one after the other. Nothing else may run in its session
/// while it lives.
class RowSource
{
public:
    virtual ~RowSource() = default;

    /// Empty for a statement that gives no rows.
    virtual QStringList Columns() const = 0;
    /// Adds the values of the next row; false when there is none, or when `Error` tells of a fault.
    virtual bool Next(QList<QVariant>& values) = 0;
    virtual QSqlError Error() const = 0;
    /// Rows that a statement without rows has met.
    virtual qint64 Affected() const { return 0; }
};

/// Sends a statement by the toolkit.
QSqlQuery RunQuery(const QSqlDatabase& database, const QString& statement);

/// By the toolkit. Its driver for MariaDB has the whole result in memory before the first row can be read.
class QueryRows : public RowSource
{
public:
    explicit QueryRows(QSqlQuery query);

    QStringList Columns() const override { return m_columns; }
    bool Next(QList<QVariant>& values) override;
    QSqlError Error() const override { return m_query.lastError(); }
    qint64 Affected() const override { return m_query.isSelect() ? 0 : m_query.numRowsAffected(); }

private:
    QSqlQuery m_query;
    QStringList m_columns;
};
