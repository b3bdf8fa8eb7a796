#include "launch/Main.h"

#include "capture/frmCapture.h"
#include "contracts/cd.h"
#include "contracts/desktop.h"
#include "contracts/files.h"
#include "contracts/Journal.h"
#include "contracts/MSComm.h"
#include "contracts/PlatformError.h"
#include "contracts/printing.h"
#include "contracts/setup_components.h"
#include "contracts/VideoCap.h"
#include "contracts/VideoOptions.h"
#include "frame/components.h"
#include "frame/guard.h"
#include "frame/journal.h"
#include "frame/services.h"
#include "frame/waiting.h"
#include "launch/launch_string.h"
#include "records/acts.h"
#include "records/Statement.h"
#include "screenparts/fill_routines.h"
#include "screenparts/NoticeStrip.h"
#include "screenparts/printer_notice.h"
#include "session/VisitContext.h"
#include "text/date_routines.h"
#include "text/text_routines.h"
#include "viewing/CapShow.h"

#include <QComboBox>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

const QString NoChart = u"00000000"_s;
/// No clinic has had a station for longer.
const QDate FirstDay(1990, 1, 1);
/// The screen isn't up yet: nobody could give the wait up.
constexpr int DatabasePatienceMs = 2000;

bool IsDigits(const QString& text)
{
    return std::ranges::all_of(text, [](QChar character) { return character >= u'0' && character <= u'9'; });
}

/// Invalid when the database doesn't say.
QDate DatabaseDate()
{
    try {
        const waiting::Patience patience(DatabasePatienceMs);
        const auto rows = OpenRows(Statement(u" SELECT CURRENT_DATE "));
        return HasRow(*rows) ? rows->Fields(0).toDate() : QDate();
    } catch (const PlatformError&) {
        return {};
    }
}

bool IsWithinAYear(QDate date, QDate today)
{
    return today.isValid() && date <= today.addYears(1);
}

/// True for a text `yyyymmdd` that can be the date of a visit: a day of the calendar from 1990 on, and no later than a
/// year from today, by the station's clock or by the database's, whichever is later.
bool IsVisitDate(const QString& ymd)
{
    const QDate date = IsDigits(ymd) ? DateFromText(ymd) : QDate();
    if (!date.isValid() || date < FirstDay)
        return false;
    // A machine that has lost its clock lives in the past.
    return IsWithinAYear(date, UseService<Desktop>().Today()) || IsWithinAYear(date, DatabaseDate());
}

/// The setup component is a fresh object for this one call.
bool ReadSetup()
{
    const auto profile = CreateObject<clsStartProfile>(u"prjStartProfile.clsStartProfile"_s);
    return profile->SetupRead(ClientSetup, SaupTable, true, Connection);
}

/// A visit that would lead out of the capture root, or that its rows couldn't name, is refused before anything is made.
void CheckVisit()
{
    if (!FitsSectionColumn(VisitContext.Etc))
        throw PlatformError(u"검사 이름이 너무 깁니다.!! (%1)"_s.arg(VisitContext.Etc.left(60)));
    CheckedPathPart(VisitContext.Etc);
    CheckedPathPart(VisitContext.Chart);
}

/// Columns that have slipped come with a date that is none: the screen opens all the same, to tell of it.
void JudgeDate()
{
    VisitContext.YmdIsValid = IsVisitDate(VisitContext.Ymd);
    if (!VisitContext.YmdIsValid)
        journal::Note(Journal::Warning, u"진료일자가 올바르지 않음: %1"_s.arg(VisitContext.Ymd));
    // Some shares drop the blanks at a name's end.
    const bool isName = IsPathPart(Trim(VisitContext.Ymd)) && IsPathPart(Trim(VisitContext.Ymd.left(4)));
    VisitContext.CaptureDir = isName ? YearFolder(ClientSetup.CaptureRoot, VisitContext.Ymd) : QString();
}

void ShowCaptureScreen()
{
    frmCapture& screen = Form<frmCapture>();
    screen.Show();
    if (screen.IsUnloaded())
        return;
    if (Trim(VisitContext.Etc).isEmpty())
        VisitContext.Etc = screen.cmbEtc().itemText(0);
    screen.cmbEtc().setEditText(VisitContext.Etc);
    acts::Record(acts::Kind::VisitOpened, CurrentVisit(), 0, u"캡쳐화면"_s);
    screen.ShowStored();
}

void ShowViewer()
{
    CapShow& viewer = Form<CapShow>();
    viewer.Show();
    acts::Record(acts::Kind::VisitOpened, CurrentVisit(), 0, u"보기화면"_s);
    LoadCaptureList(CurrentVisit(), viewer.PicturesOfVisit(), false);
}

/// Brings up the first screen, unless there is a reason not to.
void OpenVisit()
{
    const CommandString command = UseService<Desktop>().Command();
    if (Trim(QString::fromLatin1(command.bytes)).isEmpty())
        return;
    if (UseService<Desktop>().PrevInstance()) {
        ShowInformation(u"캡쳐화면이나 캡쳐이미지화면이 실행중입니다.!!"_s);
        return;
    }
    if (!ReadSetup())
        return;
    UseService<VideoOptions>().OfferTestPicture(ClientSetup.TestPicture);
    UseService<PrinterOptions>().UseFolder(ClientSetup.PrinterFolder);
    UseService<SerialPortOptions>().UseDevices(ClientSetup.SerialPorts);
    UseService<BurnerOptions>().UseImage(ClientSetup.BurnerImage);
    UseService<BurnerOptions>().UseSticks(ClientSetup.BurnerUsb);

    VisitContext.ImageExt = ImageExtOfSetup();
    const LaunchString launch = CutLaunchString(command);
    VisitContext.LaunchCode = launch.code;
    VisitContext.LaunchFlag = launch.flag;
    VisitContext.Chart = launch.chart;
    VisitContext.Yuhyung = launch.yuhyung;
    VisitContext.Jinchal = launch.jinchal;
    VisitContext.Ymd = launch.ymd;
    VisitContext.Etc = launch.etc;
    journal::setContext(VisitContext.Chart, ClientSetup.CaptureRoot);
    if (Trim(VisitContext.Chart).isEmpty() || VisitContext.Chart == NoChart)
        return;
    CheckVisit();
    JudgeDate();

    if (Trim(launch.mode) == u"C"_s)
        ShowViewer();
    else
        ShowCaptureScreen();
}

} // namespace

void Main()
{
    ShowWaitsOnForms();
    ShowPrinterOnForms();
    Guarded([] { OpenVisit(); });
    // Without a window nothing could end it any more.
    if (LoadedForms().isEmpty())
        EndProgram();
}
