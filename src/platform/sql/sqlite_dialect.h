#pragma once

#include <QString>

namespace sqlite {
/// A statement of the MySQL dialect as SQLite takes it: `SHOW TABLES FROM name`, and `LEFT(text, n)`, whose name the
/// parser refuses. What stands between quotes is left alone; all else passes as it is.
QString Translated(const QString& statement);
} // namespace sqlite
