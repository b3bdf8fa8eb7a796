#include "figures.h"
#include "scene.h"

#include "contracts/fpSpread.h"
#include "frame/components.h"
#include "frame/services.h"
#include "screenparts/fill_routines.h"
#include "screenparts/VisitPictures.h"
#include "session/VisitContext.h"
#include "support/StationInABox.h"

#include <QImageReader>
#include <QTimer>

using namespace Qt::StringLiterals;

namespace {

constexpr int PicturesOnDisk = 50;
} // namespace

int BenchThumbnails()
{
    StationInABox box;
    const QString ymd = VisitContext.Ymd;
    const QString etc = VisitContext.Etc;
    qint64 bytes = 0;
    QList<QByteArray> scenes;
    for (int seed = 0; seed < 5; ++seed)
        scenes << ScenePicture(seed, {1920, 1080});
    for (int number = 1; number <= PicturesOnDisk; ++number) {
        box.AddPicture(ymd, etc, number);
        WriteWholeFile(box.PicturePath(ymd, etc, number), scenes[number % 5]);
        bytes += scenes[number % 5].size();
    }
    auto grid = CreateObject<fpSpread>(u"FPSpreadADO.fpSpread"_s);
    grid->setHeadingsVisible(false, false);
    grid->setMaxCols(5);
    grid->setMaxRows(20);
    for (int column = 1; column <= 5; ++column)
        grid->setColWidth(column, 13.37);
    for (int row = 1; row <= 20; ++row)
        grid->setRowHeight(row, row % 2 == 1 ? 53.2 : 13.3);
    grid->resize(560, 231);
    VisitPictures pictures(*grid, 1);
    grid->show();

    QList<double> fills;
    QList<double> decodes;
    QList<double> firsts;
    double longestGap = 0;
    for (int round = 0; round < 5; ++round) {
        double start = NowMs();
        for (int number = 1; number <= PicturesOnDisk; ++number) {
            QImageReader reader(NativePath(box.PicturePath(ymd, etc, number)));
            if (reader.read().isNull())
                return 1;
        }
        decodes << NowMs() - start;

        QTimer beat;
        double last = NowMs();
        double first = 0;
        start = last;
        QObject::connect(&beat, &QTimer::timeout, grid.get(), [&] {
            longestGap = qMax(longestGap, NowMs() - last);
            last = NowMs();
            if (first == 0 && grid->DataRowCnt() > 0)
                first = last - start;
        });
        beat.start(0);
        LoadCaptureList(VisitOf(VisitContext.Chart, {}, ymd, etc), pictures, false);
        grid->repaint();
        fills << NowMs() - start;
        longestGap = qMax(longestGap, NowMs() - last);
        firsts << first;
        if (grid->DataRowCnt() != 20)
            return 1;
    }
    PrintFigure(u"50 thumbnails of 1080p, filled and painted (median)"_s, u"%1 ms"_s.arg(Median(fills), 0, 'f', 0),
                u"%1 x full decoding in one thread (at most 0.45)"_s.arg(Median(fills) / Median(decodes), 0, 'f', 2));
    PrintFigure(u"  full decoding in one thread"_s, u"%1 ms"_s.arg(Median(decodes), 0, 'f', 0),
                u"%1 kB a picture"_s.arg(bytes / PicturesOnDisk / 1024));
    PrintFigure(u"  first picture placed"_s, u"%1 ms"_s.arg(Median(firsts), 0, 'f', 1), u"at most 20 ms"_s);
    PrintFigure(u"  longest time without events served"_s, u"%1 ms"_s.arg(longestGap, 0, 'f', 1), u"at most 50 ms"_s);
    return 0;
}
