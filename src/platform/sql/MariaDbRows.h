#pragma once

#include "platform/sql/RowSource.h"

#include <mysql.h>

/// Rows as the server sends them, by the client library itself, so that the first ones can be read while the others are
/// still to come.
class MariaDbRows : public RowSource
{
public:
    /// Sends the statement.
    MariaDbRows(MYSQL& session, const QString& statement);
    /// Reads over what has not been read: the session is free again.
    ~MariaDbRows() override;
    MariaDbRows(const MariaDbRows&) = delete;
    MariaDbRows& operator=(const MariaDbRows&) = delete;

    QStringList Columns() const override;
    bool Next(QList<QVariant>& values) override;
    QSqlError Error() const override { return m_error; }

private:
    void NoteError();

    MYSQL& m_session;
    MYSQL_RES* m_result = nullptr;
    QSqlError m_error;
};
