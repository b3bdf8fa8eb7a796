#include "platform/sql/MariaDbRows.h"

namespace {
/// As the toolkit's driver gives it for the columns of the station's tables: texts and numbers.
QVariant Value(const MYSQL_FIELD& field, const char* bytes, unsigned long length)
{
    if (bytes == nullptr)
        return {};
    const QByteArrayView value(bytes, static_cast<qsizetype>(length));
    switch (field.type) {
    case MYSQL_TYPE_TINY:
    case MYSQL_TYPE_SHORT:
    case MYSQL_TYPE_INT24:
    case MYSQL_TYPE_LONG:
    case MYSQL_TYPE_LONGLONG:
    case MYSQL_TYPE_YEAR:
        return value.toLongLong();
    case MYSQL_TYPE_FLOAT:
    case MYSQL_TYPE_DOUBLE:
    case MYSQL_TYPE_DECIMAL:
    case MYSQL_TYPE_NEWDECIMAL:
        return value.toDouble();
    default:
        return QString::fromUtf8(value);
    }
}
} // namespace

MariaDbRows::MariaDbRows(MYSQL& session, const QString& statement) : m_session(session)
{
    const QByteArray text = statement.toUtf8();
    if (mysql_real_query(&m_session, text.constData(), static_cast<unsigned long>(text.size())) == 0)
        m_result = mysql_use_result(&m_session);
    NoteError();
}

MariaDbRows::~MariaDbRows()
{
    mysql_free_result(m_result);
}

QStringList MariaDbRows::Columns() const
{
    QStringList columns;
    for (unsigned column = 0; m_result != nullptr && column < mysql_num_fields(m_result); ++column)
        columns.append(QString::fromUtf8(mysql_fetch_field_direct(m_result, column)->name));
    return columns;
}

bool MariaDbRows::Next(QList<QVariant>& values)
{
    const MYSQL_ROW row = m_result != nullptr ? mysql_fetch_row(m_result) : nullptr;
    if (row == nullptr) {
        NoteError();
        return false;
    }
    const MYSQL_FIELD* fields = mysql_fetch_fields(m_result);
    const unsigned long* lengths = mysql_fetch_lengths(m_result);
    for (unsigned column = 0; column < mysql_num_fields(m_result); ++column)
        values.append(Value(fields[column], row[column], lengths[column]));
    return true;
}

void MariaDbRows::NoteError()
{
    if (const unsigned number = mysql_errno(&m_session); number != 0)
        m_error = QSqlError(QString(), QString::fromUtf8(mysql_error(&m_session)), QSqlError::StatementError,
                            QString::number(number));
}
