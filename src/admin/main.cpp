#include "admin/commands.h"
#include "frame/components.h"
#include "frame/terminal.h"
#include "platform/dicom/register_dicom.h"
#include "platform/files/act_source.h"
#include "platform/files/LocalFiles.h"
#include "platform/files/program_folder.h"
#include "platform/imaging/register_imaging.h"
#include "platform/machine/register_machine.h"
#include "platform/process/own_memory.h"
#include "platform/profile/PrivateProfile.h"
#include "platform/sender/SenderStart.h"
#include "platform/setup/register_setup.h"
#include "platform/sql/register_sql.h"
#include "platform/terminal/register_terminal.h"
#include "records/ActJournal.h"
#include "records/Statement.h"
#include "session/VisitContext.h"

#include <QCoreApplication>

#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <unistd.h>

namespace {

/// A program that was started without one of its standard files would open another under that number, and write its
/// messages into that. What takes the place refuses to be read or written.
void TakeStandardPlaces()
{
    for (const int handle : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (fcntl(handle, F_GETFD) == -1 && open("/dev/null", handle == STDIN_FILENO ? O_WRONLY : O_RDONLY) != handle)
            std::_Exit(CantWork);
    }
}

} // namespace

int main(int argc, char* argv[])
{
    TakeStandardPlaces();
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

    InstallService<ActJournal>(std::make_unique<ActJournal>(ActSourceHere(u"capture-station-admin")));
    int result = 0;
    {
        TerminalOutput out(stdout);
        result = RunCommand(QCoreApplication::arguments().mid(1), out);
        // The command has done its work, but whoever reads of it doesn't know all: no success.
        if (const QString fault = out.Close(); !fault.isEmpty()) {
            TellOnError(QStringLiteral("capture-station-admin: 출력을 다 쓰지 못하였습니다.!! (%1)").arg(fault));
            result = result == AllWell ? Found : result;
        }
    }
    UseService<ActJournal>().End();
    Connection.reset();
    // As in the station: a thread that the kernel holds would meet the end of what it works on.
    std::fflush(nullptr);
    std::_Exit(result);
}
