#include "platform/sql/sql_script.h"

using namespace Qt::StringLiterals;

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
