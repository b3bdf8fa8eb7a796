#include "admin/check_tables.h"

#include "admin/TableDefinition.h"
#include "contracts/files.h"
#include "contracts/PlatformError.h"
#include "records/capture_index.h"
#include "records/Statement.h"

using namespace Qt::StringLiterals;

namespace {

/// A column as the database has it.
struct Column
{
    QString name;
    qint64 length = 0; ///< Characters; 0 for one that holds no text, or any.
    QString characters;
};

/// What the station does with a table; an empty list only reads it.
struct Use
{
    QString table;
    QStringList rights;
    bool isMadeAtNeed = false; ///< By the station itself.
};

QList<Use> UsesOf(const ClientSetupRecord& client)
{
    const QStringList all{u"INSERT"_s, u"UPDATE"_s, u"DELETE"_s};
    const bool marksInYk = client.CheckTable.startsWith(u'1');
    QList<Use> uses{{u"ca"_s, all}, {u"cap"_s, all}, {u"caso"_s, all, true}};
    if (!marksInYk)
        uses.append({u"endo"_s, {u"UPDATE"_s}, true});
    for (const QString& table : {u"wj"_s, u"bh"_s, u"jh"_s, u"pt"_s, u"doctor"_s, u"so"_s})
        uses.append({table, {}});
    uses.append({u"yk"_s, marksInYk ? QStringList{u"UPDATE"_s} : QStringList()});
    return uses;
}

QList<Column> ColumnsOf(const QString& table, bool isServer)
{
    Statement ask;
    if (isServer)
        ask.Piece(u" SELECT column_name AS name, COALESCE(character_maximum_length, 0) AS length, "
                  "COALESCE(character_set_name, '') AS characters FROM information_schema.columns "
                  "WHERE table_schema = DATABASE() ")
            .Quoted(u" AND table_name = '", table)
            .Piece(u" ORDER BY ordinal_position ");
    else
        ask.Quoted(u" SELECT name, 0 AS length, '' AS characters FROM pragma_table_info('", table).Piece(u") ");
    QList<Column> columns;
    for (const auto rows = OpenRows(ask); !rows->Eof(); rows->MoveNext())
        columns.append({FieldText(*rows, 0), rows->Fields(1).toLongLong(), FieldText(*rows, 2)});
    return columns;
}

/// Columns of each key, joined with commas.
QStringList KeysOf(const QString& table, bool isServer)
{
    Statement ask;
    if (isServer)
        ask.Piece(
               u" SELECT GROUP_CONCAT(column_name ORDER BY seq_in_index) AS names FROM information_schema.statistics "
               "WHERE table_schema = DATABASE() ")
            .Quoted(u" AND table_name = '", table)
            .Piece(u" GROUP BY index_name ");
    else
        ask.Quoted(u" SELECT (SELECT GROUP_CONCAT(name, ',') FROM (SELECT i.name FROM pragma_index_info(l.name) i "
                   "ORDER BY i.seqno)) AS names FROM pragma_index_list('",
                   table)
            .Piece(u") l ");
    QStringList keys;
    for (const auto rows = OpenRows(ask); !rows->Eof(); rows->MoveNext())
        keys.append(FieldText(*rows, 0).toLower());
    return keys;
}

QString NameOf(const Use& use)
{
    return u"테이블 %1"_s.arg(use.table);
}

void CheckColumns(const Use& use, const TableDefinition& wanted, const QList<Column>& columns, CheckLines& lines)
{
    // The station writes whole rows of its own tables by position; of the clinic's it reads columns by their names.
    const bool isOwn = use.rights.contains(u"INSERT"_s);
    QStringList names;
    for (const Column& column : columns)
        names.append(column.name.toLower());
    QStringList wantedNames;
    for (const TableDefinition::Column& column : wanted.columns)
        wantedNames.append(column.name);
    if (isOwn && names != wantedNames) {
        lines.append({CheckLine::Wrong, NameOf(use),
                      u"칸의 수나 순서가 다릅니다: %1"_s.arg(names.join(u", "_s).left(300)),
                      u"sql의 %1.sql과 같게 고치십시오. 칸을 더하거나 옮기면 안 됩니다"_s.arg(use.table)});
        return;
    }
    QStringList missing;
    for (const QString& name : wantedNames) {
        if (!names.contains(name))
            missing << name;
    }
    if (!missing.isEmpty())
        lines.append({CheckLine::Wrong, NameOf(use), u"칸이 없습니다: %1"_s.arg(missing.join(u", "_s)),
                      u"진료 프로그램의 테이블을 확인하십시오"_s});
}

/// Only the station's own tables: what is written there must fit.
void CheckRoom(const Use& use, const TableDefinition& wanted, const QList<Column>& columns, const QString& captureRoot,
               CheckLines& lines)
{
    QStringList tooShort;
    QStringList latin;
    QStringList other;
    for (qsizetype at = 0; at < columns.size() && at < wanted.columns.size(); ++at) {
        const Column& column = columns.at(at);
        if (column.characters.isEmpty())
            continue;
        qint64 needed = wanted.columns.at(at).length;
        if (column.name.compare(u"cap_path"_s, Qt::CaseInsensitive) == 0)
            needed = NativePath(captureRoot).size() + TableDefinition::LongestPathBelowRoot;
        if (column.length < needed)
            tooShort << u"%1(%2자, 필요 %3자)"_s.arg(column.name).arg(column.length).arg(needed);
        if (column.characters == u"latin1" || column.characters == u"ascii")
            latin << column.name;
        else if (!column.characters.startsWith(u"utf8"_s) && !other.contains(column.characters))
            other << column.characters;
    }
    if (!tooShort.isEmpty())
        lines.append({CheckLine::Wrong, NameOf(use), u"짧은 칸에서 글이 잘립니다: %1"_s.arg(tooShort.join(u", "_s)),
                      u"sql/mariadb/steps/002_lengths.sql을 실행하십시오"_s});
    if (!latin.isEmpty())
        lines.append({CheckLine::Wrong, NameOf(use), u"한글이 ?로 저장됩니다: %1"_s.arg(latin.join(u", "_s)),
                      u"ALTER TABLE %1 CONVERT TO CHARACTER SET utf8mb4"_s.arg(use.table)});
    if (!other.isEmpty())
        lines.append(
            {CheckLine::Remark, NameOf(use), u"문자 집합 %1에 없는 글자는 ?로 저장됩니다"_s.arg(other.join(u", "_s))});
}

void CheckKeys(const Use& use, const TableDefinition& wanted, bool isServer, CheckLines& lines)
{
    const QStringList keys = KeysOf(use.table, isServer);
    QStringList missing;
    for (const QString& key : wanted.keys) {
        // A longer key that begins alike does the same.
        const bool isThere =
            std::ranges::any_of(keys, [&key](const QString& each) { return (each + u',').startsWith(key + u','); });
        if (!isThere)
            missing << u'(' + key + u')';
    }
    if (!missing.isEmpty())
        lines.append({CheckLine::Wrong, NameOf(use), u"키가 없습니다: %1"_s.arg(missing.join(u", "_s)),
                      use.table == u"caso" ? u"sql의 steps/001_caso_list_keys.sql을 실행하십시오"_s
                                           : u"sql의 %1.sql과 같은 기본 키를 두십시오"_s.arg(use.table)});
}

/// Statements that touch no row: the server refuses them all the same to whom may not.
void CheckRights(const Use& use, const QString& anyColumn, CheckLines& lines)
{
    const std::map<QString, QString> statements{
        {u"INSERT"_s, u" INSERT INTO %1 SELECT * FROM %1 WHERE 1 = 0 "_s},
        {u"UPDATE"_s, u" UPDATE %1 SET %2 = %2 WHERE 1 = 0 "_s},
        {u"DELETE"_s, u" DELETE FROM %1 WHERE 1 = 0 "_s},
    };
    QStringList refused;
    QString reason;
    for (const QString& right : use.rights) {
        try {
            Execute(Statement(statements.at(right).arg(use.table).replace(u"%2"_s, anyColumn)));
        } catch (const DatabaseAway&) {
            throw;
        } catch (const PlatformError& error) {
            refused << right;
            reason = error.Text();
        }
    }
    if (!refused.isEmpty())
        lines.append({CheckLine::Wrong, NameOf(use), u"권한이 없습니다: %1 (%2)"_s.arg(refused.join(u", "_s), reason),
                      u"sql/mariadb/grants.sql의 권한을 주십시오"_s});
}

void CheckTable(const Use& use, const ClientSetupRecord& client, bool isServer, CheckLines& lines)
{
    const qsizetype before = lines.size();
    const TableDefinition wanted = TableDefinition::Of(use.table);
    const QList<Column> columns = ColumnsOf(use.table, isServer);
    if (columns.isEmpty()) {
        if (use.isMadeAtNeed)
            lines.append(
                {CheckLine::Remark, NameOf(use), u"없거나 읽을 수 없습니다"_s,
                 u"CREATE 권한이 있으면 스테이션이 만듭니다. 없으면 sql의 %1.sql을 실행하십시오"_s.arg(use.table)});
        else
            lines.append({CheckLine::Wrong, NameOf(use), u"없거나 읽을 수 없습니다"_s,
                          u"SELECT 권한을 주거나 sql의 %1.sql을 실행하십시오"_s.arg(use.rights.isEmpty() ? u"clinic"_s
                                                                                                         : use.table)});
        return;
    }
    CheckColumns(use, wanted, columns, lines);
    if (lines.size() == before && use.rights.contains(u"INSERT"_s)) {
        CheckRoom(use, wanted, columns, client.CaptureRoot, lines);
        CheckKeys(use, wanted, isServer, lines);
    }
    CheckRights(use, columns.first().name, lines);
    if (lines.size() == before)
        lines.append({CheckLine::Right, NameOf(use), u"칸 %1개"_s.arg(columns.size())});
}

} // namespace

CheckLines CheckTables(const ClientSetupRecord& client, bool isServer)
{
    CheckLines lines;
    try {
        for (const Use& use : UsesOf(client))
            CheckTable(use, client, isServer, lines);
    } catch (const PlatformError& error) {
        lines.append({CheckLine::Wrong, u"테이블"_s, error.Text(), u"데이터베이스 서버를 확인하십시오"_s});
    }
    return lines;
}
