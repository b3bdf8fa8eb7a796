#include "figures.h"

#include "contracts/components.h"
#include "contracts/fpSpread.h"
#include "launch/context/VisitContext.h"
#include "records/capture_index.h"
#include "records/picture_grid.h"
#include "support/StationInABox.h"

#include <QBuffer>
#include <QImageReader>
#include <QPainter>
#include <QRandomGenerator>
#include <QTimer>

using namespace Qt::StringLiterals;

namespace {

constexpr int Pictures = 50;

/// A 1080p picture with as much detail as an endoscope's: soft shapes under a fine noise.
QByteArray ScenePicture(int seed)
{
    QRandomGenerator random(static_cast<quint32>(seed));
    QImage picture(1920, 1080, QImage::Format_RGB32);
    picture.fill(QColor(150, 70, 60));
    QPainter painter(&picture);
    for (int blob = 0; blob < 120; ++blob) {
        painter.setPen(Qt::NoPen);
        painter.setBrush(QColor(120 + random.bounded(100), 40 + random.bounded(80), 40 + random.bounded(60), 90));
        painter.drawEllipse(QPoint(random.bounded(1920), random.bounded(1080)), 20 + random.bounded(200),
                            20 + random.bounded(200));
    }
    painter.end();
    for (int y = 0; y < picture.height(); ++y) {
        auto* line = reinterpret_cast<QRgb*>(picture.scanLine(y));
        for (int x = 0; x < picture.width(); ++x) {
            const int grain = random.bounded(13) - 6;
            line[x] = qRgb(qBound(0, qRed(line[x]) + grain, 255), qBound(0, qGreen(line[x]) + grain, 255),
                           qBound(0, qBlue(line[x]) + grain, 255));
        }
    }
    QByteArray jpeg;
    QBuffer buffer(&jpeg);
    buffer.open(QIODevice::WriteOnly);
    picture.save(&buffer, "JPEG", 90);
    return jpeg;
}

} // namespace

int BenchThumbnails()
{
    StationInABox box;
    const QString ymd = VisitContext.Ymd;
    const QString etc = VisitContext.Etc;
    qint64 bytes = 0;
    QList<QByteArray> scenes;
    for (int seed = 0; seed < 5; ++seed)
        scenes << ScenePicture(seed);
    for (int number = 1; number <= Pictures; ++number) {
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
    grid->show();

    QList<double> fills;
    QList<double> decodes;
    QList<double> firsts;
    double longestGap = 0;
    for (int round = 0; round < 5; ++round) {
        double start = NowMs();
        for (int number = 1; number <= Pictures; ++number) {
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
        LoadCaptureList(VisitContext.Chart, {}, ymd, VisitContext.CaptureDir, etc, *grid, 1, false);
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
                u"%1 kB a picture"_s.arg(bytes / Pictures / 1024));
    PrintFigure(u"  first picture placed"_s, u"%1 ms"_s.arg(Median(firsts), 0, 'f', 1), u"at most 20 ms"_s);
    PrintFigure(u"  longest time without events served"_s, u"%1 ms"_s.arg(longestGap, 0, 'f', 1), u"at most 50 ms"_s);
    return 0;
}
