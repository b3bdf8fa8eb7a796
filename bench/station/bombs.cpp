#include "figures.h"

#include "capture/frmCapture.h"
#include "contracts/fpSpread.h"
#include "frame/guard.h"
#include "frame/services.h"
#include "screenparts/fill_routines.h"
#include "session/VisitContext.h"
#include "support/StationInABox.h"

#include <QBuffer>
#include <QImageWriter>
#include <QToolButton>

using namespace Qt::StringLiterals;

namespace {

struct Bomb
{
    QString name;
    QByteArray content;
};

QByteArray Written(QSize size, QImage::Format format, const char* kind, bool progressive = false)
{
    QImage picture(size, format);
    picture.fill(0);
    QByteArray content;
    QBuffer buffer(&content);
    QImageWriter writer(&buffer, kind);
    writer.setProgressiveScanWrite(progressive);
    writer.write(picture);
    return content;
}

/// The hungriest that the limits let through, and two that they don't.
QList<Bomb> Bombs()
{
    constexpr QSize Largest(8000, 8000);
    constexpr QSize LargestJpeg(14140, 14140);
    return {{u"PNG, one bit"_s, Written(Largest, QImage::Format_Mono, "png")},
            {u"PNG, colours"_s, Written(Largest, QImage::Format_RGB32, "png")},
            {u"PNG, alpha"_s, Written(Largest, QImage::Format_ARGB32, "png")},
            {u"TIFF"_s, Written(Largest, QImage::Format_Mono, "tiff")},
            {u"BMP"_s, Written(Largest, QImage::Format_Mono, "bmp")},
            {u"JPEG"_s, Written(LargestJpeg, QImage::Format_Grayscale8, "jpeg")},
            {u"JPEG, 64 megapixels"_s, Written(Largest, QImage::Format_RGB32, "jpeg")},
            {u"JPEG, progressive"_s, Written(LargestJpeg, QImage::Format_Grayscale8, "jpeg", true)},
            {u"JPEG, progressive, colours"_s, Written(Largest, QImage::Format_RGB32, "jpeg", true)},
            {u"PNG, too large"_s, Written({14100, 14100}, QImage::Format_Mono, "png")},
            {u"JPEG, too large"_s, Written({15000, 14000}, QImage::Format_Grayscale8, "jpeg")}};
}

} // namespace

int BenchBombs()
{
    constexpr int Thumbnails = 30;
    StationInABox box;
    const QList<Bomb> bombs = Bombs();
    frmCapture& screen = Form<frmCapture>();
    screen.Show();
    Guarded([&] { screen.ShowStored(); });
    const QString source = NativePath(box.Root() + u"foreign"_s);
    for (const Bomb& bomb : bombs) {
        WriteWholeFile(source, bomb.content);
        const double before = ResidentMb();
        ForgetPeak();
        const double start = NowMs();
        box.Desk().shown.clear();
        box.Desk().files = {source};
        screen.findChild<QToolButton*>(u"파일"_s)->click();
        const double ms = NowMs() - start;
        PrintFigure(u"import of %1 of %2 kB"_s.arg(bomb.name).arg(bomb.content.size() / 1024),
                    u"%1 ms"_s.arg(ms, 0, 'f', 0),
                    u"%1 MB more, reader up to %2 MB; %3"_s.arg(PeakMb() - before, 0, 'f', 0)
                        .arg(ChildrenPeakMb(), 0, 'f', 0)
                        .arg(box.Desk().shown.value(0, u"filed"_s)));
    }

    const QString ymd = u"20260301"_s;
    for (int number = 1; number <= Thumbnails; ++number) {
        box.AddPicture(ymd, VisitContext.Etc, number);
        WriteWholeFile(box.PicturePath(ymd, VisitContext.Etc, number), bombs[number % bombs.size()].content);
    }
    const double before = ResidentMb();
    ForgetPeak();
    Heartbeat heart;
    const double start = NowMs();
    LoadCaptureList(CurrentVisit(), screen.PicturesOf(1), false);
    PrintFigure(u"30 of them as thumbnails"_s, u"%1 ms"_s.arg(NowMs() - start, 0, 'f', 0));
    PrintLimited(u"  memory more"_s, PeakMb() - before, u"MB"_s, 300);
    PrintFigure(u"  longest time without events served"_s, u"%1 ms"_s.arg(heart.LongestMs(), 0, 'f', 1));
    return 0;
}
