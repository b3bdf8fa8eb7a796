#include "platform/sender/SenderStart.h"

#include "contracts/PlatformError.h"
#include "frame/components.h"
#include "frame/own_program.h"
#include "platform/process/child_process.h"

#include <QProcess>

using namespace Qt::StringLiterals;

namespace {

const QString Name = u"capture-station-sender"_s;
constexpr int ManagerPatienceMs = 5000;

/// A unit knows nothing of a folder or a setup that was chosen for this run.
bool IsOfThePackage(const QString& program)
{
    return program.startsWith(u"/usr/"_s) && qEnvironmentVariableIsEmpty("CAPTURE_STATION_FOLDER") &&
           qEnvironmentVariableIsEmpty("CAPTURE_STATION_SETUP");
}

bool StartUnit()
{
    ChildLimits limits;
    limits.silenceMs = limits.totalMs = ManagerPatienceMs;
    return RunChild(u"systemctl"_s, {u"--user"_s, u"--no-block"_s, u"start"_s, Name + u".service"_s}, {}, limits)
        .succeeded;
}

} // namespace

void SenderStart::Start(bool isAgain)
{
    const QString program = OwnProgram(Name);
    if (program.isEmpty())
        throw PlatformError(u"%1을(를) 실행할 수 없습니다.!!"_s.arg(Name));
    if (!isAgain && IsOfThePackage(program) && StartUnit())
        return;
    QProcess sender;
    sender.setProgram(program);
    sender.setStandardInputFile(QProcess::nullDevice());
    sender.setStandardOutputFile(QProcess::nullDevice());
    sender.setStandardErrorFile(QProcess::nullDevice());
    sender.setWorkingDirectory(u"/"_s);
    if (!sender.startDetached())
        throw PlatformError(u"%1을(를) 실행할 수 없습니다.!! (%2)"_s.arg(Name, sender.errorString()));
}

void RegisterSender()
{
    InstallService<SenderProcess>(std::make_unique<SenderStart>());
}
