#include "contracts/ImagXpress.h"
#include "support/StationInABox.h"

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
        Columns<QPointF, QPointF>("from", "to");
        QTest::newRow("inside") << QPointF(40, 30) << QPointF(250, 160);
        QTest::newRow("one point") << QPointF(40, 30) << QPointF(40, 30);
        QTest::newRow("steep") << QPointF(100, 5) << QPointF(103, 195);
        QTest::newRow("across all of it") << QPointF(-500, -20) << QPointF(900, 240);
        QTest::newRow("outside") << QPointF(400, 300) << QPointF(500, 900);
        QTest::newRow("no number") << QPointF(std::nan(""), 10) << QPointF(150, 100);
    }

    /// Twice drawn gives the picture back, from whichever corner; final paint covers the very pixels of the band.
    void Bands()
    {
        QFETCH2(QPointF, from, QPointF, to);
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

    void ViewsAndMouse_data()
    {
        QTest::addColumn<QSize>("picture");
        QTest::addColumn<float>("factor"); // 0: fitted
        Columns<QPoint, QPointF, bool, bool>("pressed", "expected", "horizontalBar", "verticalBar");
        QTest::newRow("fitted smaller") << QSize(1920, 1080) << 0.f << QPoint(360, 30) << QPointF(960, 80) << false
                                        << false;
        QTest::newRow("fitted portrait") << QSize(1080, 1920) << 0.f << QPoint(100, 100) << QPointF(400, 400) << false
                                         << false;
        QTest::newRow("natural size") << QSize(640, 480) << 1.f << QPoint(17, 23) << QPointF(17, 23) << false << false;
        QTest::newRow("natural size, scrolled")
            << QSize(1920, 1080) << 1.f << QPoint(10, 20) << QPointF(1225, 635) << true << true;
        QTest::newRow("doubled") << QSize(640, 200) << 2.f << QPoint(100, 100) << QPointF(330, 50) << true << false;
    }

    /// The mouse tells picture twips, and a mark is seen where the mouse was.
    void ViewsAndMouse()
    {
        QFETCH6(QSize, picture, float, factor, QPoint, pressed, QPointF, expected, bool, horizontalBar, bool,
                verticalBar);
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

    void WritesWholeOrNotAtAll()
    {
        const QString path = m_box->Root() + u"mark.bmp"_s;
        WriteWholeFile(path, "what stood there");
        m_control->setTargetFile(path);
        QVERIFY_THROWS_EXCEPTION(PlatformError, m_control->WriteTargetFile());
        m_control->setPicture(Plain({640, 480}, Qt::darkRed));
        m_box->FaultyFiles().FailAt(1);
        QVERIFY_THROWS_EXCEPTION(PlatformError, m_control->WriteTargetFile());
        QCOMPARE(Files().ReadFile(path), QByteArray("what stood there"));

        m_control->setDrawWidth(2);
        m_control->DrawLine(0, 100, 640, 100, Yellow);
        m_control->WriteTargetFile();
        QCOMPARE(Files().ReadFile(path).left(3), QByteArray("\xFF\xD8\xFF"));
        const auto other = Make();
        other->setSourceFile(path);
        QCOMPARE(other->Picture().size(), QSize(640, 480));
        QVERIFY(other->Picture().pixelColor(300, 100).green() > 120);
        QVERIFY_THROWS_EXCEPTION(PlatformError, other->setSourceFile(m_box->Root() + u"none.jpg"_s));
        QVERIFY(other->Picture().isNull());
    }

private:
    static std::unique_ptr<ImagXpress> Make() { return CreateObject<ImagXpress>(u"IMAGXPR6LibCtl.ImagXpress"_s); }

    std::unique_ptr<StationInABox> m_box;
    std::unique_ptr<ImagXpress> m_control;
};

QTEST_MAIN(ImageControlTest)
#include "ImageControlTest.moc"
