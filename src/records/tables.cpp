#include "records/tables.h"

#include "contracts/PlatformError.h"
#include "contracts/setup_components.h"
#include "frame/components.h"
#include "records/Statement.h"

using namespace Qt::StringLiterals;

bool EnsureTable(ConnectionPointer& connection, const QString& extra, const QString& table, bool create, QString* fault)
{
    const QString database = connection->DefaultDatabase();
    const auto keeper = CreateObject<clsTableKeeper>(u"prjTableKeeper.clsTableKeeper"_s);
    const auto tables = connection->Execute(Statement(u" SHOW TABLES FROM ").Piece(database).Piece(u" ").Text());
    tables->setFilter(Statement(u" tables_in_").Piece(database).Quoted(u" = '", table).Text());
    bool there = HasRow(*tables);
    if (!there && create) {
        try {
            keeper->tablecreate(connection, table, extra);
        } catch (const PlatformError& error) {
            // Not every account may make tables, and not every visit needs this one.
            if (fault != nullptr)
                *fault = error.Text();
        }
        there = true;
    }
    tables->Close();
    return there;
}
