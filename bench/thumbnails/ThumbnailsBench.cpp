// Fills the grid of a visit with 50 stills, as the station does, and compares with decoding them at full size in one
// thread. Both run by turns in one process.

#include "contracts/components.h"
#include "contracts/fpSpread.h"
#include "contracts/pictures.h"
#include "platform/grid/register_grid.h"
#include "platform/imaging/register_imaging.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QImageReader>
#include <QPainter>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QTimer>

#include <algorithm>
#include <cstdio>

using namespace Qt::StringLiterals;

namespace {
constexpr int Stills = 50;
constexpr int Rounds = 7;

/// Tissue by lamp light: a glow that falls off, vessels, and the noise of a sensor.
QImage Still(quint32 seed)
{
    QRandomGenerator random(seed);
    QImage still(1920, 1080, QImage::Format_RGB32);
    QPainter painter(&still);
    QRadialGradient glow(800 + int(random.bounded(300)), 400 + int(random.bounded(300)), 1000);
    glow.setColorAt(0, QColor(230, 120 + int(random.bounded(40)), 90));
    glow.setColorAt(1, QColor(60, 10, 10));
    painter.fillRect(still.rect(), glow);
    painter.setRenderHint(QPainter::Antialiasing);
    for (int vessel = 0; vessel < 120; ++vessel) {
        painter.setPen(
            QPen(QColor(120 + int(random.bounded(120)), int(random.bounded(90)), 60, 120), 1 + random.bounded(8.0)));
        painter.drawLine(int(random.bounded(1920)), int(random.bounded(1080)), int(random.bounded(1920)),
                         int(random.bounded(1080)));
    }
    painter.end();
    for (int y = 0; y < still.height(); ++y) {
        auto* line = reinterpret_cast<QRgb*>(still.scanLine(y));
        for (int x = 0; x < still.width(); ++x) {
            const int noise = int(random.generate() & 15) - 8;
            line[x] = qRgb(qBound(0, qRed(line[x]) + noise, 255), qBound(0, qGreen(line[x]) + noise, 255),
                           qBound(0, qBlue(line[x]) + noise, 255));
        }
    }
    return still;
}

double FullDecodeMs(const QStringList& paths)
{
    QElapsedTimer time;
    time.start();
    for (const QString& path : paths) {
        if (QImageReader(path).read().isNull())
            qFatal("a still can't be read");
    }
    return double(time.nsecsElapsed()) / 1e6;
}

struct Fill
{
    double totalMs = 0;
    double firstMs = 0;
    double longestGapMs = 0; ///< Between two moments at which events were served.
};

Fill FillGrid(fpSpread& grid, const QStringList& paths)
{
    grid.ClearRange(1, 1, 5, grid.DataRowCnt(), false);
    QCoreApplication::processEvents();

    Fill fill;
    QElapsedTimer time;
    time.start();
    double servedMs = 0;
    const auto serve = [&](QEventLoop::ProcessEventsFlags how) {
        QCoreApplication::processEvents(how);
        const double nowMs = double(time.nsecsElapsed()) / 1e6;
        fill.longestGapMs = std::max(fill.longestGapMs, nowMs - servedMs);
        servedMs = nowMs;
    };
    const auto batch = Pictures().LoadAll(paths, grid.CellPixels(1, 1));
    for (int index = 0; index < paths.size(); ++index) {
        serve(QEventLoop::AllEvents);
        while (!batch->IsReady(index))
            serve(QEventLoop::WaitForMoreEvents);
        grid.setRow(1 + 2 * (index / 5));
        grid.setCol(1 + index % 5);
        grid.setCellType(CellTypePicture);
        grid.setTypePictCenter(true);
        grid.setTypePictStretch(true);
        grid.setTypePictPicture(batch->Take(index));
        grid.SetActiveCell(1, grid.Row());
        if (index == 0)
            fill.firstMs = double(time.nsecsElapsed()) / 1e6;
        grid.setRow(grid.Row() + 1);
        grid.setCellType(CellTypeStaticText);
        grid.setText(u"%1"_s.arg(index + 1, 3, 10, QChar(u'0')));
    }
    serve(QEventLoop::AllEvents);
    fill.totalMs = servedMs;
    return fill;
}

double Median(QList<double> values)
{
    std::ranges::sort(values);
    return values[values.size() / 2];
}
} // namespace

int main(int argc, char** argv)
{
    qputenv("QT_QPA_PLATFORM", qEnvironmentVariableIsSet("QT_QPA_PLATFORM") ? qgetenv("QT_QPA_PLATFORM") : "offscreen");
    QApplication application(argc, argv);
    RegisterImaging();
    RegisterGrid();

    const QTemporaryDir folder;
    QStringList paths;
    qint64 bytes = 0;
    for (int index = 0; index < Stills; ++index) {
        paths << folder.filePath(u"%1.jpg"_s.arg(index));
        if (!Still(quint32(index)).save(paths.last(), "jpg", 90))
            qFatal("a still can't be written");
        bytes += QFileInfo(paths.last()).size();
    }

    const auto grid = CreateObject<fpSpread>(u"FPSpreadADO.fpSpread"_s);
    grid->resize(560, 231);
    grid->setMaxCols(5);
    grid->setMaxRows(20);
    grid->setHeadingsVisible(false, false);
    for (int column = 1; column <= 5; ++column)
        grid->setColWidth(column, 13.37);
    for (int row = 1; row <= 20; ++row)
        grid->setRowHeight(row, row % 2 == 1 ? 53.2 : 13.3);
    grid->show();

    QList<double> full, fill, ratio, first, gap;
    for (int round = 0; round < Rounds; ++round) {
        full << FullDecodeMs(paths);
        const Fill filled = FillGrid(*grid, paths);
        fill << filled.totalMs;
        ratio << filled.totalMs / full.last();
        first << filled.firstMs;
        gap << filled.longestGapMs;
    }
    const QSize cell = grid->CellPixels(1, 1);
    std::printf("%d stills of 1920x1080, %lld KB each, into cells of %dx%d, median of %d rounds\n", Stills,
                static_cast<long long>(bytes / Stills / 1024), cell.width(), cell.height(), Rounds);
    std::printf("full decode, one thread   %7.1f ms\n", Median(full));
    std::printf("grid filled               %7.1f ms\n", Median(fill));
    std::printf("ratio                     %7.3f     (aim: at most 0.45)\n", Median(ratio));
    std::printf("first picture in its cell %7.1f ms  (aim: within 20; worst %.1f)\n", Median(first),
                *std::ranges::max_element(first));
    std::printf("longest gap of events     %7.1f ms  (aim: within 50; worst %.1f)\n", Median(gap),
                *std::ranges::max_element(gap));
    return 0;
}
