#include "platform/gstreamer/live/LivePipeline.h"
#include "contracts/PlatformError.h"
#include "platform/gstreamer/live/FrameExchange.h"
#include "platform/gstreamer/live/LiveSession.h"
#include "platform/gstreamer/stills/GstStillFrame.h"
#include "platform/gstreamer/stills/JpegStillFrame.h"
#include "support/testing.h"

#include <linux/videodev2.h>

#include <QtEndian>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {
LiveSource Source(quint32 fourcc, const QByteArray& elements)
{
    return {false, {}, {fourcc, 640, 480, 30, 1}, elements};
}

/// How much neighbouring rows differ, a grey step for each pixel: upright bars give nothing unless they are combed.
double Combing(const QImage& picture)
{
    double sum = 0;
    for (int y = 0; y + 1 < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x)
            sum += qAbs(qGray(picture.pixel(x, y)) - qGray(picture.pixel(x, y + 1)));
    }
    return sum / (picture.width() * picture.height());
}
} // namespace

class LivePipelineTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { PrepareMedia(); }

    void ShowsWhatCamerasDeliver_data()
    {
        Columns<quint32, QByteArray>("fourcc", "format");
        QTest::newRow("MJPG") << quint32(V4L2_PIX_FMT_MJPEG) << QByteArray("RGB ! jpegenc");
        QTest::newRow("YUYV") << quint32(V4L2_PIX_FMT_YUYV) << QByteArray("YUY2");
        QTest::newRow("NV12") << quint32(V4L2_PIX_FMT_NV12) << QByteArray("NV12");
        QTest::newRow("GREY") << quint32(V4L2_PIX_FMT_GREY) << QByteArray("GRAY8");
        QTest::newRow("XR24") << quint32(V4L2_PIX_FMT_XBGR32) << QByteArray("BGRx");
        QTest::newRow("RGB3") << quint32(V4L2_PIX_FMT_RGB24) << QByteArray("RGB");
    }

    void ShowsWhatCamerasDeliver()
    {
        QFETCH2(quint32, fourcc, QByteArray, format);
        for (const bool isWhite : {false, true}) {
            LivePipeline pipeline(0);
            pipeline.Frames()->SetArea({320, 240});
            QSignalSpy ready(&pipeline, &LivePipeline::FrameReady);
            pipeline.Open(
                Source(fourcc, "videotestsrc is-live=true pattern=" + QByteArray(isWhite ? "white" : "black") +
                                   " ! video/x-raw,width=640,height=480,framerate=30/1,format=" + format),
                5s);
            QTRY_VERIFY(!ready.isEmpty());
            const auto frame = pipeline.Frames()->Hold();
            QVERIFY(frame);
            const QImage still = QImage::fromData(frame->EncodeJPEG(90));
            QCOMPARE(still.size(), QSize(640, 480));
            const QImage shown = pipeline.Frames()->TakePicture({}).image;
            QCOMPARE(shown.size(), QSize(320, 240));
            for (const QImage& picture : {still, shown}) {
                const int grey = qGray(picture.pixel(100, 100));
                // The source's grey is of the limited range, the cameras' isn't: it stays as it comes.
                const int off = fourcc == V4L2_PIX_FMT_GREY ? 21 : 5;
                QVERIFY2(isWhite ? grey > 255 - off : grey < off, qPrintable(QString::number(grey)));
            }
        }
    }

    void MotionJpegOfFullRangeStaysFullRange()
    {
        // Cameras halve the colours across only. The encoder takes luma as it stands, 16 for black: a decoder that
        // took the file for limited range would make 0 of it.
        LivePipeline pipeline(0);
        pipeline.Frames()->SetArea({320, 240});
        pipeline.Open(Source(V4L2_PIX_FMT_MJPEG, "videotestsrc is-live=true pattern=black ! "
                                                 "video/x-raw,width=640,height=480,format=Y42B ! jpegenc"),
                      5s);
        const auto frame = pipeline.Frames()->Hold();
        QVERIFY(frame);
        QCOMPARE(qGray(QImage::fromData(frame->EncodeJPEG(90)).pixel(100, 100)), 16);
        QTRY_VERIFY(pipeline.Frames()->HasPicture());
        QCOMPARE(qGray(pipeline.Frames()->TakePicture({}).image.pixel(100, 100)), 16);
    }

    void TheLastSecondsAreKept_data()
    {
        Columns<quint32, QByteArray, int, bool>("fourcc", "format", "seconds", "stops");
        QTest::newRow("MJPG") << quint32(V4L2_PIX_FMT_MJPEG) << QByteArray("Y42B ! jpegenc") << 2 << false;
        QTest::newRow("YUYV") << quint32(V4L2_PIX_FMT_YUYV) << QByteArray("YUY2") << 2 << false;
        QTest::newRow("stopped behind the press") << quint32(V4L2_PIX_FMT_YUYV) << QByteArray("YUY2") << 2 << true;
        QTest::newRow("off") << quint32(V4L2_PIX_FMT_YUYV) << QByteArray("YUY2") << 0 << false;
    }

    void TheLastSecondsAreKept()
    {
        QFETCH4(quint32, fourcc, QByteArray, format, int, seconds, bool, stops);
        LiveSession session;
        session.Memory().SetSeconds(seconds);
        session.Start([&] {
            return Source(
                fourcc, "videotestsrc is-live=true ! video/x-raw,width=640,height=480,framerate=30/1,format=" + format);
        });
        QTRY_VERIFY(session.FrameCount() > 70);
        const auto press = std::dynamic_pointer_cast<const GstStillFrame>(session.Hold());
        const std::shared_ptr<const FrameMoments> moments = session.Memory().Hold(press->Time());
        QCOMPARE(moments != nullptr, seconds > 0);
        if (!moments)
            return;
        if (stops)
            session.Stop();
        QTRY_VERIFY(moments->IsComplete());
        const std::vector<Moment> frames = moments->Frames();
        QVERIFY(frames.size() >= FrameMoments::Most / 2 && frames.size() <= FrameMoments::Most);
        QVERIFY((frames.back().offsetMs > 0) == !stops);
        QVERIFY(moments->Bytes() > 0);
        for (std::size_t i = 0; i < frames.size(); ++i) {
            QVERIFY(frames[i].offsetMs >= -1000 * seconds && frames[i].offsetMs <= FrameMoments::BehindMs);
            QVERIFY(i == 0 || frames[i].offsetMs > frames[i - 1].offsetMs);
            QCOMPARE(QImage::fromData(frames[i].frame->EncodeJPEG(90)).size(), QSize(640, 480));
        }
    }

    void AnotherCamerasFrameIsAWholeFile()
    {
        // As a device gives it: the tables left out, the buffer filled up.
        LivePipeline pipeline(0);
        pipeline.Open(Source(V4L2_PIX_FMT_YUYV, "videotestsrc is-live=true"), 5s);
        const QByteArray whole = pipeline.Frames()->Hold()->EncodeJPEG(90);
        QByteArray bare;
        qsizetype end = 0;
        for (qsizetype at = 2; quint8(whole[at + 1]) != 0xda; at = end) {
            end = at + 2 + qFromBigEndian<quint16>(whole.constData() + at + 2);
            bare += quint8(whole[at + 1]) == 0xc4 ? QByteArray() : whole.sliced(at, end - at);
        }
        bare = whole.first(2) + bare + whole.sliced(end);
        QCOMPARE(JpegStillFrame(whole + QByteArray(100, 0)).EncodeJPEG(90), whole);
        const QByteArray encoded = JpegStillFrame(bare + QByteArray(100, 0)).EncodeJPEG(90);
        QVERIFY(encoded.contains("\xff\xc4"));
        QCOMPARE(QImage::fromData(encoded).size(), QSize(640, 480));
        QVERIFY_THROWS_EXCEPTION(PlatformError, JpegStillFrame(bare.first(80)).EncodeJPEG(90));
    }

    void WhatIsInterlacedIsDeinterlaced_data()
    {
        Columns<quint32, QByteArray, bool, bool>("fourcc", "format", "deinterlaces", "isCombed");
        for (const auto& [fourcc, format] : {std::pair<quint32, QByteArray>{V4L2_PIX_FMT_YUYV, "YUY2"},
                                             {V4L2_PIX_FMT_UYVY, "UYVY"},
                                             {V4L2_PIX_FMT_NV12, "NV12"},
                                             {V4L2_PIX_FMT_YUV420, "I420"}}) {
            QTest::addRow("%s", format.constData()) << fourcc << format << true << false;
            QTest::addRow("%s, as it comes", format.constData()) << fourcc << format << false << true;
        }
    }

    void WhatIsInterlacedIsDeinterlaced()
    {
        QFETCH4(quint32, fourcc, QByteArray, format, bool, deinterlaces, bool, isCombed);
        LiveSource source = Source(fourcc, "videotestsrc is-live=true pattern=smpte100 horizontal-speed=6 ! "
                                           "video/x-raw,width=640,height=480,framerate=60/1,format=" +
                                               format + " ! interlace field-pattern=1:1");
        source.deinterlaces = deinterlaces;
        LivePipeline pipeline(0);
        pipeline.Open(source, 5s);
        QTRY_VERIFY(pipeline.Frames()->Frames() > 10);
        const auto frame = pipeline.Frames()->Hold();
        QVERIFY(frame);
        const QImage still = QImage::fromData(frame->EncodeJPEG(95));
        QCOMPARE(still.size(), QSize(640, 480));
        QVERIFY2((Combing(still) > 2) == isCombed, qPrintable(QString::number(Combing(still))));
    }

    void AStreamThatEndsTellsOfIt_data()
    {
        QTest::addColumn<QByteArray>("elements");
        QTest::newRow("end of stream") << QByteArray("videotestsrc is-live=true num-buffers=12");
        QTest::newRow("fault") << QByteArray("videotestsrc is-live=true ! identity error-after=12");
    }

    void AStreamThatEndsTellsOfIt()
    {
        QFETCH(QByteArray, elements);
        LivePipeline pipeline(7);
        QSignalSpy failed(&pipeline, &LivePipeline::Failed);
        pipeline.Open(Source(V4L2_PIX_FMT_YUYV, elements), 0s);
        QTRY_COMPARE(failed.count(), 1);
        QVERIFY(!pipeline.Frames()->Hold());
        QVERIFY(pipeline.Frames()->Frames() > 7);
        pipeline.Close();
        pipeline.Close();
    }

    void AnImmediateFaultHasItsReason()
    {
        LivePipeline pipeline(0);
        try {
            pipeline.Open(Source(V4L2_PIX_FMT_YUYV, "filesrc location=/nonexistent/video"), 5s);
            QFAIL("The stream opened.");
        } catch (const PlatformError& error) {
            QVERIFY2(error.Text().contains(u"연결되어 있지 않습니다"_s), qPrintable(error.Text()));
        }
        QVERIFY(!pipeline.Frames()->Hold());
    }

    void PicturesDontPileUp()
    {
        LivePipeline pipeline(0);
        pipeline.Frames()->SetArea({320, 240});
        pipeline.Open(Source(V4L2_PIX_FMT_YUYV, "videotestsrc num-buffers=100"), 5s);
        QSignalSpy failed(&pipeline, &LivePipeline::Failed);
        QTRY_COMPARE(failed.count(), 1);
        QCOMPARE(pipeline.Frames()->Frames(), 100);
        QVERIFY(!pipeline.Frames()->HasPicture());

        LivePipeline running(0);
        running.Frames()->SetArea({320, 240});
        running.Open(Source(V4L2_PIX_FMT_YUYV, "videotestsrc is-live=true"), 5s);
        QTRY_VERIFY(running.Frames()->Frames() > 20);
        int waiting = 0;
        int last = 0;
        for (auto picture = running.Frames()->TakePicture({}); !picture.image.isNull() && waiting < 10; ++waiting) {
            QVERIFY(picture.frame > last);
            last = picture.frame;
            picture = running.Frames()->TakePicture({});
        }
        QVERIFY(waiting <= 7);
        QVERIFY(last > 10); // The oldest ones went.
    }
};

QTEST_GUILESS_MAIN(LivePipelineTest)
#include "LivePipelineTest.moc"
