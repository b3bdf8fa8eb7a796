#include "editor/edit_settings.h"
#include "editor/frmImgEdit.h"
#include "editor/SnapshotChain.h"
#include "editor/TextEntryBox.h"
#include "filing/originals.h"
#include "frame/twips.h"
#include "support/CaptureScreen.h"
#include "support/EditorInABox.h"
#include "support/PictureFiles.h"
#include "support/testing.h"
#include "text/text_routines.h"
#include "visit/device_settings.h"

#include <QScopeGuard>

#include <array>

using namespace Qt::StringLiterals;

namespace {
const QString Earlier = u"20250301"_s;
const QString Refused = u"확대나 축소시에는 이미지를 편집할수 없습니다.!!"_s;

/// Canvas and holders with numbers for pictures: 0 is the opened one, each stroke paints the next number.
class Desk
{
public:
    SnapshotChain chain;
    int canvas = 0;
    int strokes = 0;
    std::array<int, SnapshotChain::Holders + 1> holders;

    Desk()
    {
        holders.fill(-1);
        holders[1] = 0;
    }

    void Step(QChar step)
    {
        if (step == u's') {
            holders[At(chain.Press())] = canvas;
            canvas = ++strokes;
            holders[At(chain.HolderIndex())] = canvas;
        } else if (step == u't') { // a text entry that is left again
            holders[At(chain.Press())] = canvas;
            chain.TakeBackPress();
        } else if (const auto holder = step == u'u' ? chain.Undo() : chain.Redo()) {
            canvas = holders[At(*holder)];
        }
    }

    static size_t At(int holder) { return static_cast<size_t>(holder); }
};
} // namespace

class ImageEditorTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { m_box = std::make_unique<EditorInABox>(); }
    void cleanup() { m_box.reset(); }

    void AHistoryPictureIsMarkedAndShownAnew()
    {
        m_box->AddPicture(Earlier, Stomach, 1);
        m_box->AddPicture(Earlier, Stomach, 2, u"용종"_s);
        frmCapture& screen = OpenScreen();
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
        const QByteArray stored = Files().ReadFile(m_box->PicturePath(Earlier, Stomach, 2));
        for (const bool save : {false, true}) {
            m_box->OnceOpen([this, save](frmImgEdit& editor) {
                QCOMPARE(editor.windowModality(), Qt::ApplicationModal);
                QCOMPARE(editor.Path(), m_box->PicturePath(Earlier, Stomach, 2));
                m_box->Tool(3);
                m_box->Drag({100, 100}, {540, 380});
                if (save)
                    m_box->Click(u"cmdISave"_s);
                m_box->Click(u"cmdIExit"_s);
            });
            Q_EMIT screen.sprCap(2).DblClick(4, 1);
            QCOMPARE(thumbnail() != before, save);
            QCOMPARE(Files().ReadFile(m_box->PicturePath(Earlier, Stomach, 2)) != stored, save);
        }
        QVERIFY(m_box->Desk().shown.isEmpty());
        QVERIFY(IsYellow(LoadPicture(m_box->PicturePath(Earlier, Stomach, 2)), {300, 100}));
        const Visit visit = *screen.PicturesOf(2).Shown();
        QCOMPARE(Files().ReadFile(originals::PathOf(visit, 2)), stored);
        QVERIFY(FindForm(u"frmImgEdit"_s) == nullptr);
    }

    /// What can't be kept as it was isn't overwritten; kept once, it is the first one, with the table or without.
    void AnOriginalComesFirst_data()
    {
        QTest::addColumn<QString>("statement");
        QTest::newRow("with an identity") << QString();
        QTest::newRow("without the table") << u"DROP TABLE ca_sum"_s;
        QTest::newRow("in an outage") << u"outage"_s;
    }

    void AnOriginalComesFirst()
    {
        QFETCH(QString, statement);
        const bool isOutage = statement == u"outage"_s;
        const auto end = qScopeGuard([&] {
            if (isOutage)
                StationInABox::Server().Start();
        });
        if (isOutage) {
            m_box.reset();
            m_box = std::make_unique<EditorInABox>(u"QMARIADB"_s);
        }
        frmImgEdit& editor = m_box->Open({640, 480});
        if (isOutage)
            StationInABox::Server().Stop();
        else if (!statement.isEmpty())
            m_box->Run(statement);
        const QByteArray stored = Files().ReadFile(editor.Path());
        const Visit visit = VisitOf(u"00001234"_s, {}, Earlier, Stomach);
        for (const int lineAt : {20, 40}) {
            OriginalKeeper keeper(visit, 1);
            editor.setOriginalKeeper([&keeper] { keeper.Keep(); });
            m_box->Tool(4);
            m_box->Drag({10, lineAt}, {600, lineAt});
            if (lineAt == 20) {
                m_box->FaultyFiles().FailAt(1);
                m_box->Click(u"cmdISave"_s);
                QVERIFY(m_box->Desk().shown.value(0).startsWith(u"표시하기 전의 원래 그림을 보관하지 못하여"_s));
                QCOMPARE(Files().ReadFile(editor.Path()), stored);
            }
            m_box->Click(u"cmdISave"_s);
            QVERIFY(Files().ReadFile(editor.Path()) != stored);
            keeper.NoteWritten();
            QCOMPARE(Files().ReadFile(originals::PathOf(visit, 1)), stored);
        }
        QCOMPARE(Files().FilesStartingWith(visit.LogFolder(), u"original-"_s).size(), 1);
    }

    void PressesThatDoNothing()
    {
        frmImgEdit& editor = m_box->Open({640, 480});
        const QImage before = editor.Canvas().imgMain().Picture();
        QTest::mousePress(&editor.Canvas().imgMain(), Qt::RightButton, Qt::NoModifier, {50, 50});
        QTest::mouseMove(&editor.Canvas().imgMain(), {90, 90});
        QTest::mouseRelease(&editor.Canvas().imgMain(), Qt::RightButton, Qt::NoModifier, {90, 90});
        m_box->Click(u"cmdZoomIn"_s);
        QCOMPARE(editor.Canvas().ZoomLevel(), 4);
        QTest::mousePress(&editor.Canvas().imgMain(), Qt::RightButton, Qt::NoModifier, {50, 50});
        QVERIFY(m_box->Desk().shown.isEmpty());
        m_box->Tool(3);
        m_box->Drag({50, 50}, {90, 90});
        QCOMPARE(m_box->Desk().shown, QStringList{Refused});
        QCOMPARE(editor.Canvas().imgMain().Picture(), before);
        QVERIFY(!m_box->Button(u"cmdUnDo"_s).isEnabled());
        QVERIFY(!m_box->Button(u"cmdReDo"_s).isEnabled());
    }

    void BadPicturesCloseTheEditor_data()
    {
        Columns<QByteArray, QString>("content", "shown");
        const QString unreadable = u"그림을 읽을 수 없습니다.!!"_s;
        const QByteArray huge = PictureFiles::Promising(StationInABox::Jpeg({64, 64}, Qt::red), 65000, 65000);
        QTest::newRow("cut in its header") << huge.left(40) << unreadable;
        QTest::newRow("65,000 pixels square") << huge << u"그림이 너무 큽니다.!! (65000 x 65000, 한도 200메가픽셀)"_s;
        QTest::newRow("66 megapixels")
            << PictureFiles::Blank({8200, 8000}, "jpeg")
            << u"큰 그림은 줄어들게 되므로 편집할 수 없습니다.!! (8200 x 8000, 한도 64메가픽셀)"_s;
    }

    void BadPicturesCloseTheEditor()
    {
        QFETCH2(QByteArray, content, QString, shown);
        const QString path = m_box->PicturePath(Earlier, Stomach, 1);
        m_box->AddPicture(Earlier, Stomach, 1);
        WriteWholeFile(path, content);
        frmImgEdit& editor = frmImgEdit::Open(path);
        editor.ShowModal();
        QCOMPARE(m_box->Desk().shown, QStringList{shown});
        QCOMPARE(Files().ReadFile(path), content);
        QVERIFY(FindForm(u"frmImgEdit"_s) == nullptr);
    }

    void ACutPictureOpensWithAMessage()
    {
        m_box->AddPicture(Earlier, Stomach, 1);
        const QString path = m_box->PicturePath(Earlier, Stomach, 1);
        const QByteArray whole = PictureFiles::Blank({640, 480}, "jpeg");
        WriteWholeFile(path, whole.left(whole.size() * 3 / 4));
        m_box->OnceOpen([this](frmImgEdit& editor) {
            QCOMPARE(editor.Canvas().imgMain().Picture().size(), QSize(640, 480));
            m_box->Click(u"cmdIExit"_s);
        });
        frmImgEdit& editor = frmImgEdit::Open(path);
        editor.ShowModal();
        QCOMPARE(m_box->Desk().shown, QStringList{u"잘린 그림파일입니다.!! 남아 있는 부분만 보입니다.!!"_s});
    }

    void AFailedSaveKeepsTheFile()
    {
        frmImgEdit& editor = m_box->Open({640, 480});
        const QString path = editor.Path();
        const QByteArray stored = Files().ReadFile(path);
        m_box->Tool(4);
        m_box->Drag({10, 20}, {600, 20});
        m_box->FaultyFiles().FailAt(1);
        m_box->Click(u"cmdISave"_s);
        QCOMPARE(m_box->Desk().shown.size(), 1);
        QCOMPARE(Files().ReadFile(path), stored);
        QCOMPARE(m_box->saves, 0);
        m_box->Click(u"cmdISave"_s);
        QCOMPARE(m_box->saves, 1);
        DeleteFile(path);
        m_box->Click(u"cmdISave"_s);
        QVERIFY(m_box->saves == 1 && !FileExists(path));
        QCOMPARE(m_box->Desk().shown.size(), 1);
    }

    /// Two stations have opened one picture; the other one has saved it.
    void AFileThatHasChangedIsAskedFor_data()
    {
        Columns<std::deque<bool>, bool, bool>("answers", "isMine", "showsMine");
        QTest::newRow("mine") << std::deque{true} << true << true;
        QTest::newRow("theirs") << std::deque{false} << false << false;
        QTest::newRow("neither") << std::deque<bool>{} << false << true;
    }

    void AFileThatHasChangedIsAskedFor()
    {
        QFETCH3(std::deque<bool>, answers, bool, isMine, bool, showsMine);
        frmImgEdit& editor = m_box->Open({640, 480});
        const QString path = editor.Path();
        m_box->Tool(4);
        m_box->Drag({10, 60}, {600, 60});
        m_box->Click(u"cmdISave"_s);
        QCOMPARE(m_box->Desk().shown, QStringList());
        WriteWholeFile(path, StationInABox::Jpeg({640, 480}, Qt::darkRed));
        m_box->Desk().answers = answers;
        m_box->Click(u"cmdISave"_s);
        QCOMPARE(m_box->Desk().shown, QStringList{u"다른 곳에서 이 그림을 고쳤습니다. 내 것으로 저장하시겠습니까?"_s});
        QCOMPARE(IsYellow(LoadPicture(path), {300, 60}), isMine);
        QCOMPARE(IsYellow(editor.Canvas().imgMain().Picture(), {300, 60}), showsMine);
        m_box->Click(showsMine ? u"cmdISave"_s : u"cmdUnDo"_s);
        QVERIFY(IsYellow(editor.Canvas().imgMain().Picture(), {300, 60}));
        QCOMPARE(m_box->Desk().shown.size(), isMine || !showsMine ? 1 : 2);
    }

    void ColourAndFontOutlastTheEditor()
    {
        frmImgEdit& editor = m_box->Open({640, 480});
        m_box->Click(u"cmdColor"_s, [](QWidget* dialog) { qobject_cast<QDialog*>(dialog)->reject(); });
        editor.Unload();
        QCOMPARE(ReadSetting(u"Image Edit Setting"_s, u"Color"_s, 10), u"0"_s);

        m_box->Open({640, 480});
        m_box->Click(u"cmdColor"_s, [](QWidget* dialog) {
            QCOMPARE(dialog->windowTitle(), u"글자색 지정..."_s);
            qobject_cast<QColorDialog*>(dialog)->setCurrentColor(QColor(0, 200, 100));
            qobject_cast<QDialog*>(dialog)->accept();
        });
        m_box->Click(u"cmdFont"_s, [](QWidget* dialog) {
            QCOMPARE(dialog->windowTitle(), u"글씨체 선택..."_s.replace(u'씨', u'자'));
            QFont font(u"UnDotum"_s, 28);
            font.setBold(true);
            qobject_cast<QFontDialog*>(dialog)->setCurrentFont(font);
            qobject_cast<QDialog*>(dialog)->accept();
        });
        m_box->Click(u"cmdIExit"_s);
        QVERIFY(FindForm(u"frmImgEdit"_s) == nullptr);

        frmImgEdit& again = m_box->Open({640, 480});
        QCOMPARE(again.Canvas().txtText().TextFont().family(), u"UnDotum"_s);
        QCOMPARE(again.Canvas().txtText().TextFont().pointSize(), 28);
        QVERIFY(again.Canvas().txtText().TextFont().bold());
        m_box->Tool(3);
        m_box->Drag({100, 100}, {200, 200});
        QCOMPARE(again.Canvas().imgMain().Picture().pixelColor(150, 100), QColor(0, 200, 100));
    }

    void MarksLandUnderThePointer_data()
    {
        Columns<QSize, int, bool>("size", "tool", "zoomedAndBack");
        for (const QSize& size : {QSize(640, 480), QSize(1920, 1080), QSize(1080, 1920)}) {
            for (const int tool : {0, 2, 3, 4, 5}) {
                QTest::addRow("%dx%d tool %d", size.width(), size.height(), tool) << size << tool << false;
                QTest::addRow("%dx%d tool %d natural", size.width(), size.height(), tool) << size << tool << true;
            }
        }
    }

    void MarksLandUnderThePointer()
    {
        QFETCH3(QSize, size, int, tool, bool, zoomedAndBack);
        frmImgEdit& editor = m_box->Open(size);
        const auto showNatural = [&] {
            m_box->Click(u"cmdZoomOut"_s);
            while (editor.Canvas().imgMain().ViewScale() != 1)
                m_box->Click(editor.Canvas().imgMain().ViewScale() < 1 ? u"cmdZoomOut"_s : u"cmdZoomIn"_s);
        };
        if (zoomedAndBack)
            showNatural();
        m_box->Tool(tool);
        // The pen is as broad in every picture as two pixels are in one of 480 rows.
        const int pen = qMax(3, size.height() / 480 + 2);
        for (const bool backwards : {false, true}) {
            const QPoint one(50, 60);
            const QPoint two(200, 220);
            const QPointF from = editor.Canvas().imgMain().PictureFromView(one);
            const QPointF to = editor.Canvas().imgMain().PictureFromView(two);
            const QPointF by = editor.Canvas().imgMain().PictureFromView(QPoint(250, 300));
            if (backwards)
                m_box->Drag(two, one, {250, 300});
            else
                m_box->Drag(one, two, {250, 300});
            const QRect marked = Marked(editor.Canvas().imgMain().Picture());
            const QRect expected = QRectF(from, to).toAlignedRect();
            // The free line went by way of the third point.
            const QRect way(by.toPoint(), QSize(1, 1));
            const QRect reached = (tool == 0 ? expected | way : expected) & QRect(QPoint(), size);
            QVERIFY2(reached.adjusted(-pen, -pen, pen, pen).contains(marked), qPrintable(QDebug::toString(marked)));
            QVERIFY2(marked.adjusted(-3 * pen, -3 * pen, 3 * pen, 3 * pen).contains(reached),
                     qPrintable(QDebug::toString(marked)));
            m_box->Click(u"cmdISave"_s);
            const QImage read = LoadPicture(editor.Path());
            QCOMPARE(read.size(), size);
            QVERIFY(Marked(read).intersects(marked));
            m_box->Click(u"cmdUnDo"_s);
            QVERIFY(Marked(editor.Canvas().imgMain().Picture()).isNull());
            // Undo fits the picture.
            if (zoomedAndBack)
                showNatural();
        }
    }

    void TheViewGoesOutAndBack()
    {
        frmImgEdit& editor = m_box->Open({1920, 1080});
        ImagXpress& canvas = editor.Canvas().imgMain();
        QVERIFY(editor.windowTitle().contains(u"(38%)"_s));
        for (const auto& [button, scale] : {std::pair(u"cmdZoomIn"_s, 0.2), std::pair(u"cmdZoomOut"_s, 0.4)}) {
            m_box->Click(button);
            QVERIFY(qAbs(canvas.ViewScale() - scale) < 1e-6);
            m_box->Click(u"cmdFit"_s);
            QCOMPARE(canvas.ViewScale(), 0.375);
        }
        const QPointF place(500, 200);
        QPointF under;
        for (int notch = 0; notch < 6; ++notch) {
            under = canvas.PictureFromView(place);
            QWheelEvent turn(place, canvas.mapToGlobal(place), {}, {0, 120}, Qt::NoButton, Qt::ControlModifier,
                             Qt::NoScrollPhase, false);
            QCoreApplication::sendEvent(&canvas, &turn);
        }
        QCOMPARE(canvas.ViewScale(), 1.5);
        QVERIFY((canvas.PictureFromView(place) - under).manhattanLength() < 2);
        const QPoint from = place.toPoint();
        QTest::mousePress(&canvas, Qt::MiddleButton, Qt::NoModifier, from);
        QMouseEvent drag(QEvent::MouseMove, place - QPointF(60, 30), canvas.mapToGlobal(place), Qt::NoButton,
                         Qt::MiddleButton, Qt::NoModifier);
        QCoreApplication::sendEvent(&canvas, &drag);
        QTest::mouseRelease(&canvas, Qt::MiddleButton, Qt::NoModifier, from);
        QVERIFY((canvas.PictureFromView(place) - under - QPointF(40, 20)).manhattanLength() < 2);
        QVERIFY(m_box->Desk().shown.isEmpty());
        m_box->Click(u"cmdFit"_s);
        m_box->Tool(3);
        m_box->Drag({100, 100}, {300, 200});
        QVERIFY(!Marked(canvas.Picture()).isNull());
        m_box->Click(u"cmdISave"_s);
        // Each of the three colours is sampled once a pixel.
        const QByteArray file = Files().ReadFile(editor.Path());
        const qsizetype frame = file.indexOf("\xFF\xC0");
        for (const int component : {0, 1, 2})
            QCOMPARE(int(file[frame + 11 + 3 * component]), 0x11);
    }

    void AStrokeMayLeaveTheCanvas()
    {
        frmImgEdit& editor = m_box->Open({640, 480});
        for (const int tool : {0, 2, 3, 4, 5}) {
            m_box->Tool(tool);
            m_box->Drag({300, 200}, {-900, 3000}, {5000, -70});
            QVERIFY(!Marked(editor.Canvas().imgMain().Picture()).isNull());
            m_box->Click(u"cmdUnDo"_s);
            QVERIFY(Marked(editor.Canvas().imgMain().Picture()).isNull());
        }
    }

    void TextStandsWhereItsBoxWas_data()
    {
        Columns<QSize, QPoint, QPoint>("size", "from", "to");
        QTest::newRow("to the lower right") << QSize(640, 480) << QPoint(100, 80) << QPoint(300, 140);
        QTest::newRow("to the upper left") << QSize(640, 480) << QPoint(300, 140) << QPoint(100, 80);
        QTest::newRow("fitted") << QSize(1920, 1080) << QPoint(300, 140) << QPoint(100, 80);
        QTest::newRow("one point") << QSize(640, 480) << QPoint(100, 80) << QPoint(100, 80);
    }

    void TextStandsWhereItsBoxWas()
    {
        QFETCH3(QSize, size, QPoint, from, QPoint, to);
        frmImgEdit& editor = m_box->Open(size);
        m_box->Tool(1);
        QCOMPARE(editor.Canvas().imgMain().cursor().shape(), Qt::IBeamCursor);
        m_box->Drag(from, to);
        TextEntryBox& box = editor.Canvas().txtText();
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
        const QImage drawn = editor.Canvas().imgMain().Picture();
        const QRect marked = Marked(drawn);
        const qreal scale = editor.Canvas().imgMain().ViewScale();
        const QRect place = QRectF(QPointF(100, 80) / scale, QSizeF(seen) / scale).toAlignedRect();
        QVERIFY2(place.adjusted(-3, -3, 3, 3).contains(marked), qPrintable(QDebug::toString(marked)));
        QVERIFY(marked.left() < place.left() + 6);
        // The same share of every picture, so that it can be read on paper.
        QVERIFY2(marked.height() * 480 > 12 * size.height(), qPrintable(QDebug::toString(marked)));
    }

    void TextAtAnEdgeIsDrawnWhole_data()
    {
        Columns<QPoint, int>("place", "repeats");
        QTest::newRow("right") << QPoint(600, 100) << 1;
        QTest::newRow("lower right") << QPoint(636, 477) << 1;
        QTest::newRow("longer than the picture") << QPoint(400, 470) << 5;
    }

    void TextAtAnEdgeIsDrawnWhole()
    {
        QFETCH2(QPoint, place, int, repeats);
        frmImgEdit& editor = m_box->Open({640, 480});
        m_box->Tool(1);
        // As much is marked as by the same words in the middle of the picture.
        const auto type = [&](QPoint at, const QString& text) {
            m_box->Drag(at, at + QPoint(3, 2));
            TextEntryBox& box = editor.Canvas().txtText();
            QTest::keyClicks(&box, text);
            const bool isSeen = QRect(0, 0, 640, 480).contains(box.geometry());
            QTest::keyClick(&box, Qt::Key_Return);
            const QImage picture = editor.Canvas().imgMain().Picture();
            int marked = 0;
            for (int y = 0; y < picture.height(); ++y) {
                for (int x = 0; x < picture.width(); ++x)
                    marked += qGreen(picture.pixel(x, y));
            }
            m_box->Click(u"cmdUnDo"_s);
            return isSeen ? marked : -1;
        };
        const QString words = u"typed at the edge"_s;
        const int once = type({20, 20}, words);
        const int drawn = type(place, QStringList(repeats, words).join(u' '));
        QVERIFY2(once > 0 && qAbs(drawn - repeats * once) < once / 20 * repeats,
                 qPrintable(u"%1 %2"_s.arg(once).arg(drawn)));
    }

    void ATextThatIsLeftLeavesNothing_data()
    {
        QTest::addColumn<QString>("button");
        QTest::newRow("another tool") << u"cmdDMode(4)"_s;
        QTest::newRow("save") << u"cmdISave"_s;
        QTest::newRow("zoom") << u"cmdZoomOut"_s;
        QTest::newRow("redo") << u"cmdReDo"_s;
    }

    void ATextThatIsLeftLeavesNothing()
    {
        QFETCH(QString, button);
        frmImgEdit& editor = m_box->Open({640, 480});
        m_box->Tool(4);
        for (int stroke = 0; stroke < 4; ++stroke)
            m_box->Drag({10, 20 * stroke + 20}, {600, 20 * stroke + 20});
        m_box->Click(u"cmdUnDo"_s);
        const QImage before = editor.Canvas().imgMain().Picture();
        m_box->Tool(1);
        m_box->Drag({100, 200}, {300, 260});
        QTest::keyClicks(&editor.Canvas().txtText(), u"never mind"_s);
        QTest::mousePress(&editor.Canvas().imgMain(), Qt::RightButton, Qt::NoModifier, {250, 300});
        QCOMPARE(editor.Canvas().txtText().text(), u"never mind"_s);
        m_box->Click(button);
        QVERIFY(!editor.Canvas().txtText().isVisible());
        QCOMPARE(editor.Canvas().Chain().HolderIndex(), button == u"cmdReDo"_s ? 5 : 4);
        if (button == u"cmdISave"_s) {
            const QImage saved = LoadPicture(editor.Path());
            QVERIFY(IsYellow(saved, {300, 60}));
            QVERIFY(!IsYellow(saved, {300, 80}));
        }
        if (button != u"cmdReDo"_s) {
            QCOMPARE(editor.Canvas().imgMain().Picture(), before);
            m_box->Click(u"cmdReDo"_s);
        }
        QVERIFY(IsYellow(editor.Canvas().imgMain().Picture(), {300, 80}));
    }

    void KeysWaitForStrokeAndText()
    {
        frmImgEdit& editor = m_box->Open({640, 480});
        m_box->Tool(4);
        m_box->Drag({10, 20}, {600, 20});
        const QImage one = editor.Canvas().imgMain().Picture();
        QTest::mousePress(&editor.Canvas().imgMain(), Qt::LeftButton, Qt::NoModifier, {10, 90});
        QTest::keyClick(&editor, Qt::Key_Z, Qt::ControlModifier);
        QTest::keyClick(&editor, Qt::Key_S, Qt::ControlModifier);
        QCOMPARE(editor.Canvas().imgMain().Picture(), one);
        QTest::mouseRelease(&editor.Canvas().imgMain(), Qt::LeftButton, Qt::NoModifier, {600, 90});
        QCOMPARE(m_box->saves, 0);
        QVERIFY(IsYellow(editor.Canvas().imgMain().Picture(), {300, 90}));
        QTest::keyClick(&editor, Qt::Key_Z, Qt::ControlModifier);
        QCOMPARE(editor.Canvas().imgMain().Picture(), one);
        QTest::keyClick(&editor, Qt::Key_Y, Qt::ControlModifier);
        QVERIFY(IsYellow(editor.Canvas().imgMain().Picture(), {300, 90}));
        m_box->Tool(1);
        m_box->Drag({100, 200}, {300, 260});
        QTest::keyClick(&editor.Canvas().txtText(), Qt::Key_S, Qt::ControlModifier);
        QCOMPARE(m_box->saves, 0);
        QVERIFY(editor.Canvas().txtText().isVisible());
        m_box->Tool(4);
        QTest::keyClick(&editor, Qt::Key_S, Qt::ControlModifier);
        QCOMPARE(m_box->saves, 1);
    }

    void Sequences_data()
    {
        Columns<QString, int, bool, bool>("steps", "shown", "undo", "redo");
        QTest::newRow("undone") << u"su"_s << 0 << false << true;
        QTest::newRow("and back") << u"sur"_s << 1 << true << true;
        QTest::newRow("four strokes are undone") << u"ssssuuuu"_s << 0 << false << true;
        QTest::newRow("redo ends at the fifth holder") << u"ssssuuuurrrr"_s << 4 << true << false;
        QTest::newRow("redo stays enabled through strokes") << u"suss"_s << 3 << true << true;
        QTest::newRow("the fifth stroke turns the chain") << u"sssss"_s << 5 << true << false;
        QTest::newRow("nothing before the turn") << u"sssssu"_s << 5 << false << false;
        QTest::newRow("the old holders lie above the turn") << u"sssssrr"_s << 2 << true << false;
        QTest::newRow("a text left at once") << u"t"_s << 0 << false << false;
        QTest::newRow("then undo goes one stroke back") << u"sstu"_s << 1 << true << true;
        QTest::newRow("a text left at the turn") << u"sssstu"_s << 3 << true << true;
    }

    void Sequences()
    {
        QFETCH(QString, steps);
        Desk desk;
        for (const QChar step : steps)
            desk.Step(step);
        QTEST(desk.canvas, "shown");
        QTEST(desk.chain.UndoEnabled(), "undo");
        QTEST(desk.chain.RedoEnabled(), "redo");
    }

private:
    std::unique_ptr<EditorInABox> m_box;
};

QTEST_MAIN(ImageEditorTest)
#include "ImageEditorTest.moc"
