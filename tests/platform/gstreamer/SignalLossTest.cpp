#include "LiveFixture.h"
#include "support/testing.h"

#include "contracts/PlatformError.h"

using namespace Qt::StringLiterals;

class SignalLossTest : public QObject
{
    Q_OBJECT

private:
    /// Loses and regains the signal in one of two ways.
    static void SetSignal(bool byPlug, bool on)
    {
        if (byPlug)
            UnplugTestPicture(!on);
        else
            FreezeTestPicture(!on);
    }

private Q_SLOTS:
    void cleanup()
    {
        FreezeTestPicture(false);
        UnplugTestPicture(false);
    }

    void ALostSignalShowsNoFrameAndComesBack_data()
    {
        QTest::addColumn<bool>("byPlug");
        QTest::newRow("frozen") << false;
        QTest::newRow("unplugged") << true;
    }

    void ALostSignalShowsNoFrameAndComesBack()
    {
        QFETCH(bool, byPlug);
        const LiveFixture fixture;
        const auto control = fixture.NewControl(LiveFixture::At1080p60);
        QSignalSpy changes(control.get(), &VideoCap::OnDeviceChange);
        control->Start();
        QTRY_VERIFY(ShowsScene(control->grab().toImage().copy(0, 52, 560, 315)));
        QCOMPARE(changes.count(), 0);

        for (int round = 1; round <= 3; ++round) {
            SetSignal(byPlug, false);
            QTRY_VERIFY(!control->HoldFrame());
            QVERIFY_THROWS_EXCEPTION(PlatformError, control->SnapShotJPEG(u"C:\\a.jpg"_s, 90));
            QTRY_COMPARE(changes.count(), 2 * round - 1);
            const QImage lost = control->grab().toImage();
            QVERIFY(!ShowsScene(lost));
            QVERIFY(!ReadFrameNumber(lost.copy(0, 52, 560, 315)).value_or(0));
            // Something is said in the middle.
            const QImage middle = lost.copy(150, 180, 260, 60);
            int lit = 0;
            for (int y = 0; y < middle.height(); ++y)
                for (int x = 0; x < middle.width(); ++x)
                    lit += qGray(middle.pixel(x, y)) > 100 ? 1 : 0;
            QVERIFY(lit > 50);

            QSignalSpy painted(control.get(), &VideoControl::Painted);
            SetSignal(byPlug, true);
            QTRY_VERIFY(control->HoldFrame());
            QTRY_VERIFY(painted.count() > 3);
            QCOMPARE(changes.count(), 2 * round);
            QVERIFY(ShowsScene(control->grab().toImage().copy(0, 52, 560, 315)));
        }
    }

    void TheCheckHoldsAtTheMomentOfTheStill()
    {
        // The user interface is too busy to notice the loss by itself.
        const LiveFixture fixture;
        const auto control = fixture.NewControl();
        control->Start();
        QTRY_VERIFY(control->HoldFrame());
        FreezeTestPicture(true);
        QElapsedTimer busy;
        busy.start();
        while (control->HoldFrame() && busy.elapsed() < 5000)
            QThread::yieldCurrentThread();
        QVERIFY(!control->HoldFrame());
    }

    void TheCountGoesOnOverALoss()
    {
        const LiveFixture fixture;
        const auto control = fixture.NewControl();
        QSignalSpy frames(control.get(), &VideoCap::OnFrame);
        control->Start();
        QTRY_VERIFY(frames.count() > 10);
        UnplugTestPicture(true);
        QTRY_VERIFY(!control->HoldFrame());
        const int counted = frames.last()[0].toInt();
        const int timeMs = frames.last()[1].toInt();
        frames.clear();
        UnplugTestPicture(false);
        QTRY_VERIFY(!frames.isEmpty());
        QVERIFY(frames[0][0].toInt() > counted);
        QVERIFY(frames[0][1].toInt() > timeMs);
    }

    void StopWhileLostStaysStopped()
    {
        const LiveFixture fixture;
        const auto control = fixture.NewControl();
        control->Start();
        QTRY_VERIFY(control->HoldFrame());
        QSignalSpy changes(control.get(), &VideoCap::OnDeviceChange);
        UnplugTestPicture(true);
        QTRY_COMPARE(changes.count(), 1);
        control->Stop();
        QSignalSpy listChanges(fixture.devices.get(), &VideoDevices::Changed);
        UnplugTestPicture(false);
        QCOMPARE(listChanges.count(), 1);
        QVERIFY(!control->HoldFrame());
        QCOMPARE(changes.count(), 1);
    }

    void StartOnAnUnpluggedDeviceIsAFault()
    {
        const LiveFixture fixture;
        const auto control = fixture.NewControl();
        QCOMPARE(control->Devices().Count(), 1);
        UnplugTestPicture(true);
        QCOMPARE(control->Devices().Count(), 1);
        QVERIFY_THROWS_EXCEPTION(PlatformError, control->Start());
        UnplugTestPicture(false);
        QVERIFY(!control->HoldFrame());
        control->Start();
        QTRY_VERIFY(control->HoldFrame());
    }

    void AFormatWithoutAPictureIsTakenBack()
    {
        const LiveFixture fixture;
        const auto control = fixture.NewControl(LiveFixture::At1080p60);
        QSignalSpy refused(control.get(), &VideoCap::OnFormatRefused);
        QSignalSpy frames(control.get(), &VideoCap::OnFrame);
        control->Start();
        QTRY_VERIFY(!frames.isEmpty());
        FreezeTestPicture(true);
        control->setVideoFormat(LiveFixture::At1080p60 + 1);
        control->Start();
        QTRY_COMPARE_WITH_TIMEOUT(refused.count(), 1, 20000);
        QCOMPARE(refused.first(), (QVariantList{LiveFixture::At1080p60 + 1, int(LiveFixture::At1080p60)}));
        FreezeTestPicture(false);
        QTRY_VERIFY(control->HoldFrame());
        QCOMPARE(QImage::fromData(control->HoldFrame()->EncodeJPEG(90)).height(), 1080);
    }

    void ADeviceThatIsSilentFromTheStart()
    {
        const LiveFixture fixture;
        const auto control = fixture.NewControl();
        FreezeTestPicture(true);
        QSignalSpy changes(control.get(), &VideoCap::OnDeviceChange);
        control->Start();
        QVERIFY(!control->HoldFrame());
        QVERIFY(control->AwaitFrame());
        QCOMPARE(control->accessibleDescription(), u"연결 중"_s);
        QTRY_COMPARE_WITH_TIMEOUT(changes.count(), 1, 20000);
        QCOMPARE(control->accessibleDescription(), u"신호 없음"_s);
        QVERIFY(!control->AwaitFrame());
        FreezeTestPicture(false);
        QTRY_VERIFY(control->HoldFrame());
    }

    void APressGetsTheFirstFrameThatComes()
    {
        const LiveFixture fixture;
        const auto control = fixture.NewControl();
        control->Start();
        QTRY_VERIFY(control->HoldFrame());
        FreezeTestPicture(true);
        QTRY_VERIFY(!control->HoldFrame());
        const auto awaited = control->AwaitFrame();
        QVERIFY(awaited && !awaited->Frame() && !awaited->IsOver());
        FreezeTestPicture(false);
        QTRY_VERIFY(awaited->Frame());
        QVERIFY(awaited->IsOver());
        const auto stopped = control->AwaitFrame();
        control->Stop();
        QVERIFY(stopped->IsOver() && !control->AwaitFrame());
        QCOMPARE(QAccessible::queryAccessibleInterface(control.get())->role(), QAccessible::Graphic);
    }

    void StopAndDeletionWhileFrozenDontHang()
    {
        const LiveFixture fixture;
        auto control = fixture.NewControl();
        control->Start();
        QTRY_VERIFY(control->HoldFrame());
        FreezeTestPicture(true);
        QTRY_VERIFY(!control->HoldFrame());
        control->Stop();
        control->Start();
        control.reset();
    }
};

QTEST_MAIN(SignalLossTest)
#include "SignalLossTest.moc"
