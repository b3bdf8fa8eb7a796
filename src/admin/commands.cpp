#include "admin/commands.h"

#include "admin/check.h"
#include "admin/exit_codes.h"
#include "contracts/PlatformError.h"
#include "contracts/setup_components.h"
#include "frame/components.h"
#include "frame/guard.h"
#include "visit/VisitContext.h"

#include <QTextStream>

#include <algorithm>
#include <cstdio>

using namespace Qt::StringLiterals;

AdminSurroundings Surroundings;

namespace {

enum class Needs {
    Nothing,
    Setup,
    Database, ///< The setup as well.
};

struct Command
{
    QString name;
    QString arguments; ///< As the help shows them.
    QString help;
    Needs needs = Needs::Nothing;
    qsizetype fewest = 0; ///< Arguments, options not counted.
    qsizetype most = 0;
    QStringList options;
    int (*run)(const QStringList& arguments, const QStringList& options, QTextStream& out) = nullptr;
};

const QList<Command>& Commands()
{
    static const QList<Command> commands{
        {u"check"_s,
         {},
         u"설정, 데이터베이스, 캡쳐 폴더, 장치를 살펴봅니다."_s,
         Needs::Nothing,
         0,
         0,
         {},
         [](const QStringList&, const QStringList&, QTextStream& out) { return CheckStation(out); }},
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
        "끝날 때의 값: 0 이상 없음, 1 이상이 있거나 거절함, 2 잘못된 사용, 3 설정이나 데이터베이스, 캡쳐 폴더를 쓸 수 "
        "없음\n"_s;
    return text;
}

void Tell(const QString& text)
{
    std::fprintf(stderr, "capture-station-admin: %s\n", qUtf8Printable(text));
}

int Misused(const QString& text)
{
    Tell(text);
    std::fputs(qUtf8Printable(HelpText()), stderr);
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

int Run(const Command& command, const QStringList& arguments, QTextStream& out)
{
    QStringList values = arguments;
    QStringList options;
    for (const QString& argument : arguments) {
        if (!argument.startsWith(u"--"_s))
            continue;
        if (!command.options.contains(argument))
            return Misused(u"모르는 인수입니다: %1"_s.arg(argument));
        options << argument;
        values.removeOne(argument);
    }
    if (values.size() < command.fewest || values.size() > command.most)
        return Misused(u"인수의 수가 맞지 않습니다: %1 %2"_s.arg(command.name, command.arguments).trimmed());
    if (command.needs != Needs::Nothing && !ReadSetup(command.needs == Needs::Database))
        return CantWork;
    return command.run(values, options, out);
}

} // namespace

int RunCommand(const QStringList& arguments, QTextStream& out)
{
    if (arguments == QStringList{u"--help"_s}) {
        out << HelpText();
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
    try {
        return Run(*command, arguments.mid(1), out);
    } catch (...) {
        out.flush();
        Tell(guard::TextOf(std::current_exception()));
        return CantWork;
    }
}
