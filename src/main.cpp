#include "launch/Main.h"
#include "contracts/desktop.h"
#include "findings/findings_popups.h"
#include "frame/components.h"
#include "frame/forms.h"
#include "frame/guard.h"
#include "frame/services.h"
#include "platform/desktop/prepare_application.h"
#include "platform/desktop/register_desktop.h"
#include "platform/desktop/screen_scale.h"
#include "platform/disc/register_disc.h"
#include "platform/files/LocalFiles.h"
#include "platform/files/program_folder.h"
#include "platform/grid/register_grid.h"
#include "platform/gstreamer/register_video.h"
#include "platform/imagecontrol/register_image_control.h"
#include "platform/imaging/register_imaging.h"
#include "platform/printing/register_printing.h"
#include "platform/profile/PrivateProfile.h"
#include "platform/serial/register_serial.h"
#include "platform/setup/register_setup.h"
#include "platform/sql/register_sql.h"
#include "visit/VisitContext.h"

#include <QApplication>
#include <QStringDecoder>

#include <cstdio>
#include <cstdlib>

namespace {

/// The clinic's program may hand the string over in UTF-8 or in the Korean code page.
QString CommandText(const char* argument)
{
    const QByteArray bytes(argument);
    QStringDecoder utf8(QStringDecoder::Utf8);
    QString text = utf8(bytes);
    if (!utf8.hasError())
        return text;
    QStringDecoder korean("windows-949");
    return korean.isValid() ? QString(korean(bytes)) : text;
}

} // namespace

int main(int argc, char* argv[])
{
    if (argc > 2) {
        // Joining them would shift the columns of the launch string.
        std::fputs("capture-station: the launch string must be one argument\n", stderr);
        return 2;
    }
    RegisterFiles();
    SetScreenScale(ScreenScaleOfSetup(ProgramFolderHere()));

    const QString command = argc == 2 ? CommandText(argv[1]) : QString();
    int ownArgc = 1;
    QApplication application(ownArgc, argv);
    QApplication::setApplicationName(QStringLiteral("capture-station"));
    QApplication::setQuitOnLastWindowClosed(false);

    PrepareApplication();

    RegisterDesktop(command);
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
    RegisterFindingsPopups();

    UseService<Desktop>().setEndRequest([] {
        UnloadForms();
        EndProgram();
    });
    Guarded([] { Main(); });
    const int result = UseService<Desktop>().ProgramEnded() ? 0 : QApplication::exec();
    // A process whose thread the kernel holds can stand for hours: the next start takes it for one that has ended.
    UseService<Desktop>().LeaveInstance();
    Connection.reset();
    // All that is to be kept is on the disk. A thread that is held would meet the end of what it works on.
    std::_Exit(result);
}
