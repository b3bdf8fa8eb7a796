#include "capture/frmCapture.h"
#include "contracts/fpSpread.h"
#include "contracts/pictures.h"
#include "figures.h"
#include "frame/guard.h"
#include "frame/services.h"
#include "scene.h"
#include "screenparts/LargePicture.h"
#include "screenparts/PictureCanvas.h"
#include "session/VisitContext.h"
#include "support/StationInABox.h"

#include <QAbstractButton>
#include <QThread>

using namespace Qt::StringLiterals;

namespace {
constexpr int Rounds = 7;
constexpr int LimitMs = 30'000;

/// Hears when the picture is painted.
class PicturePainted : public QObject
{
public:
    explicit PicturePainted(PictureCanvas& canvas) : m_canvas(canvas) { canvas.installEventFilter(this); }
    bool eventFilter(QObject*, QEvent* event) override
    {
        isSeen |= event->type() == QEvent::Paint && !m_canvas.Picture().isNull();
        return false;
    }
    bool isSeen = false;

private:
    PictureCanvas& m_canvas;
};

/// Decoding alone, on a thread as the view's.
double DecodingMs(const QString& path)
{
    double took = 0;
    const std::unique_ptr<QThread> thread(QThread::create([&] {
        const double start = NowMs();
        if (!Pictures().LoadToLook(path).picture.isNull())
            took = NowMs() - start;
    }));
    thread->start();
    thread->wait();
    return took;
}
} // namespace

int BenchLarge()
{
    for (const QSize size : {QSize(1920, 1080), QSize(3840, 2160), QSize(8000, 6000)}) {
        StationInABox box;
        const QString etc = VisitContext.Etc;
        box.AddPicture(VisitContext.Ymd, etc, 1);
        const QString path = box.PicturePath(VisitContext.Ymd, etc, 1);
        WriteWholeFile(path, ScenePicture(1, size));
        auto& screen = Form<frmCapture>();
        screen.Show();
        Guarded([&] { screen.ShowStored(); });
        auto& view = *screen.findChild<LargePicture*>();
        PicturePainted painted(*view.findChild<PictureCanvas*>(u"largeCanvas(1)"_s));
        auto* lens = screen.sprCap(1).findChild<QAbstractButton*>(u"lens"_s);
        QList<double> opened;
        QList<double> decoded;
        Heartbeat heart;
        double longestPause = 0;
        for (int round = 0; round < Rounds; ++round) {
            decoded << DecodingMs(path);
            heart.Forget();
            painted.isSeen = false;
            const double start = NowMs();
            lens->click();
            if (!ServeUntil([&] { return painted.isSeen; }, LimitMs))
                return 1;
            opened << NowMs() - start;
            ServeUntil([] { return false; }, 200);
            longestPause = qMax(longestPause, heart.LongestMs());
            view.Close();
        }
        PrintRatio(u"%1 x %2 large, click to painted (median of %3)"_s.arg(size.width()).arg(size.height()).arg(Rounds),
                   Median(opened), u"decoding"_s, Median(decoded), 1.5);
        PrintLimited(u"  longest time without events served, large"_s, longestPause, u"ms"_s, 50);
        screen.Unload();
        ServeUntil([] { return false; }, 50);
    }
    return 0;
}
