#include "platform/sql/register_sql.h"

#include "frame/components.h"
#include "platform/sql/SqliteFile.h"
#include "platform/sql/TableKeeper.h"

using namespace Qt::StringLiterals;

void RegisterSql()
{
    // The definitions stand in a static library, whose resources the linker drops unless they are asked for.
    Q_INIT_RESOURCE(tables);
    RegisterComponent<clsTableKeeper>(u"prjTableKeeper.clsTableKeeper"_s,
                                      [] { return std::make_unique<TableKeeper>(); });
    InstallService<LocalDatabases>(std::make_unique<SqliteFiles>());
}
