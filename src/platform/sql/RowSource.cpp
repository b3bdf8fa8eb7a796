#include "platform/sql/RowSource.h"

#include <QSqlRecord>

namespace {
/// The station knows texts and numbers. The drivers give bytes for a text of a binary collation, and whole numbers in
/// as many widths as there are column types.
QVariant StationValue(QVariant value)
{
    if (value.isNull())
        return {};
    switch (value.typeId()) {
    case QMetaType::QByteArray:
        return QString::fromUtf8(value.toByteArray());
    case QMetaType::Char:
    case QMetaType::SChar:
    case QMetaType::UChar:
    case QMetaType::Short:
    case QMetaType::UShort:
    case QMetaType::Int:
    case QMetaType::UInt:
        return value.toLongLong();
    default:
        return value;
    }
}
} // namespace

QSqlQuery RunQuery(const QSqlDatabase& database, const QString& statement)
{
    QSqlQuery query(database);
    query.setForwardOnly(true);
    query.exec(statement);
    return query;
}

QueryRows::QueryRows(QSqlQuery query) : m_query(std::move(query))
{
    if (!m_query.isSelect())
        return;
    const QSqlRecord record = m_query.record();
    for (int column = 0; column < record.count(); ++column)
        m_columns.append(record.fieldName(column));
}

bool QueryRows::Next(QList<QVariant>& values)
{
    if (m_columns.isEmpty() || !m_query.next())
        return false;
    for (int column = 0; column < m_columns.size(); ++column)
        values.append(StationValue(m_query.value(column)));
    return true;
}
