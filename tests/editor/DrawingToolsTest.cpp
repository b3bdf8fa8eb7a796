#include "editor/TextEntryBox.h"
#include "frame/services.h"
#include "support/EditorInABox.h"
#include "visit/VisitContext.h"

using namespace Qt::StringLiterals;

class DrawingToolsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { m_box = std::make_unique<EditorInABox>(); }
    void cleanup() { m_box.reset(); }

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

    void MarksLandUnderThePointer()
    {
        QFETCH(QSize, size);
        QFETCH(int, tool);
        QFETCH(bool, zoomedAndBack);
        frmImgEdit& editor = m_box->Open(size);
        if (zoomedAndBack) {
            m_box->Click(u"cmdZoomOut"_s);
            m_box->Click(u"cmdZoomIn"_s);
            QCOMPARE(editor.imgMain().ViewScale(), 1.0);
        }
        m_box->Tool(tool);
        for (const bool backwards : {false, true}) {
            const QPoint one(50, 60);
            const QPoint two(200, 220);
            const QPointF from = editor.imgMain().PictureFromView(one);
            const QPointF to = editor.imgMain().PictureFromView(two);
            const QPointF by = editor.imgMain().PictureFromView(QPoint(250, 300));
            if (backwards)
                m_box->Drag(two, one, {250, 300});
            else
                m_box->Drag(one, two, {250, 300});
            const QRect marked = Marked(editor.imgMain().Picture());
            const QRect expected = QRectF(from, to).toAlignedRect();
            // The free line went by way of the third point.
            const QRect way(by.toPoint(), QSize(1, 1));
            const QRect reached = (tool == 0 ? expected | way : expected) & QRect(QPoint(), size);
            QVERIFY2(reached.adjusted(-3, -3, 3, 3).contains(marked), qPrintable(QDebug::toString(marked)));
            QVERIFY2(marked.adjusted(-8, -8, 8, 8).contains(reached), qPrintable(QDebug::toString(marked)));
            m_box->Click(u"cmdISave"_s);
            const QImage read = LoadPicture(editor.lblFilePath().text());
            QCOMPARE(read.size(), size);
            QVERIFY(Marked(read).intersects(marked));
            m_box->Click(u"cmdUnDo"_s);
            QVERIFY(Marked(editor.imgMain().Picture()).isNull());
            if (zoomedAndBack) {
                // Undo fits the picture; natural size is a zoom step away and back.
                m_box->Click(u"cmdZoomOut"_s);
                m_box->Click(u"cmdZoomIn"_s);
            }
        }
    }

    void AStrokeMayLeaveTheCanvas()
    {
        frmImgEdit& editor = m_box->Open({640, 480});
        for (const int tool : {0, 2, 3, 4, 5}) {
            m_box->Tool(tool);
            m_box->Drag({300, 200}, {-900, 3000}, {5000, -70});
            QVERIFY(!Marked(editor.imgMain().Picture()).isNull());
            m_box->Click(u"cmdUnDo"_s);
            QVERIFY(Marked(editor.imgMain().Picture()).isNull());
        }
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
        frmImgEdit& editor = m_box->Open(size);
        m_box->Tool(1);
        QCOMPARE(editor.imgMain().cursor().shape(), Qt::IBeamCursor);
        m_box->Drag(from, to);
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
        QVERIFY(marked.left() < place.left() + 6);
        // The same share of every picture, so that it can be read on paper.
        QVERIFY2(marked.height() * 480 > 12 * size.height(), qPrintable(QDebug::toString(marked)));

        m_box->Click(u"cmdUnDo"_s);
        m_box->Drag(from, to);
        QTest::keyClicks(&box, u"polyp "_s);
        whole.setCommitString(u"용종"_s);
        QCoreApplication::sendEvent(&box, &whole);
        QTest::keyClick(&box, Qt::Key_Enter);
        QCOMPARE(editor.imgMain().Picture(), drawn);
        m_box->Drag(from, to);
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
        frmImgEdit& editor = m_box->Open({640, 480});
        m_box->Tool(4);
        for (int stroke = 0; stroke < 4; ++stroke)
            m_box->Drag({10, 20 * stroke + 20}, {600, 20 * stroke + 20});
        m_box->Click(u"cmdUnDo"_s);
        const QImage before = editor.imgMain().Picture();
        m_box->Tool(1);
        m_box->Drag({100, 200}, {300, 260});
        QTest::keyClicks(&editor.txtText(), u"never mind"_s);
        if (button.isEmpty())
            QTest::mousePress(&editor.imgMain(), Qt::RightButton, Qt::NoModifier, {250, 300});
        else
            m_box->Click(button);
        QVERIFY(!editor.txtText().isVisible() || button.isEmpty());
        if (button.isEmpty())
            m_box->Tool(4);
        QCOMPARE(editor.Chain().HolderIndex(), button == u"cmdReDo"_s ? 5 : 4);
        if (button == u"cmdISave"_s) {
            const QImage saved = LoadPicture(editor.lblFilePath().text());
            QVERIFY(IsYellow(saved, {300, 60}));
            QVERIFY(!IsYellow(saved, {300, 80}));
        }
        if (button != u"cmdReDo"_s) {
            QCOMPARE(editor.imgMain().Picture(), before);
            m_box->Click(u"cmdReDo"_s);
        }
        QVERIFY(IsYellow(editor.imgMain().Picture(), {300, 80}));
    }

    void KeysWaitForStrokeAndText()
    {
        frmImgEdit& editor = m_box->Open({640, 480});
        m_box->Tool(4);
        m_box->Drag({10, 20}, {600, 20});
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
        m_box->Tool(1);
        m_box->Drag({100, 200}, {300, 260});
        QTest::keyClick(&editor.txtText(), Qt::Key_S, Qt::ControlModifier);
        QVERIFY(!VisitContext.ImageSaved);
        QVERIFY(editor.txtText().isVisible());
        m_box->Tool(4);
        QTest::keyClick(&editor, Qt::Key_S, Qt::ControlModifier);
        QVERIFY(VisitContext.ImageSaved);
    }

private:
    std::unique_ptr<EditorInABox> m_box;
};

QTEST_MAIN(DrawingToolsTest)
#include "DrawingToolsTest.moc"
