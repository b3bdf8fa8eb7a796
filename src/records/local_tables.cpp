#include "records/local_tables.h"

#include "contracts/LocalDatabase.h"

using namespace Qt::StringLiterals;

bool HasTable(LocalDatabase& database, QStringView table)
{
    return !database.Rows(u"SELECT name FROM sqlite_master WHERE type = 'table' AND name = '%1'"_s.arg(table))
                .isEmpty();
}

bool HasColumn(LocalDatabase& database, QStringView table, QStringView column)
{
    return !database.Rows(u"SELECT name FROM pragma_table_info('%1') WHERE name = '%2'"_s.arg(table, column)).isEmpty();
}
