#include "frame/services.h"
#include "LiveFixture.h"
#include "support/testing.h"

#include "contracts/files.h"
#include "contracts/PlatformError.h"
#include "frame/components.h"
#include "platform/files/LocalFiles.h"

using namespace Qt::StringLiterals;

namespace {

/// Frames that are painted without a gap. A busy machine may lose one now and then; so many only come when none is left
/// out. The thread sanitizer takes the time of several frames for one.
#ifdef __SANITIZE_THREAD__
constexpr int WithoutGap = 3;
#else
constexpr int WithoutGap = 40;
#endif

qsizetype OpenDescriptors()
{
    return QDir(u"/proc/self/fd"_s).entryList(QDir::NoDotAndDotDot | QDir::AllEntries | QDir::System).size();
}

qsizetype Threads()
{
    return QDir(u"/proc/self/task"_s).entryList(QDir::NoDotAndDotDot | QDir::Dirs).size();
}
} // namespace

class LivePictureTest : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_folder;

private Q_SLOTS:
    void initTestCase() { RegisterFiles(); }

    void PaintsEveryFrame_data()
    {
        QTest::addColumn<int>("format");
        QTest::newRow("1080p60") << int(LiveFixture::At1080p60);
        QTest::newRow("720p60") << int(LiveFixture::At720p60);
        QTest::newRow("480p30") << int(LiveFixture::At480p30);
    }

    void PaintsEveryFrame()
    {
        QFETCH(int, format);
        const LiveFixture fixture;
        const auto control = fixture.NewControl(format);
        quint32 last = 0;
        int unbroken = 0;
        int longest = 0;
        connect(control.get(), &VideoControl::Painted, control.get(), [&](const QImage& picture, int) {
            const auto number = ReadFrameNumber(picture);
            QVERIFY(number.has_value());
            QVERIFY(*number > last);
            unbroken = *number == last + 1 ? unbroken + 1 : 1;
            longest = qMax(longest, unbroken);
            last = *number;
        });
        control->Start();
        QTRY_VERIFY_WITH_TIMEOUT(longest >= WithoutGap, 60000);
        QVERIFY(ShowsScene(control->grab().toImage()));
    }

    void StillsTellWhichFrameTheyHold_data() { PaintsEveryFrame_data(); }

    void StillsTellWhichFrameTheyHold()
    {
        QFETCH(int, format);
        const LiveFixture fixture;
        const auto control = fixture.NewControl(format);
        control->Start();
        quint32 painted = 0;
        connect(control.get(), &VideoControl::Painted, control.get(),
                [&](const QImage& picture, int) { painted = ReadFrameNumber(picture).value_or(0); });
        quint32 earlier = 0;
        for (int i = 0; i < 8; ++i) {
            QTRY_VERIFY(painted > earlier);
            const auto frame = control->HoldFrame();
            QVERIFY(frame);
            // Held frames stay what they are while the picture goes on.
            const quint32 paintedThen = painted;
            QTRY_VERIFY(painted > paintedThen + 2);
            const QImage still = Decoded(frame);
            const auto number = ReadFrameNumber(still);
            QVERIFY(number.has_value());
            QVERIFY(*number >= paintedThen);
            QVERIFY(*number > earlier);
            QVERIFY(ShowsScene(still));
            QCOMPARE(still.height(), QList<int>({1080, 720, 480})[format]);
            earlier = *number;
        }
    }

    void TheNumberStripIsTrulyBlackAndWhite()
    {
        const LiveFixture fixture;
        const auto control = fixture.NewControl(LiveFixture::At1080p60);
        control->Start();
        QTRY_VERIFY(ReadFrameNumber(Decoded(control->HoldFrame())).value_or(0) > 100);
        const QImage still = Decoded(control->HoldFrame());
        const quint32 number = ReadFrameNumber(still).value_or(0);
        for (int cell = 0; cell < 32; ++cell) {
            const bool isWhite = ((number >> (31 - cell)) & 1) != 0;
            // Near all four edges of the cell, which are 60 pixels apart.
            for (const QPoint at : {QPoint(60 * cell + 4, 1016), QPoint(60 * cell + 55, 1076)}) {
                const int grey = qGray(still.pixel(at));
                QVERIFY2(isWhite ? grey > 245 : grey < 10, qPrintable(u"cell %1: %2"_s.arg(cell).arg(grey)));
            }
        }
    }

    void KeepsTheShapeOverBlack_data()
    {
        Columns<int, QSize, QRect>("format", "size", "picture");
        QTest::newRow("wide picture") << int(LiveFixture::At720p60) << QSize(560, 420) << QRect(0, 52, 560, 315);
        QTest::newRow("fills") << int(LiveFixture::At480p30) << QSize(560, 420) << QRect(0, 0, 560, 420);
        QTest::newRow("wide control") << int(LiveFixture::At480p30) << QSize(800, 300) << QRect(200, 0, 400, 300);
        QTest::newRow("larger than the frame")
            << int(LiveFixture::At480p30) << QSize(900, 660) << QRect(10, 0, 880, 660);
    }

    void KeepsTheShapeOverBlack()
    {
        QFETCH3(int, format, QSize, size, QRect, picture);
        const LiveFixture fixture;
        const auto control = fixture.NewControl(format);
        QSignalSpy painted(control.get(), &VideoControl::Painted);
        control->Start();
        QTRY_VERIFY(!painted.isEmpty());
        control->resize(size); // While it runs.
        QTRY_COMPARE(painted.last()[0].value<QImage>().size(), picture.size());
        const QImage seen = control->grab().toImage();
        QVERIFY(ShowsScene(seen.copy(picture)));
        for (const QRect& bar : QRegion(seen.rect()).subtracted(picture.adjusted(-1, -1, 1, 1)))
            QCOMPARE(seen.pixel(bar.center()), qRgb(0, 0, 0));
    }

    void SnapShotWritesTheLiveFrame()
    {
        const LiveFixture fixture;
        const auto control = fixture.NewControl();
        const QString path = m_folder.path() + u"\\a.jpg"_s;
        QVERIFY_THROWS_EXCEPTION(PlatformError, control->SnapShotJPEG(path, 90));
        QVERIFY(!FileExists(path));

        control->Start();
        QTRY_VERIFY(control->HoldFrame());
        control->SnapShotJPEG(path, 90);
        const QImage first = QImage::fromData(Files().ReadFile(path), "JPEG");
        QCOMPARE(first.size(), QSize(640, 480));
        QVERIFY(ReadFrameNumber(first).has_value());
        control->SnapShotJPEG(path, 20);
        QVERIFY(Files().ReadFile(path).size() < 60000);
    }

    void FramesAreCountedFromEachStart()
    {
        const LiveFixture fixture;
        const auto control = fixture.NewControl();
        QSignalSpy frames(control.get(), &VideoCap::OnFrame);
        for (int round = 0; round < 2; ++round) {
            frames.clear();
            control->Start(); // The second time on the running control.
            QTRY_VERIFY(frames.count() >= 10);
            QVERIFY(frames[0][0].toInt() < 10);
            for (int i = 1; i < frames.count(); ++i) {
                QVERIFY(frames[i][0].toInt() > frames[i - 1][0].toInt());
                QVERIFY(frames[i][1].toInt() > frames[i - 1][1].toInt());
            }
        }
        control->Stop();
        frames.clear();
        QCoreApplication::processEvents();
        QVERIFY(frames.isEmpty());
    }

    void AnotherFormatTakesEffectAtStart()
    {
        const LiveFixture fixture;
        const auto control = fixture.NewControl(LiveFixture::At480p30);
        control->Start();
        QTRY_COMPARE(Decoded(control->HoldFrame()).size(), QSize(640, 480));
        control->setVideoFormat(LiveFixture::At720p60);
        QCOMPARE(Decoded(control->HoldFrame()).size(), QSize(640, 480));
        control->Start();
        QTRY_COMPARE(Decoded(control->HoldFrame()).size(), QSize(1280, 720));
    }

    void HandlersThatServeEventsDontPileUp()
    {
        const LiveFixture fixture;
        const auto control = fixture.NewControl(LiveFixture::At1080p60);
        int depth = 0;
        int deepest = 0;
        int last = 0;
        int painted = 0;
        connect(control.get(), &VideoControl::Painted, control.get(), [&] { ++painted; });
        connect(control.get(), &VideoCap::OnFrame, control.get(), [&](int frames) {
            deepest = qMax(deepest, ++depth);
            const int paintedBefore = painted;
            // The picture goes on while a handler is busy serving events.
            for (int i = 0; i < 100 && painted < paintedBefore + 2; ++i)
                QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
            last = frames;
            --depth;
        });
        control->Start();
        QTRY_VERIFY(last > 40);
        QVERIFY2(deepest <= 2, qPrintable(QString::number(deepest)));
        QVERIFY(painted > 20);
    }

    void StopInsideTheFrameEvent()
    {
        const LiveFixture fixture;
        const auto control = fixture.NewControl();
        int events = 0;
        connect(control.get(), &VideoCap::OnFrame, control.get(), [&] {
            if (++events < 5)
                control->Start();
            else
                control->Stop();
        });
        control->Start();
        QTRY_COMPARE(events, 5);
        QVERIFY(!control->HoldFrame());
        QCoreApplication::processEvents();
        QCOMPARE(events, 5);
    }

    void DeletedInsideTheFrameEventWhileRunning()
    {
        const LiveFixture fixture;
        QPointer<VideoControl> control = fixture.NewControl().release();
        connect(control.data(), &VideoCap::OnFrame, this, [&] { delete control.data(); });
        control->Start();
        QTRY_VERIFY(control.isNull());
    }

    void ManyStartsAndStopsLeaveNothingBehind()
    {
        const LiveFixture fixture;
        const auto control = fixture.NewControl();
        qsizetype descriptors = 0;
        qsizetype threads = 0;
        for (int round = 0; round < 50; ++round) {
            control->Start();
            QTRY_VERIFY(control->HoldFrame());
            control->Stop();
            control->Stop();
            QVERIFY(!control->HoldFrame());
            QCoreApplication::processEvents();
            if (round == 5) {
                descriptors = OpenDescriptors();
                threads = Threads();
            }
        }
        QTRY_VERIFY(OpenDescriptors() <= descriptors);
        // Where a task wants a thread before the last one has come back, the pool keeps one more for 15 seconds.
        QTRY_VERIFY_WITH_TIMEOUT(Threads() <= threads, 20'000);
        control->Start();
        QTRY_VERIFY(control->HoldFrame());
    }

    void TwoControlsRunSideBySide()
    {
        const LiveFixture fixture;
        const auto one = fixture.NewControl();
        const auto other = fixture.NewControl(LiveFixture::At720p60);
        one->Start();
        other->Start();
        QTRY_VERIFY(one->HoldFrame() && other->HoldFrame());
        QCOMPARE(Decoded(one->HoldFrame()).size(), QSize(640, 480));
        one->Stop();
        QVERIFY(!one->HoldFrame());
        QSignalSpy painted(other.get(), &VideoControl::Painted);
        QTRY_VERIFY(painted.count() > 10);
        QVERIFY(other->HoldFrame());
    }

    void AHiddenControlStillDelivers()
    {
        const LiveFixture fixture;
        const auto control = fixture.NewControl();
        QSignalSpy painted(control.get(), &VideoControl::Painted);
        control->Start();
        QTRY_VERIFY(painted.count() > 5);
        control->hide();
        QSignalSpy frames(control.get(), &VideoCap::OnFrame);
        QTRY_VERIFY(frames.count() > 15);
        QVERIFY(control->HoldFrame());

        // What was waiting to be painted when it was hidden is of the past.
        const int seen = frames.last()[0].toInt();
        painted.clear();
        control->show();
        QTRY_VERIFY(painted.count() > 5);
        QVERIFY(painted[0][1].toInt() > seen);
    }

    void CaptureModeReadsBackAndLeavesTheLivePictureAlone()
    {
        const LiveFixture fixture;
        const auto control = fixture.NewControl();
        QVERIFY(!control->CaptureMode());
        control->setCaptureMode(true);
        QVERIFY(control->CaptureMode());
        control->Start();
        QTRY_VERIFY(control->HoldFrame());
        control->setCaptureMode(false);
        QVERIFY(!control->CaptureMode());
        QVERIFY(control->HoldFrame());
    }
};

QTEST_MAIN(LivePictureTest)
#include "LivePictureTest.moc"
