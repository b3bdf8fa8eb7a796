#include "admin/check_tables.h"

#include "admin/table_columns.h"
#include "admin/TableDefinition.h"
#include "contracts/PlatformError.h"
#include "records/capture_index.h"
#include "records/Statement.h"

using namespace Qt::StringLiterals;

namespace {

/// What the station does with a table; an empty list only reads it.
struct Use
{
    QString table;
    QStringList rights;
    bool isMadeAtNeed = false;  ///< By the station itself.
    QString without = {};       ///< The station goes on without the table: what it lacks then.
    QStringList forbidden = {}; ///< What a server's account isn't to be able to do.
};

QList<Use> UsesOf(const ClientSetupRecord& client)
{
    const QStringList all{u"INSERT"_s, u"UPDATE"_s, u"DELETE"_s};
    const bool marksInYk = client.CheckTable.startsWith(u'1');
    QList<Use> uses{{u"ca"_s, all}, {u"cap"_s, all}, {u"caso"_s, all, true}};
    if (!marksInYk)
        uses.append({u"endo"_s, {u"UPDATE"_s}, true});
    uses.append({u"ca_uid"_s, {u"INSERT"_s}, false, u"PACS와 CD로 나간 방문의 식별자를 기억하지 못합니다"_s});
    uses.append(
        {u"ca_study"_s, {u"INSERT"_s, u"UPDATE"_s}, false, u"PACS로 나간 검사의 종류와 처방을 기억하지 못합니다"_s});
    uses.append({u"ca_log"_s,
                 {u"INSERT"_s},
                 false,
                 u"누가 무엇을 보고 바꾸었는지 남기지 못합니다"_s,
                 {u"UPDATE"_s, u"DELETE"_s}});
    uses.append({u"ca_sum"_s, {u"INSERT"_s, u"UPDATE"_s}, false, u"그림 파일이 그대로인지 알지 못합니다"_s});
    for (const QString& table : {u"wj"_s, u"bh"_s, u"jh"_s, u"pt"_s, u"doctor"_s, u"so"_s})
        uses.append({table, {}});
    uses.append({u"yk"_s, marksInYk ? QStringList{u"UPDATE"_s} : QStringList()});
    return uses;
}

/// Of the package.
const QString SqlFolder = u"/usr/share/capture-station/sql/mariadb"_s;
const QString Upgrade = u"capture-station-admin upgrade-tables를 실행하십시오"_s;

QString NameOf(const Use& use)
{
    return u"테이블 %1"_s.arg(use.table);
}

void CheckColumns(const Use& use, const TableDefinition& wanted, const QList<TableColumn>& columns, CheckLines& lines)
{
    // The station writes whole rows of its own tables by position; of the clinic's it reads columns by their names.
    const bool isOwn = use.rights.contains(u"INSERT"_s);
    QStringList names;
    for (const TableColumn& column : columns)
        names.append(column.name);
    QStringList wantedNames;
    for (const TableDefinition::Column& column : wanted.columns)
        wantedNames.append(column.name);
    if (isOwn && names != wantedNames) {
        lines.append({CheckLine::Wrong, NameOf(use),
                      u"칸의 수나 순서가 다릅니다: %1"_s.arg(names.join(u", "_s).left(300)),
                      u"%1의 %2.sql과 같게 고치십시오. 칸을 더하거나 옮기면 안 됩니다"_s.arg(SqlFolder, use.table)});
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

/// Names of columns, with what is said of each, as one line.
void Tell(const Use& use, CheckLine::Verdict verdict, const QString& found, const QStringList& columns,
          const QString& toDo, CheckLines& lines)
{
    if (!columns.isEmpty())
        lines.append({verdict, NameOf(use), u"%1: %2"_s.arg(found, columns.join(u", "_s)), toDo});
}

/// Only the station's own tables: what is written there must fit.
void CheckRoom(const Use& use, const TableDefinition& wanted, const QList<TableColumn>& columns,
               const QString& captureRoot, CheckLines& lines)
{
    QStringList tooShort;
    QStringList latin;
    QStringList bytes;
    QStringList noText;
    QStringList numbers;
    QStringList other;
    for (qsizetype at = 0; at < columns.size() && at < wanted.columns.size(); ++at) {
        const TableColumn& column = columns.at(at);
        const qint64 needed = TableDefinition::LengthOf(wanted.columns.at(at), captureRoot);
        if (needed == 0) {
            if (!column.IsWholeNumber())
                numbers << u"%1(%2)"_s.arg(column.name, column.fullType);
            continue;
        }
        if (column.characters.isEmpty()) {
            (column.IsBinary() ? bytes : noText) << u"%1(%2)"_s.arg(column.name, column.fullType);
            continue;
        }
        if (column.length < needed)
            tooShort << u"%1(%2자, 필요 %3자)"_s.arg(column.name).arg(column.length).arg(needed);
        if (!column.HoldsKorean())
            latin << column.name;
        else if (column.characters != u"utf8mb4")
            other << u"%1(%2)"_s.arg(column.name, column.characters);
    }
    Tell(use, CheckLine::Wrong, u"짧은 칸에서 글이 잘립니다"_s, tooShort, Upgrade, lines);
    Tell(use, CheckLine::Wrong, u"한글이 ?로 저장됩니다"_s, latin, Upgrade, lines);
    Tell(use, CheckLine::Wrong, u"글이 문자 집합 없이 저장됩니다"_s, bytes, Upgrade, lines);
    Tell(use, CheckLine::Wrong, u"글을 그대로 담지 못하는 칸입니다"_s, noText,
         u"백업한 다음 %1의 %2.sql과 같게 고치십시오"_s.arg(SqlFolder, use.table), lines);
    Tell(use, CheckLine::Wrong, u"번호가 잘리거나 차례가 틀리는 칸입니다"_s, numbers, Upgrade, lines);
    Tell(use, CheckLine::Remark, u"문자 집합에 없는 글자는 ?로 저장됩니다"_s, other,
         u"capture-station-admin upgrade-tables --utf8mb4를 실행하십시오"_s, lines);
}

void CheckKeys(const Use& use, const TableDefinition& wanted, bool isServer, CheckLines& lines)
{
    const KeyFaults faults = FaultsOf(KeysOf(use.table, isServer), wanted.keys);
    QStringList missing = faults.missing;
    if (faults.lacksOwn)
        missing.prepend(wanted.keys.first());
    Tell(use, CheckLine::Wrong, u"키가 없습니다"_s, missing,
         isServer ? Upgrade
         : use.table == u"caso" && !faults.lacksOwn
             ? u"/usr/share/capture-station/sql/sqlite/steps/001_caso_list_keys.sql을 실행하십시오"_s
             : u"/usr/share/capture-station/sql/sqlite의 %1.sql과 같은 기본 키를 두십시오"_s.arg(use.table),
         lines);
    Tell(use, CheckLine::Wrong, u"저장할 때 다른 줄을 지우는 키가 있습니다"_s, faults.tooNarrow,
         u"ALTER TABLE %1 DROP KEY로 지우십시오"_s.arg(use.table), lines);
}

/// Statements that touch no row: the server refuses them all the same to whom may not.
void CheckRights(const Use& use, const QStringList& columns, CheckLines& lines)
{
    const std::map<QString, QString> statements{
        {u"INSERT"_s, InsertProbe(use.table, columns)},
        {u"UPDATE"_s, u" UPDATE %1 SET %2 = %2 WHERE 1 = 0 "_s.arg(use.table, columns.first())},
        {u"DELETE"_s, u" DELETE FROM %1 WHERE 1 = 0 "_s.arg(use.table)},
    };
    QStringList refused;
    QString reason;
    for (const QString& right : use.rights) {
        try {
            Execute(Statement(statements.at(right)));
        } catch (const DatabaseAway&) {
            throw;
        } catch (const PlatformError& error) {
            refused << right;
            reason = error.Text();
        }
    }
    if (!refused.isEmpty())
        lines.append({use.without.isEmpty() ? CheckLine::Wrong : CheckLine::Remark, NameOf(use),
                      u"권한이 없습니다: %1 (%2)"_s.arg(refused.join(u", "_s), reason),
                      use.without.isEmpty() ? u"%1의 grants.sql에 있는 권한을 주십시오"_s.arg(SqlFolder) : Upgrade});
}

/// Whoever writes the record of access isn't to be able to change it. Nothing is read, which the account may not
/// either.
void CheckForbidden(const Use& use, const QString& lastColumn, CheckLines& lines)
{
    QStringList allowed;
    for (const QString& right : use.forbidden) {
        try {
            Execute(Statement(right == u"UPDATE" ? u" UPDATE %1 SET %2 = NULL WHERE 1 = 0 "_s.arg(use.table, lastColumn)
                                                 : u" DELETE FROM %1 WHERE 1 = 0 "_s.arg(use.table)));
            allowed << right;
        } catch (const DatabaseAway&) {
            throw;
        } catch (const PlatformError&) {
            // As it is to be.
        }
    }
    if (!allowed.isEmpty())
        lines.append({CheckLine::Wrong, NameOf(use),
                      u"스테이션의 계정이 접근 기록을 바꾸거나 지울 수 있습니다: %1"_s.arg(allowed.join(u", "_s)),
                      u"그 권한을 REVOKE로 거두고 %1의 grants.sql에 있는 것만 주십시오"_s.arg(SqlFolder)});
}

void CheckTable(const Use& use, const ClientSetupRecord& client, bool isServer, CheckLines& lines)
{
    const qsizetype before = lines.size();
    const TableDefinition wanted = TableDefinition::Of(use.table);
    const QList<TableColumn> columns = ColumnsOf(use.table, isServer);
    if (columns.isEmpty()) {
        if (!use.without.isEmpty()) {
            lines.append({CheckLine::Remark, NameOf(use), u"없거나 읽을 수 없어, %1"_s.arg(use.without), Upgrade});
        } else if (use.isMadeAtNeed)
            lines.append({CheckLine::Remark, NameOf(use), u"없거나 읽을 수 없습니다"_s,
                          u"CREATE 권한이 있으면 스테이션이 만듭니다. 없으면 %1의 %2.sql을 실행하십시오"_s.arg(
                              SqlFolder, use.table)});
        else
            lines.append(
                {CheckLine::Wrong, NameOf(use), u"없거나 읽을 수 없습니다"_s,
                 use.rights.contains(u"INSERT"_s)
                     ? u"SELECT 권한을 주거나 %1의 %2.sql을 실행하십시오"_s.arg(SqlFolder, use.table)
                     : u"진료 프로그램의 테이블입니다. 그 프로그램의 데이터베이스인지 보고 SELECT 권한을 주십시오"_s});
        return;
    }
    CheckColumns(use, wanted, columns, lines);
    // Into the record of access nothing is written but by the columns' names, and no release had another one.
    if (lines.size() == before && use.rights.contains(u"INSERT"_s) && use.forbidden.isEmpty()) {
        if (isServer)
            CheckRoom(use, wanted, columns, client.CaptureRoot, lines);
        CheckKeys(use, wanted, isServer, lines);
    }
    QStringList names;
    for (const TableColumn& column : columns)
        names.append(column.name);
    CheckRights(use, names, lines);
    if (isServer)
        CheckForbidden(use, names.last(), lines);
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
