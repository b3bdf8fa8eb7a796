#include "admin/TableDefinition.h"

#include "contracts/files.h"

#include <QFile>
#include <QRegularExpression>

using namespace Qt::StringLiterals;

namespace {

/// Characters of a note or a report that a column must hold at least: its text runs over several pages by then. A TEXT
/// counts bytes, of which a Korean letter takes three.
constexpr qint64 LongText = 20'000;

qint64 RoomOf(const QString& type, const QString& figure)
{
    if (type.endsWith(u"TEXT"_s))
        return LongText;
    return type.endsWith(u"CHAR"_s) ? figure.toLongLong() : 0;
}

} // namespace

qint64 TableDefinition::LengthOf(const Column& column, const QString& captureRoot)
{
    return column.name == u"cap_path" ? NativePath(captureRoot).size() + LongestPathBelowRoot : column.length;
}

TableDefinition TableDefinition::Of(const QString& table)
{
    static const QRegularExpression begin(uR"(^CREATE TABLE IF NOT EXISTS (\w+) \()"_s);
    static const QRegularExpression column(uR"(^\s+(\w+)\s+([A-Z]+)(?:\((\d+)\))?)"_s);
    static const QRegularExpression key(uR"(^\s+(?:PRIMARY KEY|(?:UNIQUE )?KEY (\w+)) \(([\w, ]+)\))"_s);
    TableDefinition definition;
    for (const QString& place : {table, u"clinic"_s}) {
        QFile file(u":/sql/mariadb/%1.sql"_s.arg(place));
        if (!file.open(QFile::ReadOnly))
            continue;
        QString current;
        for (const QString& line : QString::fromUtf8(file.readAll()).split(u'\n')) {
            if (const auto match = begin.match(line); match.hasMatch())
                current = match.captured(1);
            else if (current != table)
                continue;
            else if (const auto keyMatch = key.match(line); keyMatch.hasMatch()) {
                definition.keyNames.append(keyMatch.captured(1));
                definition.keys.append(keyMatch.captured(2).remove(u' '));
            } else if (const auto columnMatch = column.match(line); columnMatch.hasMatch())
                definition.columns.append({columnMatch.captured(1), columnMatch.captured(2),
                                           RoomOf(columnMatch.captured(2), columnMatch.captured(3))});
        }
        break;
    }
    return definition;
}
