#include "admin/table_columns.h"

#include "records/Statement.h"

#include <QSet>
#include <QStringList>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

QSet<QString> SetOf(const QString& columns)
{
    const QStringList names = columns.split(u',');
    return {names.begin(), names.end()};
}

} // namespace

bool TableColumn::IsWholeNumber() const
{
    // No smaller one: the numbers of a visit's pictures go up to 32767.
    return type == u"smallint" || type == u"mediumint" || type == u"int" || type == u"bigint";
}

bool TableColumn::HoldsKorean() const
{
    return characters == u"euckr" || characters.startsWith(u"utf"_s) || characters == u"ucs2";
}

QList<TableColumn> ColumnsOf(const QString& table, bool isServer)
{
    Statement ask;
    if (isServer)
        ask.Piece(u" SELECT column_name AS name, data_type AS type, column_type AS full_type, "
                  "COALESCE(character_maximum_length, 0) AS length, COALESCE(character_set_name, '') AS characters, "
                  "COALESCE(collation_name, '') AS collation, is_nullable = 'YES' AS nullable, "
                  "column_default AS usual, "
                  "column_comment AS comment, extra FROM information_schema.columns WHERE table_schema = DATABASE() ")
            .Quoted(u" AND table_name = '", table)
            .Piece(u" ORDER BY ordinal_position ");
    else
        ask.Quoted(u" SELECT name FROM pragma_table_info('", table).Piece(u") ");
    QList<TableColumn> columns;
    for (const auto rows = OpenRows(ask); !rows->Eof(); rows->MoveNext()) {
        TableColumn column;
        column.name = FieldText(*rows, 0).toLower();
        if (isServer) {
            column.type = FieldText(*rows, 1).toLower();
            column.fullType = FieldText(*rows, 2);
            column.length = rows->Fields(3).toLongLong();
            column.characters = FieldText(*rows, 4);
            column.collation = FieldText(*rows, 5);
            column.isNullable = rows->Fields(6).toBool();
            column.defaultValue = rows->Fields(7).toString();
            column.comment = rows->Fields(8).toString();
            column.extra = FieldText(*rows, 9);
        }
        columns.append(column);
    }
    return columns;
}

QList<TableKey> KeysOf(const QString& table, bool isServer)
{
    Statement ask;
    if (isServer)
        ask.Piece(u" SELECT index_name AS name, GROUP_CONCAT(column_name ORDER BY seq_in_index) AS names, "
                  "MAX(non_unique) = 0 AS is_unique, MAX(sub_part IS NOT NULL) AS is_partial "
                  "FROM information_schema.statistics WHERE table_schema = DATABASE() ")
            .Quoted(u" AND table_name = '", table)
            .Piece(u" GROUP BY index_name ");
    else
        ask.Quoted(
               u" SELECT l.name, (SELECT GROUP_CONCAT(name, ',') FROM (SELECT i.name FROM pragma_index_info(l.name) "
               "i ORDER BY i.seqno)) AS names, l.\"unique\" AS is_unique, 0 AS is_partial "
               "FROM pragma_index_list('",
               table)
            .Piece(u") l ");
    QList<TableKey> keys;
    for (const auto rows = OpenRows(ask); !rows->Eof(); rows->MoveNext())
        keys.append({FieldText(*rows, 0), FieldText(*rows, 1).toLower(), rows->Fields(2).toInt() != 0,
                     rows->Fields(3).toInt() != 0});
    return keys;
}

QString InsertProbe(const QString& table, const QStringList& columns)
{
    return u" INSERT INTO %1 ( %2 ) SELECT %3 FROM ( SELECT 1 ) AS one_row WHERE 1 = 0 "_s.arg(
        table, columns.join(u", "_s), QStringList(columns.size(), u"NULL"_s).join(u", "_s));
}

KeyFaults FaultsOf(const QList<TableKey>& keys, const QStringList& wanted)
{
    KeyFaults faults;
    const QSet<QString> own = SetOf(wanted.value(0));
    faults.lacksOwn = std::ranges::none_of(
        keys, [&own](const TableKey& key) { return key.isUnique && !key.isPartial && SetOf(key.columns) == own; });
    for (const TableKey& key : keys) {
        if (key.isUnique && (key.isPartial || !SetOf(key.columns).contains(own)))
            faults.tooNarrow << key.name;
    }
    for (const QString& columns : wanted) {
        // A longer key that begins alike does the same.
        const bool isThere = std::ranges::any_of(keys, [&columns](const TableKey& key) {
            return !key.isPartial && (key.columns + u',').startsWith(columns + u',');
        });
        if (!isThere && columns != wanted.first())
            faults.missing << columns;
    }
    return faults;
}
