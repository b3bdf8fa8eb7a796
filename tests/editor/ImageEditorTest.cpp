#include "capture/frmCapture.h"
#include "contracts/fpSpread.h"
#include "contracts/pictures.h"
#include "contracts/twips.h"
#include "editor/edit_settings.h"
#include "editor/frmImgEdit.h"
#include "editor/TextEntryBox.h"
#include "launch/context/settings_file.h"
#include "launch/context/VisitContext.h"
#include "records/text/text_routines.h"
#include "support/StationInABox.h"

#include <QColorDialog>
#include <QFontDialog>
#include <QRandomGenerator>
#include <QTest>
#include <QTimer>
#include <QToolButton>

using namespace Qt::StringLiterals;

namespace {
const QString Stomach = u"위내시경"_s;
const QString Day = u"20250301"_s;
const QString Refused = u"확대나 축소시에는 이미지를 편집할수 없습니다.!!"_s;

bool IsYellow(const QImage& picture, QPoint at)
{
    const QColor colour = picture.pixelColor(at);
    return colour.red() > 150 && colour.green() > 120;
}

/// Pixels that the operator sees as marked.
QRect Marked(const QImage& picture)
{
    QRect marked;
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x) {
            if (qGreen(picture.pixel(x, y)) > 100)
                marked |= QRect(x, y, 1, 1);
        }
    }
    return marked;
}
} // namespace

class ImageEditorTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { m_box = std::make_unique<StationInABox>(); }
    void cleanup() { m_box.reset(); }

    void AHistoryPictureIsMarkedAndShownAnew()
    {
        m_box->AddPicture(Day, Stomach, 1);
        m_box->AddPicture(Day, Stomach, 2, u"용종"_s);
        frmCapture& screen = Form<frmCapture>();
        screen.Show();
        screen.ShowStored();
        Q_EMIT screen.sprCap(3).DblClick(1, 1);
        Q_EMIT screen.sprCap(2).DblClick(2, 2);
        Q_EMIT screen.sprCap(2).DblClick(1, 1);
        Q_EMIT screen.sprCap(2).DblClick(6, 1);
        QVERIFY(FindForm(u"frmImgEdit"_s) == nullptr);

        const auto thumbnail = [&] {
            screen.sprCap(2).setRow(1);
            screen.sprCap(2).setCol(4);
            return screen.sprCap(2).TypePictPicture();
        };
        const QImage before = thumbnail();
        QVERIFY(!before.isNull());
        const QByteArray stored = Files().ReadFile(m_box->PicturePath(Day, Stomach, 2));
        for (const bool save : {false, true}) {
            OnceOpen([this, save](frmImgEdit& editor) {
                QCOMPARE(editor.windowModality(), Qt::ApplicationModal);
                QCOMPARE(editor.lblFilePath().text(), m_box->PicturePath(Day, Stomach, 2));
                Tool(3);
                Drag({100, 100}, {540, 380});
                if (save)
                    Click(u"cmdISave"_s);
                Click(u"cmdIExit"_s);
            });
            Q_EMIT screen.sprCap(2).DblClick(4, 1);
            QCOMPARE(VisitContext.ImageSaved, save);
            QCOMPARE(thumbnail() != before, save);
            QCOMPARE(Files().ReadFile(m_box->PicturePath(Day, Stomach, 2)) != stored, save);
        }
        QVERIFY(m_box->Desk().shown.isEmpty());
        QVERIFY(IsYellow(LoadPicture(m_box->PicturePath(Day, Stomach, 2)), {300, 100}));
        QVERIFY(FindForm(u"frmImgEdit"_s) == nullptr);
    }

    void MarksLandUnderThePointer_data()
    {
        QTest::addColumn<QSize>("size");
        QTest::addColumn<int>("tool");
        QTest::addColumn<bool>("zoomedAndBack");
        for (const QSize& size : {QSize(640, 480), QSize(1920, 1080), QSize(1080, 1920)}) {
            for (const int tool : {0, 2, 3, 4, 5}) {
                QTest::addRow("%dx%d tool %d", size.width(), size.height(), tool) << size << tool << false;
                QTest::addRow("%dx%d tool %d natural", size.width(), size.height(), tool) << size << tool << true;
            }
        }
    }

    /// Both drag directions; the saved file holds the figure between the two points that the pointer touched.
    void MarksLandUnderThePointer()
    {
        QFETCH(QSize, size);
        QFETCH(int, tool);
        QFETCH(bool, zoomedAndBack);
        frmImgEdit& editor = Open(size);
        if (zoomedAndBack) {
            Click(u"cmdZoomOut"_s);
            Click(u"cmdZoomIn"_s);
            QCOMPARE(editor.imgMain().ViewScale(), 1.0);
        }
        Tool(tool);
        for (const bool backwards : {false, true}) {
            const QPoint one(50, 60);
            const QPoint two(200, 220);
            const qreal scale = editor.imgMain().ViewScale();
            if (backwards)
                Drag(two, one, {400, 300});
            else
                Drag(one, two, {400, 300});
            const QRect marked = Marked(editor.imgMain().Picture());
            const QRect expected = QRectF(QPointF(one) / scale, QPointF(two) / scale).toAlignedRect();
            // The free line went by way of the third point.
            const QRect by((QPointF(400, 300) / scale).toPoint(), QSize(1, 1));
            const QRect reached = (tool == 0 ? expected | by : expected) & QRect(QPoint(), size);
            QVERIFY2(reached.adjusted(-3, -3, 3, 3).contains(marked), qPrintable(QDebug::toString(marked)));
            QVERIFY2(marked.adjusted(-8, -8, 8, 8).contains(reached), qPrintable(QDebug::toString(marked)));
            Click(u"cmdISave"_s);
            const QImage read = LoadPicture(editor.lblFilePath().text());
            QCOMPARE(read.size(), size);
            QVERIFY(Marked(read).intersects(marked));
            Click(u"cmdUnDo"_s);
            QVERIFY(Marked(editor.imgMain().Picture()).isNull());
            if (zoomedAndBack) {
                // Undo fits the picture; natural size is a zoom step away and back.
                Click(u"cmdZoomOut"_s);
                Click(u"cmdZoomIn"_s);
            }
        }
    }

    void AStrokeMayLeaveTheCanvas()
    {
        frmImgEdit& editor = Open({640, 480});
        for (const int tool : {0, 2, 3, 4, 5}) {
            Tool(tool);
            Drag({300, 200}, {-900, 3000}, {5000, -70});
            QVERIFY(!Marked(editor.imgMain().Picture()).isNull());
            Click(u"cmdUnDo"_s);
            QVERIFY(Marked(editor.imgMain().Picture()).isNull());
        }
    }

    void PressesThatDoNothing()
    {
        frmImgEdit& editor = Open({640, 480});
        const QImage before = editor.imgMain().Picture();
        QTest::mousePress(&editor.imgMain(), Qt::RightButton, Qt::NoModifier, {50, 50});
        QTest::mouseMove(&editor.imgMain(), {90, 90});
        QTest::mouseRelease(&editor.imgMain(), Qt::RightButton, Qt::NoModifier, {90, 90});
        Click(u"cmdZoomIn"_s);
        QCOMPARE(editor.ZoomLevel(), 4);
        QTest::mousePress(&editor.imgMain(), Qt::RightButton, Qt::NoModifier, {50, 50});
        QVERIFY(m_box->Desk().shown.isEmpty());
        Tool(3);
        Drag({50, 50}, {90, 90});
        QCOMPARE(m_box->Desk().shown, QStringList{Refused});
        QCOMPARE(editor.imgMain().Picture(), before);
        QVERIFY(!Button(u"cmdUnDo"_s).isEnabled());
        QVERIFY(!Button(u"cmdReDo"_s).isEnabled());
    }

    void ZoomEndsAtBothEnds()
    {
        frmImgEdit& editor = Open({640, 480});
        for (int click = 0; click < 6; ++click)
            Click(u"cmdZoomOut"_s);
        QCOMPARE(editor.ZoomLevel(), 9);
        QCOMPARE(editor.imgMain().ViewScale(), 2.0);
        QVERIFY(!Button(u"cmdZoomOut"_s).isEnabled());
        QCOMPARE(editor.imgMain().cursor().shape(), Qt::OpenHandCursor);
        QCOMPARE(editor.imgMain().size(), QSize(720, 480));
        for (int click = 0; click < 9; ++click)
            Click(u"cmdZoomIn"_s);
        QCOMPARE(editor.ZoomLevel(), 1);
        QVERIFY(!Button(u"cmdZoomIn"_s).isEnabled());
        QVERIFY(Button(u"cmdZoomOut"_s).isEnabled());
    }

    void TextStandsWhereItsBoxWas_data()
    {
        QTest::addColumn<QSize>("size");
        QTest::addColumn<QPoint>("from");
        QTest::addColumn<QPoint>("to");
        QTest::newRow("to the lower right") << QSize(640, 480) << QPoint(100, 80) << QPoint(300, 140);
        QTest::newRow("to the upper left") << QSize(640, 480) << QPoint(300, 140) << QPoint(100, 80);
        QTest::newRow("fitted") << QSize(1920, 1080) << QPoint(300, 140) << QPoint(100, 80);
        QTest::newRow("one point") << QSize(640, 480) << QPoint(100, 80) << QPoint(100, 80);
    }

    void TextStandsWhereItsBoxWas()
    {
        QFETCH(QSize, size);
        QFETCH(QPoint, from);
        QFETCH(QPoint, to);
        frmImgEdit& editor = Open(size);
        Tool(1);
        QCOMPARE(editor.imgMain().cursor().shape(), Qt::IBeamCursor);
        Drag(from, to);
        TextEntryBox& box = editor.txtText();
        QVERIFY(box.isVisible());
        QCOMPARE(box.pos(), QPoint(100, 80));
        QVERIFY(box.width() >= qAbs(to.x() - from.x()) && box.height() >= qAbs(to.y() - from.y()));
        QCOMPARE(QApplication::focusWidget(), &box);
        QTest::keyClicks(&box, u"  polyp "_s);
        // What an input method has put together, and what it has still in hand.
        QInputMethodEvent whole;
        whole.setCommitString(u"용"_s);
        QCoreApplication::sendEvent(&box, &whole);
        QInputMethodEvent composing(u"종"_s, {});
        QCoreApplication::sendEvent(&box, &composing);
        QCOMPARE(box.text(), u"  polyp 용"_s);
        const QSize seen = box.size();
        QTest::keyClick(&box, Qt::Key_Return);
        QVERIFY(!box.isVisible());
        QVERIFY(box.text().isEmpty());
        const QImage drawn = editor.imgMain().Picture();
        const QRect marked = Marked(drawn);
        const qreal scale = editor.imgMain().ViewScale();
        const QRect place = QRectF(QPointF(100, 80) / scale, QSizeF(seen) / scale).toAlignedRect();
        QVERIFY2(place.adjusted(-3, -3, 3, 3).contains(marked), qPrintable(QDebug::toString(marked)));
        QVERIFY(marked.left() < place.left() + 6 && marked.height() > 12);

        Click(u"cmdUnDo"_s);
        Drag(from, to);
        QTest::keyClicks(&box, u"polyp "_s);
        whole.setCommitString(u"용종"_s);
        QCoreApplication::sendEvent(&box, &whole);
        QTest::keyClick(&box, Qt::Key_Enter);
        QCOMPARE(editor.imgMain().Picture(), drawn);
        Drag(from, to);
        QTest::keyClick(&box, Qt::Key_Space);
        QTest::keyClick(&box, Qt::Key_Return);
        QCOMPARE(editor.imgMain().Picture(), drawn);
        QCOMPARE(editor.Chain().HolderIndex(), 3);
        QCOMPARE(editor.imgImage(3).Picture(), drawn);
    }

    void ATextThatIsLeftLeavesNothing_data()
    {
        QTest::addColumn<QString>("button");
        QTest::newRow("another tool") << u"cmdDMode(4)"_s;
        QTest::newRow("save") << u"cmdISave"_s;
        QTest::newRow("zoom") << u"cmdZoomOut"_s;
        QTest::newRow("redo") << u"cmdReDo"_s;
        QTest::newRow("a press on the canvas") << QString();
    }

    void ATextThatIsLeftLeavesNothing()
    {
        QFETCH(QString, button);
        frmImgEdit& editor = Open({640, 480});
        Tool(4);
        for (int stroke = 0; stroke < 4; ++stroke)
            Drag({10, 20 * stroke + 20}, {600, 20 * stroke + 20});
        Click(u"cmdUnDo"_s);
        const QImage before = editor.imgMain().Picture();
        Tool(1);
        Drag({100, 200}, {300, 260});
        QTest::keyClicks(&editor.txtText(), u"never mind"_s);
        if (button.isEmpty())
            QTest::mousePress(&editor.imgMain(), Qt::RightButton, Qt::NoModifier, {400, 300});
        else
            Click(button);
        QVERIFY(!editor.txtText().isVisible() || button.isEmpty());
        if (button.isEmpty())
            Tool(4);
        QCOMPARE(editor.Chain().HolderIndex(), button == u"cmdReDo"_s ? 5 : 4);
        if (button == u"cmdISave"_s) {
            const QImage saved = LoadPicture(editor.lblFilePath().text());
            QVERIFY(IsYellow(saved, {300, 60}));
            QVERIFY(!IsYellow(saved, {300, 80}));
        }
        if (button != u"cmdReDo"_s) {
            QCOMPARE(editor.imgMain().Picture(), before);
            Click(u"cmdReDo"_s);
        }
        QVERIFY(IsYellow(editor.imgMain().Picture(), {300, 80}));
    }

    void KeysWaitForStrokeAndText()
    {
        frmImgEdit& editor = Open({640, 480});
        Tool(4);
        Drag({10, 20}, {600, 20});
        const QImage one = editor.imgMain().Picture();
        QTest::mousePress(&editor.imgMain(), Qt::LeftButton, Qt::NoModifier, {10, 90});
        QTest::keyClick(&editor, Qt::Key_Z, Qt::ControlModifier);
        QTest::keyClick(&editor, Qt::Key_S, Qt::ControlModifier);
        QCOMPARE(editor.imgMain().Picture(), one);
        QTest::mouseRelease(&editor.imgMain(), Qt::LeftButton, Qt::NoModifier, {600, 90});
        QVERIFY(!VisitContext.ImageSaved);
        QVERIFY(IsYellow(editor.imgMain().Picture(), {300, 90}));
        QTest::keyClick(&editor, Qt::Key_Z, Qt::ControlModifier);
        QCOMPARE(editor.imgMain().Picture(), one);
        QTest::keyClick(&editor, Qt::Key_Y, Qt::ControlModifier);
        QVERIFY(IsYellow(editor.imgMain().Picture(), {300, 90}));
        Tool(1);
        Drag({100, 200}, {300, 260});
        QTest::keyClick(&editor.txtText(), Qt::Key_S, Qt::ControlModifier);
        QVERIFY(!VisitContext.ImageSaved);
        QVERIFY(editor.txtText().isVisible());
        Tool(4);
        QTest::keyClick(&editor, Qt::Key_S, Qt::ControlModifier);
        QVERIFY(VisitContext.ImageSaved);
    }

    void BadPicturesCloseTheEditor_data()
    {
        QTest::addColumn<QByteArray>("content");
        QByteArray huge = StationInABox::Jpeg({64, 64}, Qt::red);
        const qsizetype frame = huge.indexOf("\xFF\xC0");
        huge.replace(frame + 5, 4, "\xFD\xE8\xFD\xE8");
        QTest::newRow("empty") << QByteArray();
        QTest::newRow("cut in its header") << huge.left(40);
        QTest::newRow("65,000 pixels square") << huge;
        QTest::newRow("no picture") << QByteArray("GIF? no.");
    }

    void BadPicturesCloseTheEditor()
    {
        QFETCH(QByteArray, content);
        const QString path = m_box->PicturePath(Day, Stomach, 1);
        m_box->AddPicture(Day, Stomach, 1);
        WriteWholeFile(path, content);
        frmImgEdit& editor = Form<frmImgEdit>();
        editor.lblFilePath().setText(path);
        editor.ShowModal();
        QCOMPARE(m_box->Desk().shown, QStringList{u"그림을 읽을 수 없습니다.!!"_s});
        QCOMPARE(Files().ReadFile(path), content);
        QVERIFY(FindForm(u"frmImgEdit"_s) == nullptr);
    }

    void AFailedSaveKeepsTheFile()
    {
        frmImgEdit& editor = Open({640, 480});
        const QString path = editor.lblFilePath().text();
        const QByteArray stored = Files().ReadFile(path);
        Tool(4);
        Drag({10, 20}, {600, 20});
        m_box->FaultyFiles().FailAt(1);
        Click(u"cmdISave"_s);
        QCOMPARE(m_box->Desk().shown.size(), 1);
        QCOMPARE(Files().ReadFile(path), stored);
        QVERIFY(!VisitContext.ImageSaved);
        Click(u"cmdISave"_s);
        QVERIFY(VisitContext.ImageSaved);
        DeleteFile(path);
        VisitContext.ImageSaved = false;
        Click(u"cmdISave"_s);
        QVERIFY(!VisitContext.ImageSaved && !FileExists(path));
        QCOMPARE(m_box->Desk().shown.size(), 1);
    }

    void Settings_data()
    {
        QTest::addColumn<QString>("key");
        QTest::addColumn<QString>("value");
        QTest::addColumn<QString>("text"); // name, bold, size, italic, underline, strikethrough, colour
        const QString standing = u"바탕 0 16 0 0 0 65535"_s;
        QTest::newRow("none") << QString() << QString() << standing;
        QTest::newRow("a name") << u"Font Name"_s << u"굴림"_s << u"굴림 0 16 0 0 0 65535"_s;
        QTest::newRow("a long name") << u"Font Name"_s << u"NanumGothicCoding"_s << u"NanumGothi 0 16 0 0 0 65535"_s;
        QTest::newRow("a name of rubbish") << u"Font Name"_s << u"a\\b'c"_s << u"a/b c 0 16 0 0 0 65535"_s;
        QTest::newRow("no name") << u"Font Name"_s << u"   "_s << standing;
        QTest::newRow("bold") << u"Font Bold"_s << u"Y"_s << u"바탕 1 16 0 0 0 65535"_s;
        QTest::newRow("nearly bold") << u"Font Bold"_s << u"y"_s << standing;
        QTest::newRow("size") << u"Font Size"_s << u"24"_s << u"바탕 0 24 0 0 0 65535"_s;
        QTest::newRow("size of nothing") << u"Font Size"_s << u"0"_s << standing;
        QTest::newRow("size below nothing") << u"Font Size"_s << u"-3"_s << standing;
        QTest::newRow("size beyond all") << u"Font Size"_s << u"999999999"_s << standing;
        QTest::newRow("size of rubbish") << u"Font Size"_s << u"12pt"_s << standing;
        QTest::newRow("italic") << u"Font Italic"_s << u"Y"_s << u"바탕 0 16 1 0 0 65535"_s;
        QTest::newRow("underline") << u"Font Underline"_s << u"Y"_s << u"바탕 0 16 0 1 0 65535"_s;
        QTest::newRow("strikethrough") << u"Font Strikethrough"_s << u"Y"_s << u"바탕 0 16 0 0 1 65535"_s;
        QTest::newRow("colour") << u"Color"_s << u"255"_s << u"바탕 0 16 0 0 0 255"_s;
        QTest::newRow("black") << u"Color"_s << u"0"_s << standing;
        QTest::newRow("no colour") << u"Color"_s << u"-1"_s << standing;
        QTest::newRow("colour beyond all") << u"Color"_s << u"999999999"_s << standing;
        QTest::newRow("colour of rubbish") << u"Color"_s << u"빨강"_s << standing;
    }

    void Settings()
    {
        QFETCH(QString, key);
        QFETCH(QString, value);
        if (!key.isEmpty())
            WriteSetting(u"Image Edit Setting"_s, key, value);
        const EditSettings settings = LoadEditSettings();
        const QFont& font = settings.font;
        QTEST(u"%1 %2 %3 %4 %5 %6 %7"_s.arg(font.family())
                  .arg(font.bold() ? 1 : 0)
                  .arg(font.pointSize())
                  .arg(font.italic() ? 1 : 0)
                  .arg(font.underline() ? 1 : 0)
                  .arg(font.strikeOut() ? 1 : 0)
                  .arg(settings.colour),
              "text");
    }

    void ColourAndFontOutlastTheEditor()
    {
        frmImgEdit& editor = Open({640, 480});
        Click(u"cmdColor"_s, [](QWidget* dialog) { qobject_cast<QDialog*>(dialog)->reject(); });
        editor.Unload();
        QCOMPARE(ReadSetting(u"Image Edit Setting"_s, u"Color"_s, 10), u"0"_s);

        Open({640, 480});
        Click(u"cmdColor"_s, [](QWidget* dialog) {
            QCOMPARE(dialog->windowTitle(), u"글자색 지정..."_s);
            qobject_cast<QColorDialog*>(dialog)->setCurrentColor(QColor(0, 200, 100));
            qobject_cast<QDialog*>(dialog)->accept();
        });
        Click(u"cmdFont"_s, [](QWidget* dialog) {
            QCOMPARE(dialog->windowTitle(), u"글씨체 선택..."_s.replace(u'씨', u'자'));
            QFont font(u"UnDotum"_s, 28);
            font.setBold(true);
            qobject_cast<QFontDialog*>(dialog)->setCurrentFont(font);
            qobject_cast<QDialog*>(dialog)->accept();
        });
        Click(u"cmdIExit"_s);
        QVERIFY(FindForm(u"frmImgEdit"_s) == nullptr);

        frmImgEdit& again = Open({640, 480});
        QCOMPARE(again.txtText().TextFont().family(), u"UnDotum"_s);
        QCOMPARE(again.txtText().TextFont().pointSize(), 28);
        QVERIFY(again.txtText().TextFont().bold());
        Tool(3);
        Drag({100, 100}, {200, 200});
        QCOMPARE(again.imgMain().Picture().pixelColor(150, 100), QColor(0, 200, 100));
    }

    /// Whatever is pressed, the canvas shows what a plain list of the five holders says, and a save stores that.
    void AnythingInAnyOrder()
    {
        frmImgEdit& editor = Open({96, 64});
        QRandomGenerator random(17);
        std::array<QImage, 6> holders;
        QImage canvas = editor.imgMain().Picture();
        holders[1] = canvas;
        size_t index = 1;
        size_t lastPress = 1;
        int level = 5;
        const auto point = [&] { return QPoint(int(random.bounded(900)) - 90, int(random.bounded(600)) - 60); };
        for (int step = 0; step < 10000; ++step) {
            switch (random.bounded(12)) {
            case 0:
            case 1:
            case 2: {
                const int tool = std::array{0, 2, 3, 4, 5}[random.bounded(5u)];
                Tool(tool);
                const QImage before = editor.imgMain().Picture();
                Drag(point(), point(), point());
                if (level != 5) {
                    QCOMPARE(editor.imgMain().Picture(), before);
                    break;
                }
                holders[index] = canvas;
                lastPress = index;
                index = index < 5 ? index + 1 : 1;
                canvas = editor.imgMain().Picture();
                holders[index] = canvas;
                break;
            }
            case 3:
            case 4:
                if (Button(u"cmdUnDo"_s).isEnabled() && index > 1)
                    canvas = holders[--index];
                Click(u"cmdUnDo"_s);
                break;
            case 5:
            case 6:
                if (Button(u"cmdReDo"_s).isEnabled() && index < 5 && index <= lastPress)
                    canvas = holders[++index];
                Click(u"cmdReDo"_s);
                break;
            case 7:
                level = qMin(9, level + 1);
                Click(u"cmdZoomOut"_s);
                break;
            case 8:
                level = qMax(1, level - 1);
                Click(u"cmdZoomIn"_s);
                break;
            case 9:
                while (editor.ZoomLevel() != 5)
                    Click(editor.ZoomLevel() > 5 ? u"cmdZoomIn"_s : u"cmdZoomOut"_s);
                level = 5;
                break;
            case 10: // a text that is left again
                if (level == 5) {
                    Tool(1);
                    Drag(point(), point());
                    Tool(0);
                }
                break;
            default:
                if (step % 10 == 0)
                    Click(u"cmdISave"_s);
            }
            QCOMPARE(editor.ZoomLevel(), level);
            QCOMPARE(editor.Chain().HolderIndex(), int(index));
            QCOMPARE(editor.imgMain().Picture(), canvas);
            QCOMPARE(editor.imgImage(int(index)).Picture(), canvas);
        }
        Click(u"cmdISave"_s);
        QCOMPARE(LoadPicture(editor.lblFilePath().text()).size(), canvas.size());
        for (const QString& text : std::as_const(m_box->Desk().shown))
            QCOMPARE(text, Refused);
    }

private:
    /// The editor on a picture of that size, shown and read.
    frmImgEdit& Open(QSize size)
    {
        m_box->AddPicture(Day, Stomach, 1);
        const QString path = m_box->PicturePath(Day, Stomach, 1);
        WriteWholeFile(path, StationInABox::Jpeg(size, Qt::darkBlue));
        frmImgEdit& editor = Form<frmImgEdit>();
        editor.lblFilePath().setText(path);
        editor.Show();
        editor.activateWindow();
        if (!QTest::qWaitFor([&] { return !editor.imgMain().Picture().isNull() && editor.isActiveWindow(); }))
            qFatal("the editor didn't open");
        return editor;
    }

    /// Runs while the editor that a command opens is there, once its picture has been read.
    void OnceOpen(const std::function<void(frmImgEdit&)>& handler)
    {
        auto* timer = new QTimer(qApp);
        QObject::connect(timer, &QTimer::timeout, timer, [timer, handler] {
            auto* editor = static_cast<frmImgEdit*>(FindForm(u"frmImgEdit"_s));
            if (editor == nullptr || editor->imgMain().Picture().isNull())
                return;
            timer->deleteLater();
            timer->stop();
            handler(*editor);
        });
        timer->start(1);
    }

    static QWidget& Editor() { return *FindForm(u"frmImgEdit"_s); }
    static QToolButton& Button(const QString& name) { return *Editor().findChild<QToolButton*>(name); }
    static void Tool(int tool) { Click(u"cmdDMode(%1)"_s.arg(tool)); }

    static void Click(const QString& name, const std::function<void(QWidget*)>& inDialog = {})
    {
        if (inDialog) {
            auto* timer = new QTimer(qApp);
            QObject::connect(timer, &QTimer::timeout, timer, [timer, inDialog] {
                if (QWidget* dialog = QApplication::activeModalWidget()) {
                    timer->stop();
                    timer->deleteLater();
                    inDialog(dialog);
                }
            });
            timer->start(1);
        }
        QTest::mouseClick(&Button(name), Qt::LeftButton);
    }

    static void Drag(QPoint from, QPoint to, QPoint by = {})
    {
        QWidget* canvas = Editor().findChild<QWidget*>(u"imgMain"_s);
        const auto send = [&](QEvent::Type type, QPoint at, Qt::MouseButton button, Qt::MouseButtons held) {
            QMouseEvent event(type, at, canvas->mapToGlobal(at), button, held, Qt::NoModifier);
            QCoreApplication::sendEvent(canvas, &event);
        };
        send(QEvent::MouseButtonPress, from, Qt::LeftButton, Qt::LeftButton);
        if (!by.isNull())
            send(QEvent::MouseMove, by, Qt::NoButton, Qt::LeftButton);
        send(QEvent::MouseMove, to, Qt::NoButton, Qt::LeftButton);
        send(QEvent::MouseButtonRelease, to, Qt::LeftButton, Qt::NoButton);
    }

    std::unique_ptr<StationInABox> m_box;
};

QTEST_MAIN(ImageEditorTest)
#include "ImageEditorTest.moc"
