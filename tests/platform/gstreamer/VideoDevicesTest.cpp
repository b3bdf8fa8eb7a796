#include "platform/gstreamer/devices/VideoDevices.h"
#include "contracts/PlatformError.h"
#include "FakeV4l2Calls.h"
#include "LiveFixture.h"
#include "platform/gstreamer/devices/V4l2Device.h"
#include "platform/gstreamer/testpicture/TestPictureHooks.h"
#include "platform/gstreamer/VideoControl.h"
#include "support/testing.h"

using namespace Qt::StringLiterals;

namespace {
std::shared_ptr<FakeCamera> Camera(const QString& card, const QString& bus)
{
    return std::make_shared<FakeCamera>(
        FakeCamera{.card = card, .bus = bus, .formats = {{V4L2_PIX_FMT_YUYV, {{640, 480, {30}}}}}});
}
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

class VideoDevicesTest : public QObject
{
    Q_OBJECT

private:
    std::shared_ptr<FakeV4l2Calls::Cameras> m_cameras;
    std::shared_ptr<VideoDevices> m_devices;

    QStringList Names() const { return VideoControl(m_devices).Devices().names; }

private Q_SLOTS:
    void init()
    {
        m_cameras = std::make_shared<FakeV4l2Calls::Cameras>();
        m_devices = std::make_shared<VideoDevices>(std::make_unique<FakeV4l2Calls>(m_cameras), QString());
    }

    void ListsCamerasThenTheTestPicture()
    {
        m_cameras->insert(u"/dev/video0"_s, Camera(u"Scope"_s, u"usb-1"_s));
        m_cameras->insert(u"/dev/video1"_s, Camera(u"Scope"_s, u"usb-1"_s));
        m_cameras->value(u"/dev/video1"_s)->isMetadataNode = true;
        m_cameras->insert(u"/dev/video2"_s, Camera(u"Scope"_s, u"usb-2"_s));
        QCOMPARE(Names(), QStringList({u"Scope"_s, u"Scope (2)"_s}));
        m_devices->OfferTestPicture(true);
        QCOMPARE(Names(), QStringList({u"Scope"_s, u"Scope (2)"_s, u"시험 화면"_s}));
    }

    void PositionsStayWhileDevicesComeAndGo()
    {
        m_devices->OfferTestPicture(true);
        const auto first = Camera(u"Scope A"_s, u"usb-1"_s);
        const auto second = Camera(u"Scope B"_s, u"usb-2"_s);
        m_cameras->insert(u"/dev/video0"_s, first);
        m_cameras->insert(u"/dev/video1"_s, second);
        const QStringList listed = {u"Scope A"_s, u"Scope B"_s, u"시험 화면"_s};
        QCOMPARE(Names(), listed);

        m_cameras->remove(u"/dev/video0"_s);
        QCOMPARE(Names(), listed);
        QVERIFY(!m_devices->List()[0].isPresent);
        QVERIFY(m_devices->List()[1].isPresent);
        QCOMPARE(m_devices->List()[0].modes.size(), 1);

        // A newcomer takes the free node, but not the place of the device that is gone.
        m_cameras->insert(u"/dev/video0"_s, Camera(u"Microscope"_s, u"usb-3"_s));
        QCOMPARE(Names(), listed + QStringList{u"Microscope"_s});

        // Plugged in again elsewhere, the first one is the first one again.
        m_cameras->insert(u"/dev/video7"_s, Camera(u"Scope A"_s, u"usb-9"_s));
        QCOMPARE(Names(), listed + QStringList{u"Microscope"_s});
        QVERIFY(m_devices->List()[0].isPresent);
        QCOMPARE(m_devices->List()[0].node, u"/dev/video7"_s);

        UnplugTestPicture(true);
        QVERIFY(!m_devices->List()[2].isPresent);
        QCOMPARE(Names().size(), 4);
        UnplugTestPicture(false);
        QVERIFY(m_devices->List()[2].isPresent);
    }

    void TellsOfChangesInTheWatchedFolder()
    {
        const QTemporaryDir folder;
        VideoDevices devices(std::make_unique<FakeV4l2Calls>(m_cameras), folder.path());
        QVERIFY(devices.List().isEmpty());
        QSignalSpy changes(&devices, &VideoDevices::Changed);
        const auto locked = Camera(u"Scope"_s, u"usb-1"_s);
        locked->openError = EACCES;
        m_cameras->insert(u"/dev/video0"_s, locked);
        QFile node(folder.filePath(u"video0"_s));
        QVERIFY(node.open(QIODevice::WriteOnly));
        QTRY_COMPARE(changes.count(), 1);
        QVERIFY(devices.List().isEmpty());

        // The rights of a node come a moment after the node itself.
        m_cameras->insert(u"/dev/video0"_s, Camera(u"Scope"_s, u"usb-1"_s));
        QVERIFY(node.setPermissions(QFile::ReadOwner));
        QTRY_COMPARE(changes.count(), 2);
        QCOMPARE(devices.List().size(), 1);
    }

    void FormatsHaveClearNames_data()
    {
        Columns<QList<FakeCamera::Format>, bool, QStringList>("formats", "isSizeRange", "names");

        QTest::newRow("smooth and large first; no decoder for H264")
            << QList<FakeCamera::Format>{{V4L2_PIX_FMT_H264, {{1920, 1080, {60}}}},
                                         {V4L2_PIX_FMT_YUYV, {{640, 480, {30, 15}}, {1920, 1080, {5}}}},
                                         {V4L2_PIX_FMT_MJPEG, {{1920, 1080, {30, 60}}}}}
            << false
            << QStringList{u"1920x1080 60fps MJPG"_s, u"1920x1080 30fps MJPG"_s, u"640x480 30fps YUYV"_s,
                           u"1920x1080 5fps YUYV"_s, u"640x480 15fps YUYV"_s};
        QTest::newRow("a grabber that lists neither sizes nor rates")
            << QList<FakeCamera::Format>{{V4L2_PIX_FMT_UYVY, {}}} << false << QStringList{u"720x576 UYVY"_s};
        QTest::newRow("a range of sizes")
            << QList<FakeCamera::Format>{{V4L2_PIX_FMT_NV12, {{1280, 720, {25}}}}} << true
            << QStringList{u"1280x720 25fps NV12"_s, u"800x600 25fps NV12"_s, u"720x576 25fps NV12"_s,
                           u"720x480 25fps NV12"_s, u"640x480 25fps NV12"_s};
        QTest::newRow("nothing that can be shown")
            << QList<FakeCamera::Format>{{V4L2_PIX_FMT_H264, {{1920, 1080, {60}}}}} << false << QStringList{};
    }

    void FormatsHaveClearNames()
    {
        QFETCH3(QList<FakeCamera::Format>, formats, bool, isSizeRange, QStringList, names);
        const auto camera = Camera(u"Scope"_s, u"usb-1"_s);
        camera->formats = formats;
        camera->isSizeRange = isSizeRange;
        m_cameras->insert(u"/dev/video0"_s, camera);
        QCOMPARE(VideoControl(m_devices).VideoFormats().names, names);
    }

    void InputsAreThoseOfTheChosenDevice()
    {
        const auto grabber = Camera(u"Grabber"_s, u"pci-1"_s);
        grabber->inputs = QStringList{u"Composite"_s, u"S-Video"_s};
        m_cameras->insert(u"/dev/video0"_s, grabber);
        m_devices->OfferTestPicture(true);
        VideoControl control(m_devices);
        QCOMPARE(control.VideoInputs().names, grabber->inputs);
        control.setDevice(1);
        QCOMPARE(control.VideoInputs().Count(), 1);
        control.setDevice(2);
        QCOMPARE(control.VideoInputs().Count(), 0);
        QCOMPARE(control.VideoFormats().Count(), 0);
    }

    void SelectsTheInput()
    {
        const auto grabber = Camera(u"Grabber"_s, u"pci-1"_s);
        grabber->inputs = QStringList{u"Composite"_s, u"S-Video"_s};
        m_cameras->insert(u"/dev/video0"_s, grabber);
        V4l2Device(m_devices->Calls(), u"/dev/video0"_s).SelectInput(1);
        QCOMPARE(grabber->input, 1);

        grabber->inputError = EBUSY;
        VideoControl control(m_devices);
        control.setVideoInput(0);
        QVERIFY_THROWS_EXCEPTION(PlatformError, control.Start());
        QCOMPARE(grabber->openNow, 0);
    }

    void PositionsOutOfRangeAreFaultsOfTheStart_data()
    {
        Columns<int, int, int, QString>("device", "format", "input", "word");
        QTest::newRow("device") << 1 << 0 << 0 << u"캡쳐장치(1)"_s;
        QTest::newRow("format") << 0 << 3 << 0 << u"화면크기(3)"_s;
        QTest::newRow("input") << 0 << 0 << 1 << u"캡쳐소스(1)"_s;
    }

    void WhatCannotBeShownIsListedAndNamed_data()
    {
        Columns<quint32, bool, QString>("fourcc", "isMultiPlanar", "named");
        QTest::newRow("H.264 alone") << quint32(V4L2_PIX_FMT_H264) << false << u"(H264)"_s;
        QTest::newRow("several planes") << quint32(V4L2_PIX_FMT_NV12M) << true << u"(NM12 multi-planar)"_s;
    }

    void WhatCannotBeShownIsListedAndNamed()
    {
        QFETCH3(quint32, fourcc, bool, isMultiPlanar, QString, named);
        auto camera = std::make_shared<FakeCamera>(
            FakeCamera{.card = u"Scope"_s, .bus = u"usb-1"_s, .formats = {{fourcc, {{1920, 1080, {30}}}}}});
        camera->isMultiPlanar = isMultiPlanar;
        m_cameras->insert(u"/dev/video0"_s, camera);
        VideoControl control(m_devices);
        QCOMPARE(control.Devices().names.first(), u"Scope"_s);
        QCOMPARE(control.VideoFormats().Count(), 0);
        try {
            control.Start();
            QFAIL("it started");
        } catch (const PlatformError& error) {
            QVERIFY2(error.Text().contains(named), qPrintable(error.Text()));
        }
    }

    void PositionsOutOfRangeAreFaultsOfTheStart()
    {
        QFETCH4(int, device, int, format, int, input, QString, word);
        m_devices->OfferTestPicture(true);
        VideoControl control(m_devices);
        control.Devices();
        control.Start();
        QTRY_VERIFY(control.HoldFrame());

        control.setDevice(device);
        control.setVideoFormat(format);
        control.setVideoInput(input);
        try {
            control.Start();
            QFAIL("The start went through.");
        } catch (const PlatformError& error) {
            QVERIFY2(error.Text().contains(word), qPrintable(error.Text()));
        }
        QVERIFY(!control.HoldFrame());
    }

    void ACameraThatCannotBeOpenedIsAFault()
    {
        // The list knows it, but the machine has no such node.
        m_cameras->insert(u"/dev/video97"_s, Camera(u"Scope"_s, u"usb-1"_s));
        VideoControl control(m_devices);
        try {
            control.Start();
            QFAIL("The start went through.");
        } catch (const PlatformError& error) {
            QVERIFY2(error.Text().contains(u"연결되어 있지 않습니다"_s), qPrintable(error.Text()));
        }
        m_cameras->clear();
        QVERIFY_THROWS_EXCEPTION(PlatformError, control.Start());
    }

    void SlidersActOnTheDriver()
    {
        auto camera = std::make_shared<FakeCamera>();
        camera->card = u"Scope"_s;
        camera->controls = {{V4L2_CID_BRIGHTNESS, Range("Brightness", -64, 64, 4)},
                            {V4L2_CID_GAIN, Range("Gain", 0, 100, 1, V4L2_CTRL_FLAG_READ_ONLY)}};
        camera->values = {{V4L2_CID_BRIGHTNESS, 8}};
        m_cameras->insert(u"/dev/video0"_s, camera);
        VideoControl control(m_devices);
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
        auto camera = std::make_shared<FakeCamera>();
        camera->card = u"Scope"_s;
        camera->formats = {{V4L2_PIX_FMT_YUYV, {{640, 480, {30, 15}}, {320, 240, {60}}}}};
        m_cameras->insert(u"/dev/video0"_s, camera);
        VideoControl control(m_devices);
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
        auto camera = std::make_shared<FakeCamera>();
        camera->card = u"Grabber"_s;
        camera->formats = {{V4L2_PIX_FMT_YUYV, {{720, 480, {}}}}};
        camera->standards = {{V4L2_STD_PAL, u"PAL"_s}, {V4L2_STD_NTSC, u"NTSC"_s}};
        camera->standard = V4L2_STD_PAL;
        m_cameras->insert(u"/dev/video0"_s, camera);
        VideoControl control(m_devices);
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
};

QTEST_MAIN(VideoDevicesTest)
#include "VideoDevicesTest.moc"
