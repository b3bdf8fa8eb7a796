#include "launch/Main.h"
#include "contracts/desktop.h"
#include "contracts/printing.h"
#include "findings/findings_popups.h"
#include "frame/components.h"
#include "frame/forms.h"
#include "frame/guard.h"
#include "frame/services.h"
#include "platform/desktop/command_string.h"
#include "platform/desktop/prepare_application.h"
#include "platform/desktop/register_desktop.h"
#include "platform/desktop/screen_scale.h"
#include "platform/dicom/register_dicom.h"
#include "platform/disc/register_disc.h"
#include "platform/files/act_source.h"
#include "platform/files/LocalFiles.h"
#include "platform/files/program_folder.h"
#include "platform/grid/register_grid.h"
#include "platform/gstreamer/register_video.h"
#include "platform/imagecontrol/register_image_control.h"
#include "platform/imaging/register_imaging.h"
#include "platform/journal/StandardErrorJournal.h"
#include "platform/printing/register_printing.h"
#include "platform/profile/PrivateProfile.h"
#include "platform/sender/SenderStart.h"
#include "platform/serial/register_serial.h"
#include "platform/setup/register_setup.h"
#include "platform/sql/register_sql.h"
#include "records/ActJournal.h"
#include "records/Statement.h"
#include "session/VisitContext.h"

#include <QApplication>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <sys/resource.h>
#include <unistd.h>
#include <utility>

namespace {

/// A screen that is closed right after a print leaves its sheets to the printers all the same.
constexpr int PrintingPatienceMs = 5000;

constexpr char HelpText[] =
    "사용법: capture-station \"실행문자열\"\n"
    "        capture-station --version | --help\n"
    "\n"
    "내시경 캡쳐 화면. 진료 프로그램이 인수 하나로 실행합니다:\n"
    "  방식 1, 코드 2, 표시 1, 차트번호 8, 유형 2, 진료의사 2, 날짜 8(yyyymmdd), 나머지는 검사 종류\n"
    "  예: capture-station \"A01 00001234011120261124위내시경\"\n"
    "\n"
    "설정: CAPTURE_STATION_SETUP의 파일, 프로그램 폴더의 Setup.ini, /etc/capture-station/Setup.ini\n"
    "관리: capture-station-admin --help, man capture-station\n";

/// Words that are no launch string: they need no screen.
bool AnswerOption(int argc, char* argv[])
{
    if (argc == 2 && std::strcmp(argv[1], "--version") == 0)
        std::puts("capture-station " STATION_VERSION);
    else if (argc == 2 && std::strcmp(argv[1], "--help") == 0)
        std::fputs(HelpText, stdout);
    else if (argc == 1 && isatty(STDIN_FILENO) == 1)
        std::fputs("capture-station: 진료 프로그램이 실행합니다. 사용법은 capture-station --help\n", stderr);
    else
        return false;
    return true;
}

/// No patient's picture is to lie in a core file. Holds for the programs that this one starts, too.
void LeaveNoCore()
{
    const rlimit none = {0, 0};
    setrlimit(RLIMIT_CORE, &none);
}

/// A movie becomes whole, what is under way comes to its place, and nothing of the toolkit is touched any more.
void EndWithoutDisplay()
{
    static bool hasBegun = false;
    if (!std::exchange(hasBegun, true)) {
        UseService<Desktop>().LoseDisplay();
        const QList<StationForm*> forms = LoadedForms();
        for (StationForm* form : forms)
            form->UnloadUnseen();
        UseService<PrinterJobs>().End(PrintingPatienceMs);
        UseService<Desktop>().LeaveInstance();
        EndJournal();
    }
    std::_Exit(1);
}

} // namespace

int main(int argc, char* argv[])
{
    if (argc > 2) {
        // Joining them would shift the columns of the launch string.
        std::fputs("capture-station: the launch string must be one argument\n", stderr);
        return 2;
    }
    if (AnswerOption(argc, argv))
        return 0;
    LeaveNoCore();
    RegisterJournal();
    RegisterFiles();
    SetScreenScale(ScreenScaleOfSetup(ProgramFolderHere()));

    // Asked before there is an application object, which changes the locale.
    const CommandString command = CommandStringOf(argc == 2 ? argv[1] : "");
    int ownArgc = 1;
    QApplication application(ownArgc, argv);
    QApplication::setApplicationName(QStringLiteral("capture-station"));
    QApplication::setQuitOnLastWindowClosed(false);

    PrepareApplication();

    RegisterDesktop(command);
    RegisterRoomAwake();
    RegisterProfile();
    RegisterSql();
    RegisterSetup();
    RegisterImaging();
    RegisterImageControl();
    RegisterGrid();
    RegisterVideo();
    RegisterShutterSound();
    RegisterPrinting();
    RegisterSerial();
    RegisterDisc();
    RegisterDicom();
    RegisterSender();
    RegisterFindingsPopups();

    UseService<Desktop>().setEndRequest([] {
        UnloadForms();
        EndProgram();
    });
    InstallService<ActJournal>(std::make_unique<ActJournal>(ActSourceHere(u"capture-station")));
    Guarded([] { Main(); });
    // The toolkit ends the process when the display is gone, in the middle of its own work.
    std::atexit(EndWithoutDisplay);
    const int result = UseService<Desktop>().ProgramEnded() ? 0 : QApplication::exec();
    UseService<PrinterJobs>().End(PrintingPatienceMs);
    // A process whose thread the kernel holds can stand for hours: the next start takes it for one that has ended.
    UseService<Desktop>().LeaveInstance();
    UseService<ActJournal>().End();
    Connection.reset();
    // All that is to be kept is on the disk. A thread that is held would meet the end of what it works on.
    EndJournal();
    std::_Exit(result);
}
