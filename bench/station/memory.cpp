#include "figures.h"

#include "capture/frmCapture.h"
#include "contracts/fpSpread.h"
#include "frame/guard.h"
#include "frame/services.h"
#include "screenparts/fill_routines.h"
#include "session/VisitContext.h"
#include "support/StationInABox.h"

#include <QApplication>
#include <QProcess>

using namespace Qt::StringLiterals;

namespace {

constexpr int PicturesOnDisk = 50;
constexpr int Refills = 1000;

double EmptyWindowMb()
{
    QProcess empty;
    empty.start(QCoreApplication::applicationFilePath(), {u"memory"_s, u"empty"_s});
    empty.waitForFinished();
    return empty.readAllStandardOutput().trimmed().toDouble();
}

} // namespace

int BenchMemory(const QString& mode)
{
    if (mode == u"empty"_s) {
        QWidget window;
        window.resize(1016, 700);
        window.show();
        QCoreApplication::processEvents();
        std::printf("%.1f\n", ResidentMb());
        return 0;
    }
    StationInABox box;
    const QByteArray picture = StationInABox::Jpeg({1920, 1080}, Qt::darkRed);
    for (int number = 1; number <= PicturesOnDisk; ++number) {
        box.AddPicture(VisitContext.Ymd, VisitContext.Etc, number, u"note"_s);
        WriteWholeFile(box.PicturePath(VisitContext.Ymd, VisitContext.Etc, number), picture);
    }
    frmCapture& screen = Form<frmCapture>();
    screen.Show();
    Guarded([&] { screen.ShowStored(); });
    QCoreApplication::processEvents();
    const double filled = ResidentMb();
    const double empty = EmptyWindowMb();
    for (int refill = 0; refill < Refills; ++refill)
        LoadCaptureList(CurrentVisit(), screen.PicturesOf(1), false);
    QCoreApplication::processEvents();
    PrintLimited(u"memory of 50 pictures of 1080p beyond an empty window"_s, filled - empty, u"MB"_s, 150,
                 u"%1 MB in all"_s.arg(filled, 0, 'f', 1));
    PrintLimited(u"  more after 1,000 refills"_s, ResidentMb() - filled, u"MB"_s, 5);
    return 0;
}
