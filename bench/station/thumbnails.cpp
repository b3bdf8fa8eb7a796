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
    QList<double> singles;
    constexpr int Rounds = 7;
    double longestGap = 0;
    for (int round = 0; round < Rounds; ++round) {
        double start = NowMs();
        for (int number = 1; number <= PicturesOnDisk; ++number) {
            QImageReader reader(NativePath(box.PicturePath(ymd, etc, number)));
            if (reader.read().isNull())
                return 1;
        }
        decodes << NowMs() - start;
        start = NowMs();
        QImageReader single(NativePath(box.PicturePath(ymd, etc, 1)));
        single.setScaledSize({107, 60});
        if (single.read().isNull())
            return 1;
        singles << NowMs() - start;

        Heartbeat heart;
        double first = 0;
        start = NowMs();
        const auto placed = QObject::connect(grid.get(), &fpSpread::CellsChanged, grid.get(), [&] {
            if (first == 0 && grid->DataRowCnt() > 0)
                first = NowMs() - start;
        });
        LoadCaptureList(VisitOf(VisitContext.Chart, {}, ymd, etc), pictures, false);
        grid->repaint();
        fills << NowMs() - start;
        heart.Beat();
        longestGap = qMax(longestGap, heart.LongestMs());
        QObject::disconnect(placed);
        firsts << first;
        if (grid->DataRowCnt() != 20)
            return 1;
    }
    PrintRatio(u"50 thumbnails of 1080p, filled and painted (median)"_s, Median(fills),
               u"full decoding of %1 kB each in one thread"_s.arg(bytes / PicturesOnDisk / 1024), Median(decodes),
               0.24);
    PrintRatio(u"  first picture placed"_s, Median(firsts), u"decoding and scaling one"_s, Median(singles), 1.5);
    PrintLimited(u"  longest time without events served, thumbnails"_s, longestGap, u"ms"_s, 50);
    return 0;
}
