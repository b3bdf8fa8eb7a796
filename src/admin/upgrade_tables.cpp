#include "admin/commands.h"
#include "admin/table_columns.h"
#include "admin/TableDefinition.h"
#include "admin/TableUpgrade.h"
#include "admin/upkeep_connection.h"
#include "contracts/OutsideChecks.h"
#include "contracts/PlatformError.h"
#include "contracts/setup_components.h"
#include "frame/components.h"
#include "frame/terminal.h"
#include "records/Statement.h"
#include "records/study_identity.h"
#include "visit/Visit.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

/// A server that isn't strict would cut a text or put "?" in its place, and say nothing. With the statement itself,
/// which a connection that was lost repeats.
const QString Strict =
    u" SET STATEMENT sql_mode = 'NO_BACKSLASH_ESCAPES,NO_ENGINE_SUBSTITUTION,STRICT_ALL_TABLES' FOR "_s;

/// As the server calls it; nothing for one that this doesn't know.
std::optional<QString> SetNamed(const QString& name)
{
    if (name.isEmpty() || name == u"euckr" || name == u"latin1")
        return name;
    return name == u"utf8" ? std::optional(u"utf8mb4"_s) : std::nullopt;
}

QString SizeOf(const QString& table)
{
    const auto rows = OpenRows(Statement(u" SELECT engine, table_rows, "
                                         "ROUND((data_length + index_length) / 1000000) FROM information_schema.tables "
                                         "WHERE table_schema = DATABASE() ")
                                   .Quoted(u" AND table_name = '", table));
    return u"%1, 약 %2줄, %3MB"_s.arg(FieldText(*rows, 0), FieldText(*rows, 1), FieldText(*rows, 2));
}

void Tell(const TableUpgrade& upgrade, TerminalOutput& out)
{
    for (const QString& refusal : upgrade.Refusals())
        out << u"[거절] 테이블 %1: %2\n"_s.arg(upgrade.Table(), refusal);
    if (upgrade.Statements().isEmpty())
        return;
    out << u"테이블 %1 (%2)\n"_s.arg(upgrade.Table(), SizeOf(upgrade.Table()));
    for (const QString& statement : upgrade.Statements())
        out << u"    "_s << statement << u'\n';
}

/// Nobody else writes into the table while one lives.
class TableLock
{
public:
    explicit TableLock(const QString& table) { Execute(Statement(u" LOCK TABLES %1 WRITE "_s.arg(table))); }
    ~TableLock()
    {
        try {
            Execute(Statement(u" UNLOCK TABLES "));
        } catch (const PlatformError&) {
            // It goes with the session.
        }
    }
    TableLock(const TableLock&) = delete;
    TableLock& operator=(const TableLock&) = delete;
};

/// Throws PlatformError; each of the statements does all of its work, or nothing.
bool Carry(const TableUpgrade& told, const UpgradeWishes& wishes, TerminalOutput& out)
{
    const TableLock lock(told.Table());
    // What has been written since the question counts as well.
    const TableUpgrade upgrade = TableUpgrade::Plan(told.Table(), wishes);
    if (upgrade.Statements() != told.Statements()) {
        out << u"[거절] 테이블 %1: 그사이 바뀌어 고치지 않았습니다. 다시 실행하십시오\n"_s.arg(told.Table());
        return false;
    }
    const QString before = upgrade.Checksum(false);
    for (const QString& statement : upgrade.Statements())
        Execute(Statement(Strict).Piece(statement));
    const bool isSame = upgrade.Checksum(true) == before;
    if (isSame)
        out << u"고쳤습니다: 테이블 %1. %2줄의 글이 모두 그대로입니다\n"_s.arg(told.Table(),
                                                                               before.section(u' ', 0, 0));
    else
        out << u"[이상] 테이블 %1: 고친 다음의 글이 앞과 다릅니다. 스테이션을 쓰지 말고 백업에서 되돌리십시오.!!\n"_s
                   .arg(told.Table());
    out.Flush();
    return isSame;
}

bool CarryAll(const QList<TableUpgrade>& upgrades, const UpgradeWishes& wishes, TerminalOutput& out)
{
    bool isDone = true;
    for (const TableUpgrade& upgrade : upgrades) {
        if (upgrade.Statements().isEmpty())
            continue;
        try {
            isDone = Carry(upgrade, wishes, out) && isDone;
        } catch (const PlatformError& error) {
            isDone = false;
            out << u"[이상] 테이블 %1을(를) 고치지 못하였습니다. 글은 그대로입니다: %2\n"_s.arg(
                upgrade.Table(), error.Text().simplified());
            out << u"    까닭을 고치고 같은 인수로 다시 실행하면 이어서 합니다. ALTER와 LOCK TABLES 권한이 있는 계정은 "
                   u"--user=로 "
                   "적습니다\n"_s;
        }
    }
    return isDone;
}

/// A table that earlier releases didn't have.
struct LaterTable
{
    QString name;
    QStringList rights; ///< Of the station's account.
    QString purpose;
};

const QList<LaterTable>& LaterTables()
{
    static const QList<LaterTable> tables{
        {u"ca_uid"_s, {u"SELECT"_s, u"INSERT"_s}, u"방문이 PACS와 CD에서 어떤 식별자로 알려졌는지 기억합니다"_s},
        {u"ca_study"_s,
         {u"SELECT"_s, u"INSERT"_s, u"UPDATE"_s},
         u"PACS로 나간 검사의 종류와 시각, 병원의 처방을 기억합니다"_s},
        {u"ca_log"_s, {u"INSERT"_s}, u"누가 언제 어느 환자의 그림을 보고 바꾸고 지웠는지 남깁니다"_s},
        {u"ca_sum"_s, {u"SELECT"_s, u"INSERT"_s, u"UPDATE"_s}, u"그림 파일의 합을 기억합니다"_s},
    };
    return tables;
}

/// What the station's account lacks of the table, as its own statements find out; empty when it lacks nothing. The
/// table has to be there.
QString RefusedToStation(const LaterTable& table, AdoConnection& station)
{
    QStringList columns;
    for (const TableDefinition::Column& column : TableDefinition::Of(table.name).columns)
        columns << column.name;
    try {
        station.Execute(InsertProbe(table.name, columns));
        if (table.rights.contains(u"SELECT"_s))
            station.Execute(u" SELECT 1 FROM %1 WHERE 1 = 0 "_s.arg(table.name));
        if (table.rights.contains(u"UPDATE"_s))
            station.Execute(u" UPDATE %1 SET %2 = %2 WHERE 1 = 0 "_s.arg(table.name, columns.first()));
        return {};
    } catch (const PlatformError& error) {
        return error.Text().simplified();
    }
}

/// Makes the table, and opens it to the account that the setup names. What the server refuses is told.
bool MakeTable(const LaterTable& table, AdoConnection* station, bool isServer, TerminalOutput& out)
{
    try {
        if (ColumnsOf(table.name, isServer).isEmpty()) {
            CreateObject<clsTableKeeper>(u"prjTableKeeper.clsTableKeeper"_s)->tablecreate(Connection, table.name, {});
            out << u"테이블 %1을(를) 만들었습니다\n"_s.arg(table.name);
        }
        if (station == nullptr || RefusedToStation(table, *station).isEmpty())
            return true;
        const QString account = station->Execute(u" SELECT CURRENT_USER() "_s)->Fields(0).toString();
        Execute(Statement(u" GRANT %1 ON %2 TO '"_s.arg(table.rights.join(u", "_s), table.name))
                    .Value(account.section(u'@', 0, -2))
                    .Then(u"'@'", account.section(u'@', -1))
                    .Piece(u"' "));
        const QString refused = RefusedToStation(table, *station);
        out << (refused.isEmpty() ? u"%1에 테이블 %2의 권한을 주었습니다\n"_s.arg(account, table.name)
                                  : u"[이상] 테이블 %1을(를) 쓸 수 없습니다: %2\n"_s.arg(table.name, refused));
        return refused.isEmpty();
    } catch (const PlatformError& error) {
        out << u"[이상] 테이블 %1을(를) 만들거나 권한을 주지 못하였습니다: %2\n"_s.arg(table.name,
                                                                                       error.Text().simplified())
            << u"    CREATE와 GRANT 권한이 있는 계정은 --user=로 적습니다\n"_s;
        return false;
    }
}

/// Those that aren't there for the station.
QList<LaterTable> MissingTables(const OutsideChecks::Setup& setup)
{
    QList<LaterTable> missing = LaterTables();
    missing.removeIf([&setup](const LaterTable& table) {
        return !ColumnsOf(table.name, setup.isServer).isEmpty() &&
               (setup.connection == nullptr || RefusedToStation(table, *setup.connection).isEmpty());
    });
    return missing;
}

void TellIdentity(const OutsideChecks::Setup& setup, TerminalOutput& out)
{
    if (!setup.client.Pacs.Host.isEmpty() && !NewIdentity({}, setup.client.Pacs, setup.places))
        out << u"[Pacs] Institution이나 UidRoot를 적으십시오. 적을 때까지 그림은 보내지 않고 기다립니다\n"_s;
}

/// Nothing of a file's tables has a length or a set.
QList<TableUpgrade> PlanAll(const OutsideChecks::Setup& setup, const UpgradeWishes& wishes, TerminalOutput& out)
{
    QList<TableUpgrade> upgrades;
    if (!setup.isServer)
        return upgrades;
    if (!FieldText(*OpenRows(Statement(u" SELECT VERSION() ")), 0).contains(u"MariaDB"_s))
        throw PlatformError(
            u"MariaDB 서버에서만 쓸 수 있습니다.!! /usr/share/capture-station/sql/mariadb의 ca_uid.sql, ca_log.sql, "
            "ca_sum.sql과 steps의 단계를 보십시오."_s);
    for (const QString& table : {u"ca"_s, u"cap"_s, u"ca_uid"_s, u"ca_study"_s, u"ca_sum"_s, u"caso"_s}) {
        upgrades.append(TableUpgrade::Plan(table, wishes));
        Tell(upgrades.last(), out);
    }
    return upgrades;
}

void TellPrecautions(TerminalOutput& out)
{
    out.PutLines(
        u"먼저 백업하십시오: mariadb-dump --single-transaction --default-character-set=utf8mb4 %1 ca cap caso > "
        "station.sql\n"
        "고치는 동안 그 테이블은 잠깁니다(100MB에 몇 초에서 몇 분). 스테이션의 기록은 그동안 기다립니다. "
        "테이블만큼의 "
        "디스크가 더 있어야 합니다. 진료가 끝난 뒤에 하십시오\n"_s.arg(TerminalText(Connection->DefaultDatabase())));
}

} // namespace

int UpgradeTables(const QStringList& options, TerminalOutput& out)
{
    const std::optional<QString> bytes = SetNamed(OptionValue(options, u"--bytes="_s));
    if (!bytes) {
        out << u"--bytes=는 euckr, utf8, latin1 가운데 하나입니다\n"_s;
        return UsedWrongly;
    }
    const OutsideChecks::Setup setup = UseService<OutsideChecks>().LookAtSetup();
    if (!setup.isGood)
        throw PlatformError(u"설정을 읽을 수 없습니다. check를 실행하십시오.!!"_s);
    TellIdentity(setup, out);
    Connection = OpenForUpkeep(setup, options, u"--user="_s);
    const UpgradeWishes wishes{options.contains(u"--utf8mb4"_s), *bytes, setup.client.CaptureRoot};
    const QList<TableUpgrade> upgrades = PlanAll(setup, wishes, out);
    const QList<LaterTable> missing = MissingTables(setup);
    for (const LaterTable& table : missing)
        out << u"테이블 %1을(를) "_s.arg(table.name)
            << (setup.isServer
                    ? u"만들고, 스테이션의 계정이 쓸 수 없으면 %1 권한을 줍니다"_s.arg(table.rights.join(u", "_s))
                    : u"만듭니다"_s)
            << u". %1\n"_s.arg(table.purpose);
    const bool isRefused =
        std::ranges::any_of(upgrades, [](const TableUpgrade& each) { return !each.Refusals().isEmpty(); });
    const bool alters =
        std::ranges::any_of(upgrades, [](const TableUpgrade& each) { return !each.Statements().isEmpty(); });
    if (!alters && missing.isEmpty()) {
        out << (isRefused ? u"아무것도 바꾸지 않았습니다\n"_s : u"고칠 것이 없습니다\n"_s);
        return isRefused ? Found : AllWell;
    }
    if (alters)
        TellPrecautions(out);
    out.Flush();
    const std::optional<bool> answer =
        options.contains(u"--yes"_s)
            ? std::optional(true)
            : Surroundings.ask(alters ? u"백업하였습니까? 지금 고칠까요?"_s : u"지금 만들까요?"_s);
    if (!answer.value_or(false)) {
        out << u"아무것도 바꾸지 않았습니다"_s << (answer ? QString() : u". 고치려면 --yes를 붙이십시오"_s) << u'\n';
        return Found;
    }
    bool isMade = true;
    for (const LaterTable& table : missing)
        isMade = MakeTable(table, setup.connection.get(), setup.isServer, out) && isMade;
    return CarryAll(upgrades, wishes, out) && isMade && !isRefused ? AllWell : Found;
}
