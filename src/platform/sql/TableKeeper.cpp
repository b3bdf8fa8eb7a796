#include "platform/sql/TableKeeper.h"

#include "contracts/PlatformError.h"
#include "frame/components.h"
#include "platform/sql/register_sql.h"
#include "platform/sql/SqlConnection.h"
#include "platform/sql/SqliteFile.h"

#include <QFile>

using namespace Qt::StringLiterals;

void TableKeeper::tablecreate(ConnectionPointer& connection, const QString& table, const QString& /*extra*/)
{
    auto* database = dynamic_cast<SqlConnection*>(connection.get());
    if (database == nullptr)
        throw PlatformError(u"데이터베이스에 연결되어 있지 않습니다.!!"_s);
    QFile definition(database->Engine().TableFolder() + table + u".sql"_s);
    if (!definition.open(QIODevice::ReadOnly))
        throw PlatformError(u"%1은(는) 만들 수 있는 테이블이 아닙니다.!!"_s.arg(table));
    for (const QString& statement : StatementsOfScript(QString::fromUtf8(definition.readAll())))
        database->Execute(statement);
}

QStringList StatementsOfScript(const QString& script)
{
    QStringList statements;
    QString statement;
    for (const QString& line : script.split(u'\n')) {
        const QString text = line.trimmed();
        if (text.isEmpty() || text.startsWith(u"--"_s))
            continue;
        statement += line + u'\n';
        if (text.endsWith(u';')) {
            statements.append(statement.trimmed().chopped(1));
            statement.clear();
        }
    }
    if (!statement.trimmed().isEmpty())
        statements.append(statement.trimmed());
    return statements;
}

void RegisterSql()
{
    // The definitions stand in a static library, whose resources the linker drops unless they are asked for.
    Q_INIT_RESOURCE(tables);
    RegisterComponent<clsTableKeeper>(u"prjTableKeeper.clsTableKeeper"_s,
                                      [] { return std::make_unique<TableKeeper>(); });
    InstallService<LocalDatabases>(std::make_unique<SqliteFiles>());
}
