#include "admin/commands.h"
#include "admin/TableUpgrade.h"
#include "contracts/OutsideChecks.h"
#include "contracts/PlatformError.h"
#include "frame/components.h"
#include "frame/terminal.h"
#include "records/Statement.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

/// A server that isn't strict would cut a text or put "?" in its place, and say nothing. With the statement itself,
/// which a connection that was lost repeats.
const QString Strict =
    u" SET STATEMENT sql_mode = 'NO_BACKSLASH_ESCAPES,NO_ENGINE_SUBSTITUTION,STRICT_ALL_TABLES' FOR "_s;

/// Value of an option such as `--user=`; empty without it.
QString ValueOf(const QStringList& options, const QString& name)
{
    for (const QString& option : options) {
        if (option.startsWith(name))
            return option.sliced(name.size());
    }
    return {};
}

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

} // namespace

int UpgradeTables(const QStringList& options, TerminalOutput& out)
{
    const std::optional<QString> bytes = SetNamed(ValueOf(options, u"--bytes="_s));
    if (!bytes) {
        out << u"--bytes=는 euckr, utf8, latin1 가운데 하나입니다\n"_s;
        return UsedWrongly;
    }
    auto& outside = UseService<OutsideChecks>();
    const OutsideChecks::Setup setup = outside.LookAtSetup();
    if (!setup.isGood)
        throw PlatformError(u"설정을 읽을 수 없습니다. check를 실행하십시오.!!"_s);
    if (!setup.isServer) {
        out << u"데이터베이스가 파일(QSQLITE)이면 고칠 것이 없습니다\n"_s;
        return AllWell;
    }
    const QString user = ValueOf(options, u"--user="_s);
    const QString passwordFile = ValueOf(options, u"--password-file="_s);
    const QString password = user.isEmpty() || !passwordFile.isEmpty()
                                 ? QString()
                                 : Surroundings.askSecret(u"%1의 데이터베이스 암호:"_s.arg(user));
    Connection = outside.OpenForUpkeep(user, password, passwordFile);
    if (!FieldText(*OpenRows(Statement(u" SELECT VERSION() ")), 0).contains(u"MariaDB"_s))
        throw PlatformError(
            u"MariaDB 서버에서만 쓸 수 있습니다.!! /usr/share/capture-station/sql/mariadb/steps의 단계를 보십시오."_s);

    const UpgradeWishes wishes{options.contains(u"--utf8mb4"_s), *bytes, setup.client.CaptureRoot};
    QList<TableUpgrade> upgrades;
    for (const QString& table : {u"ca"_s, u"cap"_s, u"caso"_s}) {
        upgrades.append(TableUpgrade::Plan(table, wishes));
        Tell(upgrades.last(), out);
    }
    const bool isRefused =
        std::ranges::any_of(upgrades, [](const TableUpgrade& each) { return !each.Refusals().isEmpty(); });
    if (std::ranges::all_of(upgrades, [](const TableUpgrade& each) { return each.Statements().isEmpty(); })) {
        out << (isRefused ? u"아무것도 바꾸지 않았습니다\n"_s : u"고칠 것이 없습니다\n"_s);
        return isRefused ? Found : AllWell;
    }
    out.PutLines(
        u"먼저 백업하십시오: mariadb-dump --single-transaction --default-character-set=utf8mb4 %1 ca cap caso > "
        "station.sql\n"
        "고치는 동안 그 테이블은 잠깁니다(100MB에 몇 초에서 몇 분). 스테이션의 기록은 그동안 기다립니다. "
        "테이블만큼의 "
        "디스크가 더 있어야 합니다. 진료가 끝난 뒤에 하십시오\n"_s.arg(TerminalText(Connection->DefaultDatabase())));
    out.Flush();
    const std::optional<bool> answer =
        options.contains(u"--yes"_s) ? std::optional(true) : Surroundings.ask(u"백업하였습니까? 지금 고칠까요?"_s);
    if (!answer.value_or(false)) {
        out << u"아무것도 바꾸지 않았습니다"_s << (answer ? QString() : u". 고치려면 --yes를 붙이십시오"_s) << u'\n';
        return Found;
    }
    return CarryAll(upgrades, wishes, out) && !isRefused ? AllWell : Found;
}
