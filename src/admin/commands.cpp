#include "admin/commands.h"

#include "admin/deleted_pictures.h"
#include "admin/original_pictures.h"
#include "admin/Report.h"
#include "contracts/PlatformError.h"
#include "contracts/setup_components.h"
#include "frame/components.h"
#include "frame/guard.h"
#include "frame/terminal.h"
#include "records/acts.h"
#include "records/Statement.h"
#include "session/VisitContext.h"
#include "text/date_routines.h"

#include <algorithm>

using namespace Qt::StringLiterals;

AdminSurroundings Surroundings;

namespace {

enum class Needs {
    Nothing,
    Setup,
    Database, ///< The setup as well.
};

/// What the command line says behind the command's name.
struct Call
{
    QStringList arguments; ///< Options not among them.
    QStringList options;   ///< Without that for a document.
    Report& report;
    TerminalOutput& out; ///< The report's, of commands that have no document.
};

/// Has the command give a document in the place of lines.
const QString Json = u"--json"_s;

struct Command
{
    QString name;
    QString arguments; ///< As the help shows them.
    QString help;
    Needs needs = Needs::Nothing;
    qsizetype fewest = 0; ///< Arguments, options not counted.
    qsizetype most = 0;
    QStringList options;
    bool namesVisit = false; ///< The arguments begin with a chart number and a date.
    int (*run)(const Call& call) = nullptr;
    Needs needsWithOption = Needs::Database;
    bool writesOwnJson = false; ///< Its option for JSON is its own business.
};

/// A chart number in its eight columns.
void FillChart(QStringList& arguments)
{
    if (!arguments.isEmpty())
        arguments[0] = arguments[0].rightJustified(8, u'0');
}

int Misused(const QString& text);

int NoDocument(const QString& command, const QString& option)
{
    return Misused(u"%1 %2의 출력에는 %3 형식이 없습니다."_s.arg(command, option, Json));
}

int RunPacs(const Call& call)
{
    const QString option = call.options.value(0);
    QStringList arguments = call.arguments;
    if (!option.isEmpty() && call.report.IsJson())
        return NoDocument(u"pacs"_s, option);
    const qsizetype most = option == u"--send"_s ? 3 : option == u"--compare"_s ? 1 : 0;
    if (call.options.size() > 1 || arguments.size() > most || (option == u"--send"_s && arguments.size() < most))
        return Misused(u"인수의 수가 맞지 않습니다: pacs %1"_s.arg(option));
    if (option == u"--retry"_s)
        return RetryPacs(call.out);
    if (option == u"--drop"_s)
        return DropPacs(call.out);
    if (option == u"--compare"_s)
        return ComparePacs(arguments.value(0), call.out);
    if (option.isEmpty())
        return ListPacs(call.report);
    FillChart(arguments);
    if (!DateFromText(arguments[1]).isValid())
        return Misused(u"날짜는 20261124처럼 적습니다: %1"_s.arg(arguments[1]));
    return SendVisitToPacs(arguments, call.out);
}

int RunPatient(const Call& call)
{
    if (call.options.contains(u"--list"_s) == call.options.contains(u"--remove"_s))
        return Misused(u"--list와 --remove 가운데 하나를 적습니다"_s);
    return HandlePatient(call.arguments[0], call.options, call.out);
}

const QList<Command>& Commands()
{
    static const QList<Command> commands{
        {u"check"_s,
         u"[--json]"_s,
         u"설정, 데이터베이스, 캡쳐 폴더, 장치를 살펴봅니다."_s,
         Needs::Nothing,
         0,
         0,
         {Json},
         false,
         [](const Call& call) { return CheckStation(call.report); }},
        {u"first-setup"_s,
         {},
         u"처음 설치한 컴퓨터에 그룹, 캡쳐 폴더, 테이블, 계정, 설정 파일을 물어 가며 만듭니다. root로 실행합니다."_s,
         Needs::Nothing,
         0,
         0,
         {},
         false,
         [](const Call& call) { return SetUpFirst(call.out); }},
        {u"upgrade-tables"_s,
         u"[--yes] [--utf8mb4] [--bytes=euckr|utf8|latin1] [--user=이름 [--password-file=파일]]"_s,
         u"스테이션의 테이블(ca, cap, ca_uid, ca_study, ca_sum, caso)의 짧은 칸, 문자 집합, 키를 글을 바꾸지 않고 "
         u"고치고, 없는 "
         u"ca_uid, ca_study, ca_log, ca_sum을 만듭니다. 할 일을 먼저 알리고 물어봅니다."_s,
         Needs::Nothing,
         0,
         0,
         {u"--yes"_s, u"--utf8mb4"_s, u"--bytes="_s, u"--user="_s, u"--password-file="_s},
         false,
         [](const Call& call) { return UpgradeTables(call.options, call.out); },
         Needs::Nothing},
        {u"history"_s,
         u"[차트번호] [--day=날짜 | --from=날짜 --to=날짜] [--user=리눅스사용자] [--kind=종류,…] [--csv | --json] "
         "[--db-user=이름 [--password-file=파일]]"_s,
         u"누가 언제 어느 환자의 그림, 참고사항, 소견서를 보고 바꾸었는지의 접근 기록을 보여 주고, 빠진 기록을 알립니다."_s,
         Needs::Nothing,
         0,
         1,
         {u"--day="_s, u"--from="_s, u"--to="_s, u"--user="_s, u"--kind="_s, u"--csv"_s, u"--json"_s, u"--db-user="_s,
          u"--password-file="_s},
         true,
         [](const Call& call) { return ShowHistory(call.arguments.value(0), call.options, call.out); },
         Needs::Nothing,
         true},
        {u"notes"_s,
         u"차트번호 [--db-user=이름 [--password-file=파일]]"_s,
         u"바뀌거나 지워진 참고사항과 소견서의 앞의 글을 접근 기록에서 보여 줍니다."_s,
         Needs::Nothing,
         1,
         1,
         {u"--db-user="_s, u"--password-file="_s},
         true,
         [](const Call& call) { return ShowEarlierTexts(call.arguments[0], call.options, call.out); },
         Needs::Nothing},
        {u"retire-log"_s,
         u"연도 [--yes] [--db-user=이름 [--password-file=파일]]"_s,
         u"끝난 지 꼬박 두 해가 지난 해의 접근 기록을 셉니다. --yes는 지웁니다."_s,
         Needs::Nothing,
         1,
         1,
         {u"--yes"_s, u"--db-user="_s, u"--password-file="_s},
         false,
         [](const Call& call) { return RetireLog(call.arguments[0], call.options, call.out); },
         Needs::Nothing},
        {u"retire-deleted"_s,
         u"연도 [--yes]"_s,
         u"끝난 지 꼬박 열 해가 지난 해의 Log 폴더에 있는 그림을 셉니다. --yes는 지웁니다."_s,
         Needs::Database,
         1,
         1,
         {u"--yes"_s},
         false,
         [](const Call& call) { return RetireDeleted(call.arguments[0], call.options, call.out); }},
        {u"patient"_s,
         u"차트번호 --list | --remove [--db-user=이름 [--password-file=파일]]"_s,
         u"한 환자의 파일과 스테이션의 기록을 모두 보여 줍니다. --remove는 차트번호를 두 번 물은 다음 지웁니다."_s,
         Needs::Setup,
         1,
         1,
         {u"--list"_s, u"--remove"_s, u"--db-user="_s, u"--password-file="_s},
         true,
         RunPatient,
         Needs::Setup},
        {u"list-deleted"_s,
         u"[차트번호 [날짜]] [--json]"_s,
         u"삭제되거나 정리되어 Log 폴더에 있는 그림을 보여 줍니다."_s,
         Needs::Setup,
         0,
         2,
         {Json},
         true,
         [](const Call& call) { return ListDeleted(call.arguments, call.report); }},
        {u"restore"_s,
         u"차트번호 날짜 검사 번호 [파일]"_s,
         u"삭제된 그림을 되살립니다. 그 번호가 쓰이고 있으면 다음 번호로 되살립니다."_s,
         Needs::Database,
         4,
         5,
         {},
         true,
         [](const Call& call) { return RestorePicture(call.arguments, call.out); }},
        {u"originals"_s,
         u"차트번호 [날짜] [--json]"_s,
         u"표시하기 전의 모습으로 보관된 그림을 보여 줍니다."_s,
         Needs::Database,
         1,
         2,
         {Json},
         true,
         [](const Call& call) { return ListOriginals(call.arguments, call.report); }},
        {u"restore-original"_s,
         u"차트번호 날짜 검사 번호"_s,
         u"그림을 표시하기 전의 모습으로 되돌립니다. 표시한 그림은 Log 폴더로 갑니다."_s,
         Needs::Database,
         4,
         4,
         {},
         true,
         [](const Call& call) { return RestoreOriginal(call.arguments, call.out); }},
        {u"verify"_s,
         u"[연도 | --this-year] [--decode] [--all] [--learn] [--json]"_s,
         u"캡쳐 폴더를 데이터베이스와, 그림을 저장할 때의 합과 견주어 봅니다. 아무것도 바꾸지 않습니다. --decode는 "
         "그림을 모두 풀어 보고, --all은 같은 이상이 많아도 모두 알립니다. --learn은 합이 없는 그림의 합을 지금 있는 "
         "파일에서 받아들입니다."_s,
         Needs::Database,
         0,
         1,
         {u"--this-year"_s, u"--decode"_s, u"--all"_s, u"--learn"_s, Json},
         false,
         [](const Call& call) { return VerifyArchive(call.arguments.value(0), call.options, call.report); }},
        {u"pending"_s,
         u"[--write | --take-over | --json]"_s,
         u"이 컴퓨터에서 기다리는 그림을 보여 줍니다. --write는 끝난 스테이션이 남긴 것을 저장하고 기록합니다. "
         "--take-over는 다른 사용자의 것까지 이어받습니다."_s,
         Needs::Nothing,
         0,
         0,
         {u"--write"_s, u"--take-over"_s, Json},
         false,
         [](const Call& call) {
             if (call.options.isEmpty())
                 return ListPending(call.report);
             if (call.report.IsJson())
                 return NoDocument(u"pending"_s, call.options.first());
             return call.options.contains(u"--take-over"_s) ? TakeOverPending(call.out) : WritePending(call.out);
         }},
        {u"root"_s,
         u"[--store]"_s,
         u"캡쳐 폴더의 표시를 보여 줍니다. --store는 데이터베이스가 그 표시를 기억하게 하여, 모든 스테이션이 다른 "
         u"폴더를 "
         "거절합니다."_s,
         Needs::Database,
         0,
         0,
         {u"--store"_s},
         false,
         [](const Call& call) { return call.options.isEmpty() ? ShowRoot(call.out) : StoreRoot(call.out); }},
        {u"pacs"_s,
         u"[--json | --retry | --drop | --send 차트번호 날짜 검사 | --compare [연도]]"_s,
         u"PACS로 아직 보내지 못했거나 거부된 그림을 보여 줍니다. --retry는 거부된 것까지 곧바로 다시 보내고, --drop은 "
         "거부된 것을 목록에서 지웁니다. --send는 한 방문의 그림을 보내고, --compare는 PACS에 없는 그림을 찾습니다."_s,
         Needs::Nothing,
         0,
         3,
         {u"--retry"_s, u"--drop"_s, u"--send"_s, u"--compare"_s, Json},
         false,
         RunPacs},
    };
    return commands;
}

QString HelpText()
{
    QString text = u"사용법: capture-station-admin 명령 [인수]\n\n"_s;
    for (const Command& command : Commands())
        text += u"  %1\n      %2\n"_s.arg((command.name + u' ' + command.arguments).trimmed(), command.help);
    text +=
        u"  --help, --version\n\n"
        "--json은 찾은 것을 프로그램이 읽을 수 있는 JSON 문서 하나로 적습니다.\n"
        "끝날 때의 값: 0 이상 없음, 1 이상이 있거나 거절함, 2 잘못된 사용, 3 설정이나 데이터베이스, 캡쳐 폴더를 쓸 수 "
        "없음"_s;
    return text;
}

void Tell(const QString& text)
{
    TellOnError(u"capture-station-admin: "_s + text);
}

int Misused(const QString& text)
{
    Tell(text);
    TerminalOutput(stderr).PutLines(HelpText());
    return UsedWrongly;
}

/// As the station's start does it; the setup component has told why it can't be.
bool ReadSetup(bool openConnection)
{
    const auto profile = CreateObject<clsStartProfile>(u"prjStartProfile.clsStartProfile"_s);
    if (!profile->SetupRead(ClientSetup, SaupTable, openConnection, Connection))
        return false;
    VisitContext.ImageExt = ImageExtOfSetup();
    return true;
}

/// An option that ends with an equals sign has a value behind it.
bool Allows(const Command& command, const QString& option)
{
    return std::ranges::any_of(command.options, [&option](const QString& each) {
        return each == option ? !each.endsWith(u'=') : each.endsWith(u'=') && option.startsWith(each);
    });
}

int Run(const Command& command, const QStringList& arguments, Report& report)
{
    QStringList values = arguments;
    QStringList options;
    for (const QString& argument : arguments) {
        if (!argument.startsWith(u"--"_s))
            continue;
        if (!Allows(command, argument))
            return Misused(u"모르는 인수입니다: %1"_s.arg(argument));
        if (argument != Json || command.writesOwnJson)
            options << argument;
        values.removeOne(argument);
    }
    if (values.size() < command.fewest || values.size() > command.most)
        return Misused(u"인수의 수가 맞지 않습니다: %1 %2"_s.arg(command.name, command.arguments).trimmed());
    if (command.namesVisit) {
        FillChart(values);
        if (values.size() > 1 && !DateFromText(values[1]).isValid())
            return Misused(u"날짜는 20261124처럼 적습니다: %1"_s.arg(values[1]));
    }
    const Needs needs = options.isEmpty() ? command.needs : command.needsWithOption;
    if (needs != Needs::Nothing && !ReadSetup(needs == Needs::Database)) {
        report.Fail(u"설정이나 데이터베이스, 캡쳐 폴더를 쓸 수 없습니다.!!"_s);
        return CantWork;
    }
    const int exitCode = command.run({values, options, report, report.Lines()});
    acts::Act act{acts::Kind::Administered};
    act.detail = (QStringList{command.name} + arguments).join(u' ');
    act.chart = command.namesVisit ? values.value(0) : QString();
    act.isRefused = exitCode == UsedWrongly || exitCode == CantWork;
    acts::Record(act);
    return exitCode;
}

} // namespace

int RunCommand(const QStringList& arguments, TerminalOutput& out)
{
    if (arguments == QStringList{u"--help"_s}) {
        out.PutLines(HelpText());
        return AllWell;
    }
    if (arguments == QStringList{u"--version"_s}) {
        out << u"capture-station-admin "_s << Surroundings.version << u'\n';
        return AllWell;
    }
    const QString name = arguments.value(0);
    const auto command = std::ranges::find(Commands(), name, &Command::name);
    if (command == Commands().end())
        return Misused(name.isEmpty() ? u"명령이 없습니다."_s : u"모르는 명령입니다: %1"_s.arg(name));
    const bool isDocument = arguments.contains(Json) && !command->writesOwnJson;
    Report report(out, isDocument ? Report::Form::Json : Report::Form::Text, command->name);
    int result = CantWork;
    try {
        result = Run(*command, arguments.mid(1), report);
    } catch (...) {
        out.Flush();
        const QString text = guard::TextOf(std::current_exception());
        Tell(text);
        report.Fail(text);
    }
    report.End(result);
    return result;
}
