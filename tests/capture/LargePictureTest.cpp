#include "screenparts/LargePicture.h"
#include "frame/twips.h"
#include "screenparts/PictureCanvas.h"
#include "support/CaptureScreen.h"
#include "support/StoppableShare.h"

using namespace Qt::StringLiterals;

namespace {
const QString Earlier = u"20261101"_s;

/// Every pixel tells its place.
QImage Grain(QSize size)
{
    QImage picture(size, QImage::Format_RGB32);
    for (int y = 0; y < size.height(); ++y) {
        for (int x = 0; x < size.width(); ++x)
            picture.setPixel(x, y, qRgb(x * 7 % 256, y * 5 % 256, (x * 3 + y) % 256));
    }
    return picture;
}

QByteArray Bitmap(const QImage& picture)
{
    QByteArray content;
    QBuffer buffer(&content);
    picture.save(&buffer, "BMP");
    return content;
}
} // namespace

/// Pictures of the capture screen, looked at large.
class LargePictureTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_box = std::make_unique<StationInABox>();
        for (const int number : {1, 2, 3})
            m_box->AddPicture(Earlier, Stomach, number, u""_s);
    }
    void cleanup()
    {
        for (StationForm* form : LoadedForms())
            form->Unload();
        m_box.reset();
    }

    void TheNoteKeepsKeyboardAndComposition()
    {
        frmCapture& screen = OpenWithOneStill();
        screen.activateWindow();
        NoteBox& note = screen.txtCapChamgo();
        note.setFocus();
        QTRY_VERIFY(note.hasFocus());
        QInputMethodEvent composing(u"종"_s, {});
        QCoreApplication::sendEvent(&note, &composing);
        Lens(1, 1);
        QTRY_VERIFY(IsShown(u"2026-11-24 위내시경 001 · 1/1"_s));
        QVERIFY(note.hasFocus());
        QCOMPARE(note.document()->firstBlock().layout()->preeditAreaText(), u"종"_s);
        // The live picture goes on, small, and another still changes nothing but the count.
        VideoCap& live = screen.capCapture();
        QVERIFY(View().rect().contains(live.geometry()) && live.parentWidget() == &View());
        Press(u"캡쳐"_s);
        QTRY_VERIFY(IsShown(u"2026-11-24 위내시경 001 · 1/2"_s));
        View().Close();
        QVERIFY(live.parentWidget() == &screen && live.geometry() == RectFromTwips(0, 690, 8400, 6300));
        QVERIFY(note.hasFocus());
    }

    void FollowsWhatBecomesOfItsPictures()
    {
        OpenScreen();
        ShowLine(Earlier);
        Lens(2, 2);
        QTRY_VERIFY(IsShown(u"2026-11-01 위내시경 001 · 1/3"_s));
        // Marked up by another hand, and filled anew.
        WriteWholeFile(m_box->PicturePath(Earlier, Stomach, 1), StationInABox::Jpeg({100, 80}, Qt::green));
        ShowLine(Earlier);
        QTRY_COMPARE(Canvas().Picture().size(), QSize(100, 80));
        // A deleted one gives way to the next, and the last one to nothing.
        for (const QString& next : {u"002 · 1/2"_s, u"003 · 1/1"_s}) {
            m_box->Desk().answers = {true};
            ChooseOver(2, 2, 1, u"그림지우기"_s);
            QTRY_VERIFY(IsShown(u"2026-11-01 위내시경 "_s + next));
        }
        m_box->Desk().answers = {true};
        ChooseOver(2, 2, 1, u"그림지우기"_s);
        QTRY_VERIFY(!View().IsOpen());
    }

    void ZoomKeepsThePointUnderThePointer()
    {
        PictureCanvas canvas(nullptr);
        canvas.resize(300, 200);
        canvas.ShowPicture(Grain({600, 400}), false);
        QCOMPARE(canvas.Zoom(), 0.5 * canvas.devicePixelRatioF());
        const QPoint pointer(220, 40);
        const QPointF place = canvas.PictureFromCanvas(QPointF(pointer) * canvas.devicePixelRatioF());
        double last = canvas.Zoom();
        for (int notch = 0; notch < 20; ++notch) {
            QWheelEvent turned(pointer, pointer, {}, {0, 120}, Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
            QCoreApplication::sendEvent(&canvas, &turned);
            QVERIFY(canvas.Zoom() <= last * 1.2501 && canvas.Zoom() <= 8);
            last = canvas.Zoom();
            const QPointF now = canvas.PictureFromCanvas(QPointF(pointer) * canvas.devicePixelRatioF());
            QVERIFY((now - place).manhattanLength() < 1e-6);
        }
        QCOMPARE(last, 8.0);
        QTest::mouseDClick(&canvas, Qt::LeftButton);
        QCOMPARE(canvas.Zoom(), 0.5 * canvas.devicePixelRatioF());
    }

    void PixelsAreThoseOfTheFile()
    {
        const QImage picture = Grain({1920, 1080});
        WriteWholeFile(m_box->PicturePath(Earlier, Stomach, 2), Bitmap(picture));
        OpenScreen();
        ShowLine(Earlier);
        Lens(2, 4);
        QTRY_VERIFY(IsShown(u"2026-11-01 위내시경 002 · 2/3"_s));
        View().findChild<QToolButton*>(u"largePixels"_s)->click();
        QImage shown = opened->grab().toImage().copy(OnWindow(Canvas())).convertToFormat(QImage::Format_RGB32);
        shown.setDevicePixelRatio(1);
        const QPoint corner = Canvas().PictureFromCanvas({0, 0}).toPoint();
        QCOMPARE(shown, picture.copy(QRect(corner, shown.size())));
    }

    void AFootStandsUnderItsPictureAlone()
    {
        OpenScreen();
        ShowLine(Earlier);
        QPointer<QWidget> foot = new QLabel;
        View().setFootFor(
            [&](const Visit&, const ShownPicture& shown) { return shown.number == 2 ? foot.data() : nullptr; });
        auto& button = *View().findChild<QToolButton*>(u"largeFoot"_s);
        Lens(2, 2);
        QTRY_VERIFY(IsShown(u"2026-11-01 위내시경 001"_s) && button.isHidden());
        View().findChild<QToolButton*>(u"largeOn"_s)->click();
        QTRY_VERIFY(IsShown(u"2026-11-01 위내시경 002"_s) && button.isVisible() && !foot->isVisible());
        button.click();
        QVERIFY(foot->isVisible());
        // What the foot offers takes the picture's place, as near as it was looked at.
        Canvas().ZoomTo(4, {});
        View().ShowImage(Grain({640, 480}), u"1초 앞"_s);
        QVERIFY(IsShown(u"1초 앞"_s));
        QCOMPARE(Canvas().Zoom(), 4.0);
        View().findChild<QToolButton*>(u"largeOn"_s)->click();
        QTRY_VERIFY(IsShown(u"2026-11-01 위내시경 003"_s) && !foot->isVisible());
        View().Close();
        QVERIFY(foot);
    }

    void AShareThatHangsStopsNothing()
    {
        const StoppableShare share(NativePath(m_box->Root()).chopped(1));
        OpenScreen();
        ShowLine(Earlier);
        share.Stop();
        Lens(2, 2);
        QTRY_VERIFY(IsShown(u"2026-11-01 위내시경 001 · 1/3"_s));
        QVERIFY(Canvas().Picture().isNull());
        // One on this machine's own disk doesn't wait for it.
        opened->findChild<QToolButton*>(u"연결"_s)->click();
        opened->findChild<QToolButton*>(u"캡쳐"_s)->click();
        QTRY_VERIFY(opened->PicturesOf(1).At(1, 1) != nullptr);
        Lens(1, 1);
        QTRY_VERIFY(IsShown(u"2026-11-24 위내시경 대기 · 1/1"_s));
        QTRY_COMPARE(Canvas().Picture().size(), FakeVideoCap::Last()->frameSize);
        QCOMPARE(m_box->Desk().shown, QStringList());
        share.Resume();
        QTRY_VERIFY(IsShown(u"2026-11-24 위내시경 001 · 1/1"_s));
        opened->Unload();
    }

private:
    static LargePicture& View() { return *opened->findChild<LargePicture*>(); }
    static PictureCanvas& Canvas() { return *View().findChild<PictureCanvas*>(u"largeCanvas(1)"_s); }
    static void Lens(int element, int column) { Q_EMIT opened->sprCap(element).LensClicked(column, 1); }
    static bool IsShown(const QString& caption)
    {
        return View().isVisible() && View().findChild<QLabel*>(u"largeCaption(1)"_s)->text().startsWith(caption);
    }
    /// In device pixels, as far as they are the widget's alone.
    static QRect OnWindow(QWidget& widget)
    {
        const qreal scale = widget.devicePixelRatioF();
        const QPointF corner = QPointF(widget.mapTo(widget.window(), QPoint())) * scale;
        return {corner.toPoint(), QSize(int(widget.width() * scale), int(widget.height() * scale))};
    }

    std::unique_ptr<StationInABox> m_box;
};

QTEST_MAIN(LargePictureTest)
#include "LargePictureTest.moc"
