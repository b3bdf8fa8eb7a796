#include "LiveFixture.h"

#include "contracts/PlatformError.h"

#include <QApplication>
#include <QComboBox>
#include <QDialog>
#include <QPushButton>
#include <QSlider>
#include <QTest>
#include <QTimer>

using namespace Qt::StringLiterals;

namespace {
v4l2_queryctrl Range(const char* name, int minimum, int maximum, int step, quint32 flags = 0)
{
    v4l2_queryctrl query = {};
    query.type = V4L2_CTRL_TYPE_INTEGER;
    std::strncpy(reinterpret_cast<char*>(query.name), name, sizeof query.name - 1);
    query.minimum = minimum;
    query.maximum = maximum;
    query.step = step;
    query.flags = flags;
    return query;
}

/// What the operator does in the dialog that opens next; it is closed afterwards.
void InNextDialog(const std::function<void(QDialog&)>& act)
{
    QTimer::singleShot(0, qApp, [act] {
        auto* dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget());
        QVERIFY(dialog != nullptr);
        act(*dialog);
        const auto buttons = dialog->findChildren<QPushButton*>();
        const auto close = std::find_if(buttons.begin(), buttons.end(),
                                        [](const QPushButton* button) { return button->text() == u"닫기"_s; });
        QVERIFY(close != buttons.end());
        QTest::mouseClick(*close, Qt::LeftButton);
    });
}
} // namespace

class DriverDialogsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void TheTestPictureTurnsDarkAtOnce()
    {
        const LiveFixture fixture;
        const auto control = fixture.NewControl();
        control->Start();
        QTRY_VERIFY(ShowsScene(Decoded(control->HoldFrame())));
        InNextDialog([&](QDialog& dialog) {
            QCOMPARE(dialog.windowTitle(), u"기타설정2"_s);
            auto* contrast = dialog.findChild<QSlider*>(u"대비"_s);
            QVERIFY(contrast != nullptr);
            contrast->setValue(contrast->minimum());
            auto* brightness = dialog.findChild<QSlider*>(u"밝기"_s);
            brightness->setValue(brightness->minimum());
            const auto centre = [&] { return qGray(Decoded(control->HoldFrame()).pixel(80, 240)); };
            QTRY_VERIFY(centre() < 50);
            contrast->setValue(100);
            brightness->setValue(100);
            QTRY_VERIFY(centre() > 50);
        });
        control->ShowDriverDialog2(int(control->winId()));
    }

    void TheTestPictureStandsStillAtSpeedZero()
    {
        const LiveFixture fixture;
        const auto control = fixture.NewControl();
        control->Start();
        QTRY_VERIFY(control->HoldFrame());
        InNextDialog([&](QDialog& dialog) { dialog.findChild<QSlider*>()->setValue(0); });
        control->ShowDriverDialog1(0);
        // Each call shows a later frame, without its number.
        quint32 number = 0;
        QImage frame;
        const auto isLater = [&] {
            frame = Decoded(control->HoldFrame());
            return ReadFrameNumber(frame).value_or(0) > number + 2;
        };
        const auto laterScene = [&] {
            number = ReadFrameNumber(frame).value_or(number);
            const bool isThere = QTest::qWaitFor(isLater, 5000);
            return isThere ? frame.copy(0, 0, 640, 400) : QImage();
        };
        laterScene(); // What was under way when the speed changed.
        const QImage still = laterScene();
        QVERIFY(!still.isNull());
        QVERIFY(laterScene() == still);
        InNextDialog([&](QDialog& dialog) { dialog.findChild<QSlider*>()->setValue(20); });
        control->ShowDriverDialog1(0);
        laterScene();
        const QImage moving = laterScene();
        QVERIFY(!moving.isNull());
        QVERIFY(moving != still);
    }

    void SlidersActOnTheDriver()
    {
        auto cameras = std::make_shared<FakeV4l2Calls::Cameras>();
        auto camera = std::make_shared<FakeCamera>();
        camera->card = u"Scope"_s;
        camera->controls = {{V4L2_CID_BRIGHTNESS, Range("Brightness", -64, 64, 4)},
                            {V4L2_CID_GAIN, Range("Gain", 0, 100, 1, V4L2_CTRL_FLAG_READ_ONLY)}};
        camera->values = {{V4L2_CID_BRIGHTNESS, 8}};
        cameras->insert(u"/dev/video0"_s, camera);
        VideoControl control(std::make_shared<VideoDevices>(std::make_unique<FakeV4l2Calls>(cameras), QString()));
        InNextDialog([&](QDialog& dialog) {
            QCOMPARE(dialog.findChildren<QSlider*>().size(), 1);
            auto* slider = dialog.findChild<QSlider*>(u"Brightness"_s);
            QCOMPARE(slider->value(), 18);
            slider->setValue(slider->maximum());
            QCOMPARE(camera->values[V4L2_CID_BRIGHTNESS], 64);
            // Unplugged while the dialog stands: what is shown stays true.
            camera->openError = ENODEV;
            slider->setValue(0);
            QCOMPARE(slider->value(), slider->maximum());
        });
        control.ShowDriverDialog2(0);
        QCOMPARE(camera->values[V4L2_CID_BRIGHTNESS], 64);
        QCOMPARE(camera->openNow, 0);
        QVERIFY_THROWS_EXCEPTION(PlatformError, control.ShowDriverDialog2(0));
    }

    void TheRatesAreThoseOfTheFormat()
    {
        auto cameras = std::make_shared<FakeV4l2Calls::Cameras>();
        auto camera = std::make_shared<FakeCamera>();
        camera->card = u"Scope"_s;
        camera->formats = {{V4L2_PIX_FMT_YUYV, {{640, 480, {30, 15}}, {320, 240, {60}}}}};
        cameras->insert(u"/dev/video0"_s, camera);
        VideoControl control(std::make_shared<VideoDevices>(std::make_unique<FakeV4l2Calls>(cameras), QString()));
        for (const int chosen : {0, 1}) {
            InNextDialog([&](QDialog& dialog) {
                auto* rates = dialog.findChild<QComboBox*>();
                QVERIFY(rates != nullptr);
                QCOMPARE(rates->count(), 2);
                QCOMPARE(rates->currentIndex(), chosen);
                rates->setCurrentIndex(1);
                Q_EMIT rates->activated(1);
            });
            control.setVideoFormat(control.VideoFormats().names.indexOf(u"640x480 30fps YUYV"_s));
            control.ShowDriverDialog1(0);
        }
    }

    void ATelevisionStandardIsSetAtTheNextStart()
    {
        auto cameras = std::make_shared<FakeV4l2Calls::Cameras>();
        auto camera = std::make_shared<FakeCamera>();
        camera->card = u"Grabber"_s;
        camera->formats = {{V4L2_PIX_FMT_YUYV, {{720, 480, {}}}}};
        camera->standards = {{V4L2_STD_PAL, u"PAL"_s}, {V4L2_STD_NTSC, u"NTSC"_s}};
        camera->standard = V4L2_STD_PAL;
        cameras->insert(u"/dev/video0"_s, camera);
        VideoControl control(std::make_shared<VideoDevices>(std::make_unique<FakeV4l2Calls>(cameras), QString()));
        InNextDialog([&](QDialog& dialog) {
            auto* standards = dialog.findChild<QComboBox*>(u"영상방식"_s);
            QVERIFY(standards != nullptr);
            QCOMPARE(standards->currentText(), u"PAL"_s);
            const int ntsc = standards->findText(u"NTSC"_s);
            standards->setCurrentIndex(ntsc);
            Q_EMIT standards->activated(ntsc);
        });
        control.ShowDriverDialog1(0);
        QCOMPARE(camera->standard, quint64(V4L2_STD_PAL));
        // The node itself is none that could be streamed from.
        QVERIFY_THROWS_EXCEPTION(PlatformError, control.Start());
        QCOMPARE(camera->standard, quint64(V4L2_STD_NTSC));
    }

    void TheDialogGoesWithItsOwner()
    {
        const LiveFixture fixture;
        auto control = fixture.NewControl();
        QTimer::singleShot(0, qApp, [&] { control.reset(); });
        control->ShowDriverDialog2(0);
        QVERIFY(QApplication::activeModalWidget() == nullptr);
    }

    void NoDeviceIsAFault()
    {
        VideoControl control(std::make_shared<VideoDevices>(
            std::make_unique<FakeV4l2Calls>(std::make_shared<FakeV4l2Calls::Cameras>()), QString()));
        QVERIFY_THROWS_EXCEPTION(PlatformError, control.ShowDriverDialog1(0));
        QVERIFY_THROWS_EXCEPTION(PlatformError, control.ShowDriverDialog2(0));
    }
};

QTEST_MAIN(DriverDialogsTest)
#include "DriverDialogsTest.moc"
