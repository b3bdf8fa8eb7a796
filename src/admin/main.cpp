#include "admin/commands.h"
#include "frame/terminal.h"
#include "platform/dicom/register_dicom.h"
#include "platform/files/LocalFiles.h"
#include "platform/files/program_folder.h"
#include "platform/imaging/register_imaging.h"
#include "platform/machine/register_machine.h"
#include "platform/profile/PrivateProfile.h"
#include "platform/sender/SenderStart.h"
#include "platform/setup/register_setup.h"
#include "platform/sql/register_sql.h"
#include "platform/terminal/register_terminal.h"
#include "records/Statement.h"
#include "session/VisitContext.h"

#include <QCoreApplication>

#include <cstdio>
#include <cstdlib>
#include <sys/prctl.h>
#include <sys/resource.h>

namespace {

/// The database's password and patients' records stay out of core files and of the user's other programs.
void KeepMemoryClosed()
{
    const rlimit none = {0, 0};
    setrlimit(RLIMIT_CORE, &none);
    prctl(PR_SET_DUMPABLE, 0, 0, 0, 0);
}

} // namespace

int main(int argc, char* argv[])
{
    KeepMemoryClosed();
    QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("capture-station"));
    qInstallMessageHandler(
        [](QtMsgType /*type*/, const QMessageLogContext& /*context*/, const QString& text) { TellOnError(text); });

    RegisterFiles();
    RegisterTerminal();
    RegisterProfile();
    RegisterSql();
    RegisterSetup(MissingRoot::IsTold);
    RegisterImaging();
    RegisterMachine();
    RegisterDicom();
    RegisterSender();

    Surroundings.version = QStringLiteral(STATION_VERSION);
    Surroundings.showsProgress = IsErrorTerminal();
    Surroundings.readLine = ReadInputLine;
    Surroundings.foldersOfOthers = ProgramFoldersOfOthers;
    Surroundings.ask = AskOnTerminal;
    Surroundings.askSecret = AskSecretOnTerminal;

    int result = 0;
    {
        TerminalOutput out(stdout);
        result = RunCommand(QCoreApplication::arguments().mid(1), out);
    }
    Connection.reset();
    // As in the station: a thread that the kernel holds would meet the end of what it works on.
    std::fflush(nullptr);
    std::_Exit(result);
}
