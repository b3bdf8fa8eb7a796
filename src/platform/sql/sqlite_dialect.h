#pragma once

#include <QString>

namespace sqlite {
/// A statement of the MySQL dialect as SQLite takes it: `SHOW TABLES FROM name`, `LEFT(text, n)`, whose name the
/// parser refuses, and `CAST(CONVERT(column USING utf8mb4) AS BINARY)`. What stands between quotes is left alone; all
/// else passes as it is.
QString Translated(const QString& statement);
} // namespace sqlite
