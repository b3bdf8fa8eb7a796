#include "figures.h"

#include "capture/frmCapture.h"
#include "contracts/desktop.h"
#include "contracts/fpSpread.h"
#include "frame/components.h"
#include "frame/forms.h"
#include "frame/services.h"
#include "launch/Main.h"
#include "platform/desktop/prepare_application.h"
#include "platform/desktop/register_desktop.h"
#include "platform/disc/register_disc.h"
#include "platform/files/LocalFiles.h"
#include "platform/grid/register_grid.h"
#include "platform/gstreamer/register_video.h"
#include "platform/imagecontrol/register_image_control.h"
#include "platform/imaging/register_imaging.h"
#include "platform/printing/register_printing.h"
#include "platform/profile/PrivateProfile.h"
#include "platform/serial/register_serial.h"
#include "platform/setup/register_setup.h"
#include "platform/sql/register_sql.h"
#include "support/StationInABox.h"

#include <QApplication>
#include <QEvent>
#include <QFile>
#include <QProcess>

#include <functional>

using namespace Qt::StringLiterals;

namespace {

constexpr int Starts = 15;

/// Tells its parent process when a window that is up has been painted, and ends the program: `end` is what it does
/// before, so that the next start finds no more than a program leaves that was closed.
class FirstPaint : public QObject
{
public:
    explicit FirstPaint(const std::function<void()>& end = {}) : m_end(end) {}

    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (event->type() == QEvent::Paint && watched->isWidgetType() && static_cast<QWidget*>(watched)->isWindow())
            QMetaObject::invokeMethod(this, &FirstPaint::Tell, Qt::QueuedConnection);
        return false;
    }

private:
    void Tell()
    {
        std::puts("painted");
        std::fflush(stdout);
        if (m_end)
            m_end();
        std::_Exit(0);
    }

    const std::function<void()> m_end;
};

int StartStation()
{
    const QString launch = u"A01 00001234011120261124위내시경"_s;
    PrepareApplication();
    RegisterFiles();
    RegisterDesktop({launch.toUtf8()});
    RegisterProfile();
    RegisterSql();
    RegisterSetup();
    RegisterImaging();
    RegisterGrid();
    RegisterVideo();
    RegisterPrinting();
    RegisterImageControl();
    RegisterSerial();
    RegisterDisc();
    Main();
    if (Form<frmCapture>().sprCap(3).DataRowCnt() != 3)
        return 1;
    FirstPaint paint([] {
        UnloadForms();
        UseService<Desktop>().LeaveInstance();
    });
    qApp->installEventFilter(&paint);
    Form<frmCapture>().update();
    return QApplication::exec();
}

int StartEmpty()
{
    QWidget window;
    window.resize(1016, 700);
    FirstPaint paint;
    qApp->installEventFilter(&paint);
    window.show();
    return QApplication::exec();
}

/// From the start of the process to the word of its first painted window, in milliseconds; negative when it failed.
double TimeStart(const QString& mode)
{
    QProcess program;
    const double start = NowMs();
    program.start(QCoreApplication::applicationFilePath(), {u"start"_s, mode});
    program.waitForReadyRead(10000);
    const double end = NowMs();
    const bool painted = program.readAllStandardOutput().startsWith("painted");
    program.waitForFinished();
    return painted ? end - start : -1;
}

} // namespace

int BenchStart(const QString& mode)
{
    if (mode == u"station"_s)
        return StartStation();
    if (mode == u"empty"_s)
        return StartEmpty();
    StationInABox box;
    for (const QString& ymd : {u"20261124"_s, u"20250301"_s, u"20240105"_s})
        box.AddPicture(ymd, u"위내시경"_s, 1, u"note"_s);
    QFile setup(box.Desk().ProgramFolder() + u"/Setup.ini"_s);
    if (!setup.open(QIODevice::WriteOnly))
        return 1;
    setup.write(u"[Database]\nDriver=QSQLITE\nName=%1\n[Client]\nCaptureRoot=%2\nEtcList=위내시경,대장내시경\n"
                "[Video]\nTestPicture=1\n"_s.arg(box.Database().Settings().name, box.Root())
                    .toUtf8());
    setup.close();
    qputenv("CAPTURE_STATION_SETUP", setup.fileName().toLocal8Bit());
    qputenv("CAPTURE_STATION_FOLDER", box.Desk().ProgramFolder().toLocal8Bit());

    QList<double> station;
    QList<double> empty;
    for (int start = 0; start <= Starts; ++start) {
        const double stationMs = TimeStart(u"station"_s);
        const double emptyMs = TimeStart(u"empty"_s);
        if (stationMs < 0 || emptyMs < 0) {
            std::fputs("a start has failed\n", stderr);
            return 1;
        }
        // The first pair warms the caches.
        if (start > 0) {
            station << stationMs;
            empty << emptyMs;
        }
    }
    PrintRatio(u"start to the first painted, filled window (median)"_s, Median(station), u"an empty window"_s,
               Median(empty), 3);
    return 0;
}
