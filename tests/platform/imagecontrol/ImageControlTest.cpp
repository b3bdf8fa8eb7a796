#include "contracts/ImagXpress.h"
#include "contracts/PlatformError.h"
#include "frame/components.h"
#include "frame/services.h"
#include "support/StationInABox.h"

#include <QLineF>
#include <QPainter>
#include <QPaintEvent>
#include <QRandomGenerator>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTest>

#include <cmath>

using namespace Qt::StringLiterals;

namespace {
constexpr double Yellow = 65535;

QImage Noise(QSize size)
{
    QImage picture(size, QImage::Format_RGB32);
    QRandomGenerator random(11);
    for (int y = 0; y < size.height(); ++y) {
        for (int x = 0; x < size.width(); ++x)
            picture.setPixel(x, y, random.generate() | 0xFF000000);
    }
    return picture;
}

QImage Plain(QSize size, Qt::GlobalColor colour = Qt::black)
{
    QImage picture(size, QImage::Format_RGB32);
    picture.fill(colour);
    return picture;
}

void Figure(ImagXpress& control, const QString& figure, QPointF from, QPointF to)
{
    const auto x1 = float(from.x());
    const auto y1 = float(from.y());
    const auto x2 = float(to.x());
    const auto y2 = float(to.y());
    control.setDrawStyle(figure == u"dotted"_s ? DrawStyleDot : DrawStyleSolid);
    control.setDrawWidth(2);
    if (figure == u"circle"_s)
        control.DrawArc(x1, y1, x2, y2, 1, 1, Yellow);
    else if (figure == u"box"_s)
        control.DrawRoundRect(x1, y1, x2, y2, 0, 0, Yellow);
    else
        control.DrawLine(x1, y1, x2, y2, Yellow);
}

/// Pixels that differ, as a white mask.
QImage Difference(const QImage& before, const QImage& after)
{
    QImage mask = Plain(before.size());
    for (int y = 0; y < before.height(); ++y) {
        for (int x = 0; x < before.width(); ++x) {
            if (before.pixel(x, y) != after.pixel(x, y))
                mask.setPixel(x, y, 0xFFFFFFFF);
        }
    }
    return mask;
}

int Count(const QImage& mask)
{
    int count = 0;
    for (int y = 0; y < mask.height(); ++y) {
        for (int x = 0; x < mask.width(); ++x)
            count += mask.pixel(x, y) == 0xFFFFFFFF ? 1 : 0;
    }
    return count;
}

/// Where a widget is painted.
class PaintedRegion : public QObject
{
public:
    QRegion region;

    explicit PaintedRegion(QWidget& widget) : QObject(&widget)
    {
        QCoreApplication::processEvents();
        widget.installEventFilter(this);
    }
    bool eventFilter(QObject*, QEvent* event) override
    {
        if (event->type() == QEvent::Paint)
            region += static_cast<QPaintEvent*>(event)->region();
        return false;
    }
};

/// What stands on the screen when only that region was painted.
QImage After(QImage screen, const QImage& whole, const QRegion& painted)
{
    QPainter painter(&screen);
    painter.setClipRegion(painted);
    painter.drawImage(0, 0, whole);
    return screen;
}

const QStringList Figures{u"line"_s, u"dotted"_s, u"box"_s, u"circle"_s};
} // namespace

class ImageControlTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_box = std::make_unique<StationInABox>();
        m_control = Make();
        m_control->resize(720, 480);
        m_control->show();
    }
    void cleanup()
    {
        m_control.reset();
        m_box.reset();
    }

    void PicturesAreValues()
    {
        const auto other = Make();
        const QImage picture = Noise({300, 200});
        m_control->setPicture(picture);
        other->setPicture(m_control->Picture());
        QCOMPARE(other->Picture().constBits(), m_control->Picture().constBits());
        m_control->DrawLine(0, 0, 300, 200, Yellow);
        QCOMPARE(other->Picture(), picture);
        QVERIFY(m_control->Picture() != picture);
        other->setPicture({});
        QVERIFY(other->Picture().isNull());
    }

    void Bands_data()
    {
        QTest::addColumn<QPointF>("from");
        QTest::addColumn<QPointF>("to");
        QTest::newRow("inside") << QPointF(40, 30) << QPointF(250, 160);
        QTest::newRow("one point") << QPointF(40, 30) << QPointF(40, 30);
        QTest::newRow("flat") << QPointF(10, 50) << QPointF(290, 56);
        QTest::newRow("steep") << QPointF(100, 5) << QPointF(103, 195);
        QTest::newRow("one row") << QPointF(10, 50) << QPointF(290, 50);
        QTest::newRow("across the corner") << QPointF(-50, -70) << QPointF(120, 90);
        QTest::newRow("across all of it") << QPointF(-500, -20) << QPointF(900, 240);
        QTest::newRow("outside") << QPointF(400, 300) << QPointF(500, 900);
        QTest::newRow("far away") << QPointF(-3e9, 1e12) << QPointF(150, 100);
        QTest::newRow("no number") << QPointF(std::nan(""), 10) << QPointF(150, 100);
    }

    /// Twice drawn gives the picture back, from whichever corner; final paint covers the very pixels of the band.
    void Bands()
    {
        QFETCH(QPointF, from);
        QFETCH(QPointF, to);
        const QImage before = Noise({300, 200});
        for (const QString& figure : Figures) {
            for (const bool swapped : {false, true}) {
                const QPointF first = swapped ? QPointF(to.x(), from.y()) : from;
                const QPointF second = swapped ? QPointF(from.x(), to.y()) : to;
                m_control->setPicture(before);
                m_control->setDrawMode(DrawModeInvert);
                Figure(*m_control, figure, first, second);
                const QImage band = Difference(before, m_control->Picture());
                Figure(*m_control, figure, first, second);
                QCOMPARE(m_control->Picture(), before);
                m_control->setDrawMode(DrawModeCopy);
                Figure(*m_control, figure, first, second);
                const QImage after = m_control->Picture();
                QCOMPARE(Difference(before, after), band);
                for (int at = 0; at < 300 * 200; ++at) {
                    if (band.pixel(at % 300, at / 300) == 0xFFFFFFFF)
                        QCOMPARE(after.pixel(at % 300, at / 300), qRgb(255, 255, 0));
                }
                if (figure == u"box"_s || figure == u"circle"_s) {
                    m_control->setPicture(before);
                    Figure(*m_control, figure, second, first);
                    QCOMPARE(m_control->Picture(), after);
                }
            }
        }
    }

    void ThePenIsTwoPixelsWide()
    {
        const auto mask = [&](const QString& figure, QPointF from, QPointF to) {
            m_control->setPicture(Plain({300, 200}));
            m_control->setDrawMode(DrawModeInvert);
            Figure(*m_control, figure, from, to);
            return m_control->Picture();
        };
        QCOMPARE(Count(mask(u"line"_s, {50, 50}, {50, 50})), 4);
        const QImage flat = mask(u"line"_s, {20, 50}, {120, 50});
        for (int y = 48; y <= 51; ++y)
            QCOMPARE(flat.pixel(70, y) == 0xFFFFFFFF, y == 49 || y == 50);
        const int slanting = Count(mask(u"line"_s, {20, 20}, {120, 120}));
        QVERIFY(slanting > 260 && slanting < 310);
        QCOMPARE(Count(mask(u"box"_s, {20, 20}, {120, 80})), 102 * 62 - 98 * 58);
        const QImage dots = mask(u"dotted"_s, {20, 50}, {120, 50});
        QVERIFY(Count(dots) > 70 && Count(dots) < 130);
        // A flat circle, too, is closed: nothing leaks out of it.
        for (const QSizeF& axes : {QSizeF(280, 8), QSizeF(200, 150), QSizeF(9, 180), QSizeF(30, 30)}) {
            QImage ring = mask(u"circle"_s, {10, 10}, {10 + axes.width(), 10 + axes.height()});
            const double around = M_PI * std::hypot(axes.width(), axes.height()) / std::sqrt(2.0);
            QVERIFY2(Count(ring) > 1.6 * around * 0.8 && Count(ring) < 2.4 * around,
                     qPrintable(QString::number(Count(ring))));
            QList<QPoint> open{{0, 0}};
            while (!open.isEmpty()) {
                const QPoint at = open.takeLast();
                if (!ring.valid(at) || ring.pixel(at) != 0xFF000000)
                    continue;
                ring.setPixel(at, 0xFF123456);
                open << at + QPoint(1, 0) << at - QPoint(1, 0) << at + QPoint(0, 1) << at - QPoint(0, 1);
            }
            QCOMPARE(ring.pixel(int(10 + axes.width() / 2), int(10 + axes.height() / 2)), 0xFF000000);
        }
    }

    void TextStandsBelowItsPoint()
    {
        m_control->setPicture(Plain({300, 200}));
        QFont font(u"바탕"_s, 24);
        font.setStrikeOut(true);
        font.setUnderline(true);
        m_control->setDrawFont(font);
        m_control->DrawText(40, 60, u"용종 polyp"_s, Yellow);
        const QImage drawn = m_control->Picture();
        QRect ink;
        for (int at = 0; at < 300 * 200; ++at) {
            if (drawn.pixel(at % 300, at / 300) != 0xFF000000)
                ink |= QRect(at % 300, at / 300, 1, 1);
        }
        // 24 points are 32 pixels.
        QVERIFY(ink.left() >= 38 && ink.left() < 50);
        QVERIFY(ink.top() >= 60 && ink.bottom() < 110 && ink.height() > 24);
        m_control->setPicture(Plain({300, 200}));
        font.setStrikeOut(false);
        m_control->setDrawFont(font);
        m_control->DrawText(40, 60, u"용종 polyp"_s, Yellow);
        QCOMPARE(m_control->Picture(), drawn);
    }

    void ViewsAndMouse_data()
    {
        QTest::addColumn<QSize>("picture");
        QTest::addColumn<float>("factor"); // 0: fitted
        QTest::addColumn<QPoint>("pressed");
        QTest::addColumn<QPointF>("expected");
        QTest::addColumn<bool>("horizontalBar");
        QTest::addColumn<bool>("verticalBar");
        QTest::newRow("fits as it is") << QSize(640, 480) << 0.f << QPoint(320, 240) << QPointF(320, 240) << false
                                       << false;
        QTest::newRow("fitted smaller") << QSize(1920, 1080) << 0.f << QPoint(360, 30) << QPointF(960, 80) << false
                                        << false;
        QTest::newRow("fitted portrait") << QSize(1080, 1920) << 0.f << QPoint(100, 100) << QPointF(400, 400) << false
                                         << false;
        QTest::newRow("fitted larger") << QSize(180, 100) << 0.f << QPoint(200, 200) << QPointF(50, 50) << false
                                       << false;
        QTest::newRow("natural size") << QSize(640, 480) << 1.f << QPoint(17, 23) << QPointF(17, 23) << false << false;
        QTest::newRow("natural size, scrolled")
            << QSize(1920, 1080) << 1.f << QPoint(10, 20) << QPointF(1225, 635) << true << true;
        QTest::newRow("doubled") << QSize(640, 200) << 2.f << QPoint(100, 100) << QPointF(330, 50) << true << false;
    }

    /// The mouse tells picture twips, and a mark is seen where the mouse was.
    void ViewsAndMouse()
    {
        QFETCH(QSize, picture);
        QFETCH(float, factor);
        QFETCH(QPoint, pressed);
        QFETCH(QPointF, expected);
        QFETCH(bool, horizontalBar);
        QFETCH(bool, verticalBar);
        m_control->setPicture(Plain(picture));
        if (factor > 0)
            m_control->ScaleBy(factor);
        else
            m_control->ZoomToFit(2);
        for (QScrollBar* bar : m_control->findChildren<QScrollBar*>()) {
            QCOMPARE(bar->isVisible(), bar->orientation() == Qt::Horizontal ? horizontalBar : verticalBar);
            bar->setValue(bar->maximum());
        }
        QSignalSpy down(m_control.get(), &ImagXpress::MouseDown);
        QTest::mousePress(m_control.get(), Qt::LeftButton, Qt::NoModifier, pressed);
        QTest::mouseRelease(m_control.get(), Qt::LeftButton, Qt::NoModifier, pressed);
        QCOMPARE(down.size(), 1);
        QCOMPARE(down[0][0].toInt(), 1);
        const QPointF place = QPointF(down[0][2].toFloat(), down[0][3].toFloat()) / 15;
        QCOMPARE(place, expected);
        QCOMPARE(m_control->ViewFromPicture(place), QPointF(pressed));

        QCOMPARE(QColor(m_control->grab().toImage().pixel(pressed)), QColor(Qt::black));
        m_control->setDrawMode(DrawModeCopy);
        m_control->setDrawStyle(DrawStyleSolid);
        m_control->setDrawWidth(20);
        m_control->DrawLine(float(place.x()), float(place.y()), float(place.x()), float(place.y()), Yellow);
        QCOMPARE(m_control->grab().toImage().pixelColor(pressed), QColor(Qt::yellow));
    }

    /// What the screen has repainted in parts is what it would show when painted whole.
    void TheScreenFollowsTheFigure()
    {
        QRandomGenerator random(23);
        for (const QSize& size : {QSize(640, 480), QSize(1919, 1081), QSize(1080, 3000), QSize(150, 100)}) {
            m_control->setPicture(Noise(size));
            m_control->ZoomToFit(2);
            QImage screen(m_control->size(), QImage::Format_RGB32);
            m_control->render(&screen);
            for (int step = 0; step < 40; ++step) {
                m_control->setDrawMode(step % 2 == 0 ? DrawModeInvert : DrawModeCopy);
                const auto point = [&] { return QPointF(random.bounded(size.width()), random.bounded(size.height())); };
                PaintedRegion painted(*m_control);
                Figure(*m_control, Figures[int(random.bounded(4u))], point(), point());
                QCoreApplication::processEvents();
                const QRegion region = painted.region; // before the test itself paints
                QImage after(m_control->size(), QImage::Format_RGB32);
                m_control->render(&after);
                QCOMPARE(Difference(screen, after), Difference(screen, After(screen, after, region)));
                screen = after;
            }
        }
    }

    void AQuickSecondPressIsAPress()
    {
        m_control->setPicture(Plain({640, 480}));
        QSignalSpy down(m_control.get(), &ImagXpress::MouseDown);
        QTest::mouseClick(m_control.get(), Qt::LeftButton, Qt::NoModifier, QPoint(5, 5));
        QTest::mouseDClick(m_control.get(), Qt::LeftButton, Qt::NoModifier, QPoint(5, 5));
        QCOMPARE(down.size(), 2);
    }

    void WritesWholeOrNotAtAll()
    {
        const QString path = m_box->Root() + u"mark.bmp"_s;
        WriteWholeFile(path, "what stood there");
        m_control->setTargetFile(path);
        QVERIFY_EXCEPTION_THROWN(m_control->WriteTargetFile(), PlatformError);
        m_control->setPicture(Plain({640, 480}, Qt::darkRed));
        m_box->FaultyFiles().FailAt(1);
        QVERIFY_EXCEPTION_THROWN(m_control->WriteTargetFile(), PlatformError);
        QCOMPARE(Files().ReadFile(path), QByteArray("what stood there"));

        m_control->setDrawWidth(2);
        m_control->DrawLine(0, 100, 640, 100, Yellow);
        m_control->WriteTargetFile();
        QCOMPARE(Files().ReadFile(path).left(3), QByteArray("\xFF\xD8\xFF"));
        const auto other = Make();
        other->setSourceFile(path);
        QCOMPARE(other->Picture().size(), QSize(640, 480));
        QVERIFY(other->Picture().pixelColor(300, 100).green() > 120);
        QVERIFY_EXCEPTION_THROWN(other->setSourceFile(m_box->Root() + u"none.jpg"_s), PlatformError);
        QVERIFY(other->Picture().isNull());
    }

    /// A picture with a transparent ground can be marked, undone and stored like any other.
    void TransparentPicturesLieOnWhite()
    {
        QImage glass({64, 64}, QImage::Format_ARGB32_Premultiplied);
        glass.fill(Qt::transparent);
        m_control->setPicture(glass);
        m_control->setTargetFile(m_box->Root() + u"glass.jpg"_s);
        m_control->WriteTargetFile();
        QVERIFY(LoadPicture(m_box->Root() + u"glass.jpg"_s).pixelColor(30, 30).lightness() > 250);
        m_control->setDrawMode(DrawModeInvert);
        m_control->DrawLine(0, 10, 64, 10, Yellow);
        m_control->DrawLine(0, 10, 64, 10, Yellow);
        QCOMPARE(m_control->Picture(), Plain({64, 64}, Qt::white));
    }

    /// What the operator looks at stays in sight.
    void AZoomKeepsTheMiddle()
    {
        m_control->setPicture(Plain({1920, 1080}));
        m_control->ZoomToFit(2);
        for (const float factor : {2.F, 0.8F, 1.5F, 1.F}) {
            m_control->ScaleBy(factor);
            const QPointF middle = m_control->PictureFromView(QPointF(352, 232));
            QVERIFY2(QLineF(middle, {960, 540}).length() < 12,
                     qPrintable(u"%1: %2, %3"_s.arg(factor).arg(middle.x()).arg(middle.y())));
        }
    }

    void AnEmptyControlTakesEverything()
    {
        m_control->DrawLine(0, 0, 10, 10, Yellow);
        m_control->DrawText(0, 0, u"x"_s, Yellow);
        m_control->ScaleBy(2);
        m_control->ZoomToFit(2);
        QTest::mouseClick(m_control.get(), Qt::LeftButton);
        QVERIFY(m_control->Picture().isNull());
    }

private:
    static std::unique_ptr<ImagXpress> Make() { return CreateObject<ImagXpress>(u"IMAGXPR6LibCtl.ImagXpress"_s); }

    std::unique_ptr<StationInABox> m_box;
    std::unique_ptr<ImagXpress> m_control;
};

QTEST_MAIN(ImageControlTest)
#include "ImageControlTest.moc"
