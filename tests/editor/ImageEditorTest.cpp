#include "capture/frmCapture.h"
#include "contracts/fpSpread.h"
#include "editor/edit_settings.h"
#include "editor/frmImgEdit.h"
#include "editor/TextEntryBox.h"
#include "frame/services.h"
#include "frame/twips.h"
#include "support/EditorInABox.h"
#include "support/PictureFiles.h"
#include "text/text_routines.h"
#include "visit/device_settings.h"
#include "visit/VisitContext.h"

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

} // namespace

class ImageEditorTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { m_box = std::make_unique<EditorInABox>(); }
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
            m_box->OnceOpen([this, save](frmImgEdit& editor) {
                QCOMPARE(editor.windowModality(), Qt::ApplicationModal);
                QCOMPARE(editor.lblFilePath().text(), m_box->PicturePath(Day, Stomach, 2));
                m_box->Tool(3);
                m_box->Drag({100, 100}, {540, 380});
                if (save)
                    m_box->Click(u"cmdISave"_s);
                m_box->Click(u"cmdIExit"_s);
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

    /// Both drag directions; the saved file holds the figure between the two points that the pointer touched.
    void PressesThatDoNothing()
    {
        frmImgEdit& editor = m_box->Open({640, 480});
        const QImage before = editor.imgMain().Picture();
        QTest::mousePress(&editor.imgMain(), Qt::RightButton, Qt::NoModifier, {50, 50});
        QTest::mouseMove(&editor.imgMain(), {90, 90});
        QTest::mouseRelease(&editor.imgMain(), Qt::RightButton, Qt::NoModifier, {90, 90});
        m_box->Click(u"cmdZoomIn"_s);
        QCOMPARE(editor.ZoomLevel(), 4);
        QTest::mousePress(&editor.imgMain(), Qt::RightButton, Qt::NoModifier, {50, 50});
        QVERIFY(m_box->Desk().shown.isEmpty());
        m_box->Tool(3);
        m_box->Drag({50, 50}, {90, 90});
        QCOMPARE(m_box->Desk().shown, QStringList{Refused});
        QCOMPARE(editor.imgMain().Picture(), before);
        QVERIFY(!m_box->Button(u"cmdUnDo"_s).isEnabled());
        QVERIFY(!m_box->Button(u"cmdReDo"_s).isEnabled());
    }

    void ZoomEndsAtBothEnds()
    {
        frmImgEdit& editor = m_box->Open({640, 480});
        for (int click = 0; click < 6; ++click)
            m_box->Click(u"cmdZoomOut"_s);
        QCOMPARE(editor.ZoomLevel(), 9);
        QCOMPARE(editor.imgMain().ViewScale(), 2.0);
        QVERIFY(!m_box->Button(u"cmdZoomOut"_s).isEnabled());
        QCOMPARE(editor.imgMain().cursor().shape(), Qt::OpenHandCursor);
        QCOMPARE(editor.imgMain().size(), QSize(720, 480));
        for (int click = 0; click < 9; ++click)
            m_box->Click(u"cmdZoomIn"_s);
        QCOMPARE(editor.ZoomLevel(), 1);
        QVERIFY(!m_box->Button(u"cmdZoomIn"_s).isEnabled());
        QVERIFY(m_box->Button(u"cmdZoomOut"_s).isEnabled());
    }

    void BadPicturesCloseTheEditor_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<QString>("shown");
        const QString unreadable = u"그림을 읽을 수 없습니다.!!"_s;
        const QByteArray huge = PictureFiles::Promising(StationInABox::Jpeg({64, 64}, Qt::red), 65000, 65000);
        QTest::newRow("empty") << QByteArray() << unreadable;
        QTest::newRow("cut in its header") << huge.left(40) << unreadable;
        QTest::newRow("65,000 pixels square") << huge << u"그림이 너무 큽니다.!! (65000 x 65000, 한도 200메가픽셀)"_s;
        QTest::newRow("66 megapixels")
            << PictureFiles::Blank({8200, 8000}, "jpeg")
            << u"큰 그림은 줄어들게 되므로 편집할 수 없습니다.!! (8200 x 8000, 한도 64메가픽셀)"_s;
        QTest::newRow("no picture") << QByteArray("GIF? no.") << unreadable;
    }

    void BadPicturesCloseTheEditor()
    {
        QFETCH(QByteArray, content);
        QFETCH(QString, shown);
        const QString path = m_box->PicturePath(Day, Stomach, 1);
        m_box->AddPicture(Day, Stomach, 1);
        WriteWholeFile(path, content);
        frmImgEdit& editor = Form<frmImgEdit>();
        editor.lblFilePath().setText(path);
        editor.ShowModal();
        QCOMPARE(m_box->Desk().shown, QStringList{shown});
        QCOMPARE(Files().ReadFile(path), content);
        QVERIFY(FindForm(u"frmImgEdit"_s) == nullptr);
    }

    void ACutPictureOpensWithAMessage()
    {
        m_box->AddPicture(Day, Stomach, 1);
        const QString path = m_box->PicturePath(Day, Stomach, 1);
        const QByteArray whole = PictureFiles::Blank({640, 480}, "jpeg");
        WriteWholeFile(path, whole.left(whole.size() * 3 / 4));
        m_box->OnceOpen([this](frmImgEdit& editor) {
            QCOMPARE(editor.imgMain().Picture().size(), QSize(640, 480));
            m_box->Click(u"cmdIExit"_s);
        });
        frmImgEdit& editor = Form<frmImgEdit>();
        editor.lblFilePath().setText(path);
        editor.ShowModal();
        QCOMPARE(m_box->Desk().shown, QStringList{u"잘린 그림파일입니다.!! 남아 있는 부분만 보입니다.!!"_s});
    }

    void AFailedSaveKeepsTheFile()
    {
        frmImgEdit& editor = m_box->Open({640, 480});
        const QString path = editor.lblFilePath().text();
        const QByteArray stored = Files().ReadFile(path);
        m_box->Tool(4);
        m_box->Drag({10, 20}, {600, 20});
        m_box->FaultyFiles().FailAt(1);
        m_box->Click(u"cmdISave"_s);
        QCOMPARE(m_box->Desk().shown.size(), 1);
        QCOMPARE(Files().ReadFile(path), stored);
        QVERIFY(!VisitContext.ImageSaved);
        m_box->Click(u"cmdISave"_s);
        QVERIFY(VisitContext.ImageSaved);
        DeleteFile(path);
        VisitContext.ImageSaved = false;
        m_box->Click(u"cmdISave"_s);
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
        QCOMPARE(again.txtText().TextFont().family(), u"UnDotum"_s);
        QCOMPARE(again.txtText().TextFont().pointSize(), 28);
        QVERIFY(again.txtText().TextFont().bold());
        m_box->Tool(3);
        m_box->Drag({100, 100}, {200, 200});
        QCOMPARE(again.imgMain().Picture().pixelColor(150, 100), QColor(0, 200, 100));
    }

    /// Whatever is pressed, the canvas shows what a plain list of the five holders says, and a save stores that.
    void AnythingInAnyOrder()
    {
        frmImgEdit& editor = m_box->Open({96, 64});
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
                m_box->Tool(tool);
                const QImage before = editor.imgMain().Picture();
                m_box->Drag(point(), point(), point());
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
                if (m_box->Button(u"cmdUnDo"_s).isEnabled() && index > 1)
                    canvas = holders[--index];
                m_box->Click(u"cmdUnDo"_s);
                break;
            case 5:
            case 6:
                if (m_box->Button(u"cmdReDo"_s).isEnabled() && index < 5 && index <= lastPress)
                    canvas = holders[++index];
                m_box->Click(u"cmdReDo"_s);
                break;
            case 7:
                level = qMin(9, level + 1);
                m_box->Click(u"cmdZoomOut"_s);
                break;
            case 8:
                level = qMax(1, level - 1);
                m_box->Click(u"cmdZoomIn"_s);
                break;
            case 9:
                while (editor.ZoomLevel() != 5)
                    m_box->Click(editor.ZoomLevel() > 5 ? u"cmdZoomIn"_s : u"cmdZoomOut"_s);
                level = 5;
                break;
            case 10: // a text that is left again
                if (level == 5) {
                    m_box->Tool(1);
                    m_box->Drag(point(), point());
                    m_box->Tool(0);
                }
                break;
            default:
                if (step % 10 == 0)
                    m_box->Click(u"cmdISave"_s);
            }
            QCOMPARE(editor.ZoomLevel(), level);
            QCOMPARE(editor.Chain().HolderIndex(), int(index));
            QCOMPARE(editor.imgMain().Picture(), canvas);
            QCOMPARE(editor.imgImage(int(index)).Picture(), canvas);
        }
        m_box->Click(u"cmdISave"_s);
        QCOMPARE(LoadPicture(editor.lblFilePath().text()).size(), canvas.size());
        for (const QString& text : std::as_const(m_box->Desk().shown))
            QCOMPARE(text, Refused);
    }

private:
    std::unique_ptr<EditorInABox> m_box;
};

QTEST_MAIN(ImageEditorTest)
#include "ImageEditorTest.moc"
