#include "contracts/pictures.h"
#include "editor/frmImgEdit.h"
#include "frame/services.h"
#include "station/figures.h"
#include "station/scene.h"
#include "support/StationInABox.h"

#include <QApplication>
#include <QBuffer>
#include <QPainter>
#include <QRandomGenerator>
#include <QTest>
#include <QToolButton>

#include <cmath>
#include <cstdio>

using namespace Qt::StringLiterals;

namespace {
constexpr int Rounds = 200;
constexpr QSize Full(1920, 1080);

/// A picture whose details don't compress away.
QByteArray Grain()
{
    QImage picture(Full, QImage::Format_RGB32);
    QRandomGenerator random(5);
    for (int y = 0; y < Full.height(); ++y) {
        for (int x = 0; x < Full.width(); ++x) {
            const int grain = static_cast<int>(random.bounded(12));
            picture.setPixel(x, y, qRgb(150 + x / 20 + grain, 60 + y / 18 + grain, 60 + grain));
        }
    }
    QByteArray jpeg;
    QBuffer buffer(&jpeg);
    buffer.open(QIODevice::WriteOnly);
    picture.save(&buffer, "JPEG", 90);
    return jpeg;
}

/// The figure that the band is held against: the raster operation of the platform's painter.
void PaintInverted(QImage& picture, int tool, const QRectF& frame)
{
    QPainter painter(&picture);
    painter.setCompositionMode(QPainter::RasterOp_NotDestination);
    painter.setPen(QPen(Qt::black, 2));
    if (tool == ToolBox)
        painter.drawRect(frame);
    else if (tool == ToolCircle)
        painter.drawEllipse(frame);
    else
        painter.drawLine(frame.topLeft(), frame.bottomRight());
}

QString Milliseconds(double ms, int digits)
{
    return u"%1 ms"_s.arg(ms, 0, 'f', digits);
}

void BenchBands(ImagXpress& canvas)
{
    const std::pair<int, QString> tools[] = {{ToolLine, u"line"_s}, {ToolBox, u"box"_s}, {ToolCircle, u"circle"_s}};
    for (const auto& [tool, name] : tools) {
        QImage beside = canvas.Picture().copy();
        QList<double> bands;
        QList<double> painted;
        for (int round = 0; round < Rounds; ++round) {
            const int x = 1900 - round % 20;
            const QRectF frame(QPointF(20, 20), QPointF(x, 1060));
            double start = NowMs();
            DrawFigure(static_cast<DrawingTool>(tool), canvas, 20, 20, float(x), 1060, 65535, PenBand);
            bands << NowMs() - start;
            start = NowMs();
            PaintInverted(beside, tool, frame);
            painted << NowMs() - start;
            // Taken back, and shown, outside of the clock.
            DrawFigure(static_cast<DrawingTool>(tool), canvas, 20, 20, float(x), 1060, 65535, PenBand);
            QCoreApplication::processEvents();
        }
        PrintLimited(u"band of a %1 across 1080p (median)"_s.arg(name), Median(bands), u"ms"_s, 0.2,
                     u"raster operation %1 ms"_s.arg(Median(painted), 0, 'f', 3));
    }
}

void BenchSteps(frmImgEdit& editor)
{
    const auto click = [&](const QString& name, bool shown) {
        const double start = NowMs();
        editor.findChild<QToolButton*>(name)->click();
        if (shown)
            QCoreApplication::processEvents();
        return NowMs() - start;
    };
    const auto stroke = [&] {
        QTest::mousePress(&editor.Canvas().imgMain(), Qt::LeftButton, Qt::NoModifier, {100, 100});
        QTest::mouseRelease(&editor.Canvas().imgMain(), Qt::LeftButton, Qt::NoModifier, {600, 300});
    };
    click(u"cmdDMode(4)"_s, true);
    stroke();
    QList<double> copies;
    for (int round = 0; round < 21; ++round) {
        const double start = NowMs();
        const QImage copy = editor.Canvas().imgMain().Picture().copy();
        copies << NowMs() - start;
    }
    for (const bool shown : {false, true}) {
        QList<double> undos;
        QList<double> redos;
        for (int round = 0; round < Rounds; ++round) {
            undos << click(u"cmdUnDo"_s, shown);
            QCoreApplication::processEvents();
            redos << click(u"cmdReDo"_s, shown);
            QCoreApplication::processEvents();
        }
        PrintFigure(shown ? u"undo and redo at 1080p, till shown (median)"_s : u"undo and redo at 1080p (median)"_s,
                    u"%1 and %2 ms"_s.arg(Median(undos), 0, 'f', 3).arg(Median(redos), 0, 'f', 3),
                    u"one copy of the picture %1 ms (at most 2 ms)"_s.arg(Median(copies), 0, 'f', 2));
    }
}

void BenchFile(StationInABox& box, const QString& path)
{
    QList<double> opens;
    QList<double> reads;
    QList<double> saves;
    QList<double> writes;
    for (int round = 0; round < 15; ++round) {
        double start = NowMs();
        frmImgEdit& editor = frmImgEdit::Open(path);
        editor.Show();
        while (editor.Canvas().imgMain().Picture().isNull())
            QCoreApplication::processEvents();
        QCoreApplication::processEvents(); // It is painted.
        opens << NowMs() - start;

        start = NowMs();
        const QImage read = LoadPicture(path);
        reads << NowMs() - start;

        start = NowMs();
        editor.findChild<QToolButton*>(u"cmdISave"_s)->click();
        saves << NowMs() - start;

        start = NowMs();
        QByteArray jpeg;
        QBuffer buffer(&jpeg);
        buffer.open(QIODevice::WriteOnly);
        read.save(&buffer, "JPEG", 90);
        WriteWholeFile(box.Root() + u"beside"_s, jpeg);
        writes << NowMs() - start;
        editor.Unload();
        QCoreApplication::processEvents();
    }
    PrintRatio(u"editor opens a 1080p picture (median)"_s, Median(opens), u"reading it"_s, Median(reads), 1.3);
    PrintRatio(u"editor saves a 1080p picture (median)"_s, Median(saves), u"encoding and writing"_s, Median(writes));
}
frmImgEdit* Opened(StationInABox& box, const QByteArray& content)
{
    const QString path = box.PicturePath(u"20250301"_s, u"위내시경"_s, 1);
    WriteWholeFile(path, content);
    frmImgEdit& editor = frmImgEdit::Open(path);
    editor.Show();
    return QTest::qWaitFor([&] { return !editor.Canvas().imgMain().Picture().isNull(); }, 30'000) ? &editor : nullptr;
}

void Stroke(frmImgEdit& editor, QPoint from, QPoint to)
{
    QWidget* canvas = &editor.Canvas().imgMain();
    QTest::mousePress(canvas, Qt::LeftButton, Qt::NoModifier, from);
    QMouseEvent move(QEvent::MouseMove, to, canvas->mapToGlobal(to), Qt::NoButton, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(canvas, &move);
    QTest::mouseRelease(canvas, Qt::LeftButton, Qt::NoModifier, to);
    QCoreApplication::processEvents();
}

/// Noise of what was saved against what was opened, as far from the mark as no block of the file reaches.
void BenchLoss(StationInABox& box)
{
    for (const auto& [name, content] :
         {std::pair(u"a scene"_s, ScenePicture(1, Full)), std::pair(u"fine grain"_s, Grain())}) {
        frmImgEdit* editor = Opened(box, content);
        if (editor == nullptr)
            return;
        const QImage opened = editor->Canvas().imgMain().Picture().copy();
        editor->findChild<QToolButton*>(u"cmdDMode(3)"_s)->click();
        Stroke(*editor, {100, 60}, {300, 180});
        editor->findChild<QToolButton*>(u"cmdISave"_s)->click();
        const QImage saved = LoadPicture(editor->Path());
        const auto place = [&](QPoint point) { return editor->Canvas().imgMain().PictureFromView(point).toPoint(); };
        const QRect outer = QRect(place({100, 60}), place({300, 180})).adjusted(-16, -16, 16, 16);
        double squares = 0;
        double count = 0;
        for (int y = 0; y < saved.height(); ++y) {
            for (int x = 0; x < saved.width(); ++x) {
                if (outer.contains(x, y))
                    continue;
                const QRgb one = opened.pixel(x, y);
                const QRgb other = saved.pixel(x, y);
                squares += std::pow(qRed(one) - qRed(other), 2) + std::pow(qGreen(one) - qGreen(other), 2) +
                           std::pow(qBlue(one) - qBlue(other), 2);
                count += 3;
            }
        }
        PrintFigure(u"outside the mark of a saved picture, %1"_s.arg(name),
                    u"PSNR %1 dB"_s.arg(10 * std::log10(255.0 * 255 * count / squares), 0, 'f', 1),
                    u"file %1 x as long"_s.arg(double(Files().ReadFile(editor->Path()).size()) / double(content.size()),
                                               0, 'f', 2));
        editor->Unload();
        QCoreApplication::processEvents();
    }
}

/// All five holders of a picture of 48 megapixels, with marks across the whole of it.
void BenchLargest(StationInABox& box)
{
    const QByteArray content = ScenePicture(1, {8000, 6000});
    ForgetPeak();
    double start = NowMs();
    const QString beside = box.PicturePath(u"20250301"_s, u"위내시경"_s, 1);
    WriteWholeFile(beside, content);
    start = NowMs();
    if (Pictures().LoadToEdit(beside).isNull())
        return;
    const double decoded = NowMs() - start;
    frmImgEdit* editor = Opened(box, content);
    if (editor == nullptr)
        return;
    QList<double> strokes;
    for (int at = 0; at < 9; ++at) {
        editor->findChild<QToolButton*>(u"cmdDMode(%1)"_s.arg(at % 4 + 2))->click();
        start = NowMs();
        Stroke(*editor, {10 + at, 10}, {600, 460 - at});
        strokes << NowMs() - start;
    }
    QList<double> steps;
    for (int at = 0; at < 8; ++at) {
        start = NowMs();
        editor->findChild<QToolButton*>(at % 2 == 0 ? u"cmdReDo"_s : u"cmdUnDo"_s)->click();
        editor->findChild<QToolButton*>(at % 2 == 0 ? u"cmdUnDo"_s : u"cmdReDo"_s)->click();
        QCoreApplication::processEvents();
        steps << (NowMs() - start) / 2;
    }
    start = NowMs();
    editor->findChild<QToolButton*>(u"cmdISave"_s)->click();
    const double saved = NowMs() - start;
    PrintLimited(u"editor of 48 megapixels, five holders full"_s, PeakMb(), u"MB"_s, 600);
    PrintFigure(u"  a stroke, undo or redo, save"_s,
                u"%1, %2, %3 ms"_s.arg(Median(strokes), 0, 'f', 0).arg(Median(steps), 0, 'f', 0).arg(saved, 0, 'f', 0),
                u"decoding it %1 ms"_s.arg(decoded, 0, 'f', 0));
    editor->Unload();
    QCoreApplication::processEvents();
}
} // namespace

int main(int argc, char* argv[])
{
    ChoosePlatform();
    QApplication application(argc, argv);
    StationInABox box;
    box.AddPicture(u"20250301"_s, u"위내시경"_s, 1);
    const QString path = box.PicturePath(u"20250301"_s, u"위내시경"_s, 1);
    WriteWholeFile(path, Grain());
    frmImgEdit& editor = frmImgEdit::Open(path);
    editor.Show();
    if (!QTest::qWaitFor([&] { return !editor.Canvas().imgMain().Picture().isNull(); })) {
        std::fputs("the editor didn't open\n", stderr);
        return 1;
    }
    BenchBands(editor.Canvas().imgMain());
    BenchSteps(editor);
    editor.Unload();
    QCoreApplication::processEvents();
    BenchFile(box, path);
    BenchLoss(box);
    BenchLargest(box);
    return 0;
}
