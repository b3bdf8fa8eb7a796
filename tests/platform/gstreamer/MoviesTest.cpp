#include "contracts/PlatformError.h"
#include "frame/components.h"
#include "LiveFixture.h"
#include "platform/files/LocalFiles.h"
#include "platform/gstreamer/live/LivePipeline.h"
#include "platform/gstreamer/movies/movie_repair.h"
#include "platform/gstreamer/movies/MovieRecorder.h"
#include "support/MovieReader.h"
#include "support/ScriptedDesktop.h"
#include "support/StoppableShare.h"
#include "support/testing.h"

using namespace Qt::StringLiterals;

namespace {
/// A frame with its number in black and white cells, as a device would give it.
GstPointer<GstSample> NumberedSample(quint32 number, GstClockTime time, GstVideoFormat format)
{
    constexpr int Width = 640;
    constexpr int Height = 360;
    GstVideoInfo info;
    gst_video_info_set_format(&info, format, Width, Height);
    GstPointer<GstBuffer> buffer(gst_buffer_new_allocate(nullptr, info.size, nullptr));
    gst_buffer_memset(buffer.get(), 0, 128, info.size);
    MappedFrame frame(info, buffer.get(), GST_MAP_WRITE);
    auto* luma = static_cast<uchar*>(GST_VIDEO_FRAME_PLANE_DATA(frame.Frame(), 0));
    const int stride = GST_VIDEO_FRAME_PLANE_STRIDE(frame.Frame(), 0);
    for (int y = 0; y < Height; ++y)
        for (int x = 0; x < Width; ++x)
            luma[y * stride + x] = (number >> (31 - x / 20)) & 1 ? 235 : 16;
    GST_BUFFER_PTS(buffer.get()) = time;
    const GstPointer<GstCaps> caps(gst_video_info_to_caps(&info));
    return GstPointer<GstSample>(gst_sample_new(buffer.get(), caps.get(), nullptr, nullptr));
}

/// What `NumberedSample` wrote, out of a movie's frame: in its middle, since its shape is another.
quint32 NumberIn(const QImage& picture)
{
    quint32 number = 0;
    for (int cell = 0; cell < 32; ++cell)
        number = number * 2 + (qGray(picture.pixel(picture.width() * (2 * cell + 1) / 64, picture.height() / 2)) > 127);
    return number;
}
} // namespace

class MoviesTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        RegisterFiles();
        PrepareMedia();
    }
    void init() { m_folder = std::make_unique<QTemporaryDir>(); }

    void NoFrameIsLostAtAChangeOfFile_data()
    {
        QTest::addColumn<int>("deviceRate");
        QTest::newRow("18") << 18;
        QTest::newRow("25") << 25;
        QTest::newRow("60") << 60;
        QTest::newRow("slower than the movie") << 10;
    }

    void NoFrameIsLostAtAChangeOfFile()
    {
        QFETCH(int, deviceRate);
        constexpr int Files = 8;
        constexpr int FramesPerFile = 30;
        MovieRecorder recorder({}, NewTone());
        recorder.ChangeFile(Path(1));
        int file = 1;
        guint64 frame = 0;
        while (file < Files || recorder.Frames() < FramesPerFile) {
            if (recorder.Frames() >= FramesPerFile)
                recorder.ChangeFile(Path(++file));
            const auto sample = NumberedSample(
                quint32(frame), gst_util_uint64_scale(frame, GST_SECOND, guint64(deviceRate)), GST_VIDEO_FORMAT_I420);
            recorder.Accept(sample.get());
            ++frame;
            QTRY_VERIFY(recorder.Backlog() < 100);
        }
        QCOMPARE(recorder.Finish(), QString());
        int at = 0;
        quint32 last = 0;
        QByteArray sound;
        for (int number = 1; number <= Files; ++number) {
            const MovieReader movie(Path(number));
            QVERIFY2(movie.fault.isEmpty(), qPrintable(movie.fault));
            QVERIFY(movie.frames.size() >= FramesPerFile && movie.frames.size() <= FramesPerFile + 1);
            QCOMPARE(movie.sound.size(), movie.frames.size() * 2450 * 2);
            sound += movie.sound;
            for (const QByteArray& jpeg : movie.frames) {
                const quint32 shown = NumberIn(QImage::fromData(jpeg, "JPEG"));
                // The frame nearest in time; all of them in their order.
                const double due = double(at) * deviceRate / 18;
                QVERIFY2(qAbs(shown - due) <= 1, qPrintable(u"frame %1: %2"_s.arg(at).arg(shown)));
                QVERIFY(shown >= last);
                if (deviceRate == 18)
                    QCOMPARE(int(shown), at);
                last = shown;
                ++at;
            }
        }
        QCOMPARE(QDir(m_folder->path()).entryList(QDir::Files | QDir::Hidden).size(), Files);
        // The tone goes on over all changes.
        const QByteArray tone = NewTone()->Take(int(sound.size() / 2), {});
        QVERIFY(sound == tone);
    }

    void SoundIsAsLongAsThePictureWhateverTheInput_data()
    {
        QTest::addColumn<bool>("hasInput");
        QTest::newRow("no input") << false;
        QTest::newRow("the default input of a sound server") << true;
    }

    void SoundIsAsLongAsThePictureWhateverTheInput()
    {
        QFETCH(bool, hasInput);
        const QString socket = m_folder->filePath(u"sound"_s);
        QProcess server;
        const auto end = qScopeGuard([&server] {
            server.kill();
            server.waitForFinished();
        });
        if (hasInput) {
            QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
            for (const QString& name : {u"HOME"_s, u"XDG_RUNTIME_DIR"_s})
                environment.insert(name, m_folder->path());
            server.setProcessEnvironment(environment);
            // What plays to nobody, and is heard by itself, is the default input.
            QStringList arguments = {u"-n"_s, u"--daemonize=no"_s, u"--exit-idle-time=-1"_s};
            for (const QString& module : {u"module-null-sink"_s, u"module-sine frequency=440"_s,
                                          u"module-native-protocol-unix auth-anonymous=1 socket="_s + socket})
                arguments << u"-L"_s << module;
            server.start(u"pulseaudio"_s, arguments);
            if (!server.waitForStarted())
                QSKIP("no sound server is installed");
            QTRY_VERIFY(QFile::exists(socket));
        }
        qputenv("PULSE_SERVER", "unix:" + socket.toLocal8Bit());
        const auto recorder = std::make_shared<MovieRecorder>(AviFile::Format(), NewSoundInput());
        recorder->ChangeFile(Path(1));
        LivePipeline pipeline(0);
        pipeline.Frames()->SetTap(recorder);
        pipeline.Open({true, {}, {0, 640, 480, 18, 1}, {}}, std::chrono::seconds(5));
        QTRY_VERIFY(recorder->Frames() > 70);
        pipeline.Close();
        QCOMPARE(recorder->Finish(), QString());
        const MovieReader movie(Path(1));
        QVERIFY2(movie.fault.isEmpty(), qPrintable(movie.fault));
        QCOMPARE(movie.sound.size(), movie.frames.size() * 4900);
        // A source that nobody had asked for before takes up to two seconds.
        const QByteArray last = movie.sound.right(20 * 4900);
        const qsizetype silent = last.count('\0');
        QVERIFY2(hasInput ? silent < last.size() / 50 : silent == last.size(), qPrintable(QString::number(silent)));
    }

    void ALostSignalIsNoPartOfTheMovie()
    {
        MovieRecorder recorder({}, NewTone());
        recorder.ChangeFile(Path(1));
        for (const int ms : {0, 55, 111, 60000, 60055, 5, 60})
            recorder.Accept(NumberedSample(1, guint64(ms) * GST_MSECOND, GST_VIDEO_FORMAT_I420).get());
        QCOMPARE(recorder.Frames(), 7);
        recorder.Finish();
        QCOMPARE(MovieReader(Path(1)).frames.size(), 7);
    }

    void AFileOfManyPartsStaysWhole()
    {
        AviFile::Format format;
        format.partBytes = 100000;
        AviFile file(Path(1), format);
        for (int frame = 0; frame < 200; ++frame)
            file.Append(QByteArray(1001 + frame, char(frame)), QByteArray(4900, char(frame)));
        QVERIFY(!QFile::exists(Path(1)));
        file.Complete();
        const MovieReader movie(Path(1));
        QVERIFY2(movie.fault.isEmpty(), qPrintable(movie.fault));
        QFile whole(Path(1));
        QVERIFY(whole.open(QIODevice::ReadOnly) && whole.readAll().count("RIFF") > 5);
        QCOMPARE(movie.frames.size(), 200);
        QCOMPARE(movie.frames.last(), QByteArray(1200, char(199)));
    }

    void AKilledRecordingIsMadeWhole_data()
    {
        Columns<int, qint64, int>("cut", "partBytes", "frames");
        const qint64 one = qint64(1) << 30;
        QTest::newRow("between two frames") << 0 << one << 50;
        QTest::newRow("in the sound") << 10 << one << 49;
        QTest::newRow("in the picture") << 4908 + 500 << one << 49;
        QTest::newRow("before the first frame") << 1000000 << one << 0;
        QTest::newRow("in a later part") << 10 << qint64(100000) << 49;
    }

    void AKilledRecordingIsMadeWhole()
    {
        QFETCH3(int, cut, qint64, partBytes, int, frames);
        AviFile::Format format;
        format.partBytes = partBytes;
        {
            AviFile file(Path(1), format);
            for (int frame = 0; frame < 50; ++frame)
                file.Append(QByteArray(1000, char(frame)), QByteArray(4900, char(frame)));
        }
        const QString mine = Partials().value(0);
        QVERIFY(!mine.isEmpty());
        const auto resize = [this, cut](const QString& name) {
            QFile file(m_folder->filePath(name));
            file.resize(qMax(qint64(2000), file.size() - cut));
        };
        resize(mine);
        // This process lives, so nothing is to be done for it.
        RepairMovies(m_folder->path());
        QCOMPARE(Partials(), QStringList{mine});
        QStringList fields = mine.split(u'.');
        fields[fields.size() - 2] = u"1"_s; // A process of this number that started at another time.
        const QString abandoned = fields.join(u'.');
        QVERIFY(QFile::rename(m_folder->filePath(mine), m_folder->filePath(abandoned)));
        fields[fields.size() - 5] = u"elsewhere"_s;
        const QString foreign = fields.join(u'.');
        QVERIFY(QFile::copy(m_folder->filePath(abandoned), m_folder->filePath(foreign)));
        // Another movie has taken the name meanwhile.
        const QByteArray other = "another movie";
        WriteWholeFile(Path(1), other);
        RepairMovies(m_folder->path());
        QCOMPARE(Partials(), QStringList{foreign});
        QCOMPARE(Files().ReadFile(Path(1)), other);
        QCOMPARE(QFile::exists(Path(2)), frames > 0);
        if (frames == 0)
            return;
        const MovieReader movie(Path(2));
        QVERIFY2(movie.fault.isEmpty(), qPrintable(movie.fault));
        QCOMPARE(movie.frames.size(), frames);
        QCOMPARE(movie.frames.last(), QByteArray(1000, char(frames - 1)));
    }

    void WhatIsNoMovieIsLeftAlone()
    {
        for (const QString& name : {u".x.avi.part"_s, u".station-h-1-2.part"_s, u"..h.0.0.part"_s}) {
            QFile file(m_folder->filePath(name));
            QVERIFY(file.open(QIODevice::WriteOnly));
            file.write("something else");
        }
        RepairMovies(m_folder->path());
        QCOMPARE(Partials().size(), 3);
        RepairMovies(m_folder->filePath(u"gone"_s));
    }

    void TheDiskRunsFull_data()
    {
        Columns<qint64, bool, bool>("free", "scarce", "ends");
        QTest::newRow("room") << qint64(1'000'000'000) << false << false;
        QTest::newRow("scarce") << qint64(999'999'999) << true << false;
        QTest::newRow("full") << qint64(199'999'999) << true << true;
        QTest::newRow("can't be told") << qint64(-1) << false << false;
    }

    void TheDiskRunsFull()
    {
        QFETCH3(qint64, free, bool, scarce, bool, ends);
        MovieRecorder recorder({}, NewTone(), [free](const QString&) { return free; });
        QSignalSpy ended(&recorder, &MovieRecorder::Ended);
        recorder.ChangeFile(Path(1));
        for (guint64 frame = 0; frame < 5; ++frame)
            recorder.Accept(NumberedSample(1, frame * GST_SECOND / 18, GST_VIDEO_FORMAT_I420).get());
        if (ends)
            QTRY_COMPARE(ended.count(), 1);
        QTRY_COMPARE(recorder.IsSpaceScarce(), scarce);
        QCOMPARE(recorder.Finish().isEmpty(), !ends);
        QCOMPARE(MovieReader(Path(1)).frames.size(), ends ? 1 : 5);
        QVERIFY(Partials().isEmpty());
    }

    void TheControlRecordsBesideTheLivePicture()
    {
        const LiveFixture fixture;
        const auto control = fixture.NewControl();
        control->Start();
        QTRY_VERIFY(control->HoldFrame());
        quint32 before = 0;
        QTRY_VERIFY((before = ReadFrameNumber(Decoded(control->HoldFrame())).value_or(0)) > 0);
        Prepare(*control, Path(1));
        QList<int> counts;
        int files = 1;
        connect(control.get(), &VideoCap::OnFrame, this, [&](int frames) {
            counts << frames;
            if (frames > 20 && files < 3) {
                Prepare(*control, Path(++files));
                control->Start();
            }
        });
        control->Start();
        // The live stream goes on as it was.
        const quint32 after = ReadFrameNumber(Decoded(control->HoldFrame())).value_or(0);
        QVERIFY(after >= before);
        QTRY_VERIFY_WITH_TIMEOUT(files == 3 && counts.last() > 5 && counts.last() < 21, 30000);
        control->setCaptureMode(false);
        control->Stop();
        quint32 last = 0;
        for (int number = 1; number <= 3; ++number) {
            const MovieReader movie(Path(number));
            QVERIFY2(movie.fault.isEmpty(), qPrintable(movie.fault));
            QVERIFY(number == 3 || movie.frames.size() > 20);
            QVERIFY(movie.sound.size() == movie.frames.size() * 4900);
            QVERIFY(movie.sound.count('\0') < movie.sound.size() / 2);
            for (const QByteArray& jpeg : movie.frames) {
                const auto shown = ReadFrameNumber(QImage::fromData(jpeg));
                QVERIFY(shown.has_value());
                // 18 of 30 frames a second.
                QVERIFY2(last == 0 || (*shown > last && *shown - last <= 2),
                         qPrintable(u"%1 after %2"_s.arg(*shown).arg(last)));
                last = *shown;
            }
        }
        QVERIFY(counts.count(1) + counts.count(2) >= 1);
        for (qsizetype i = 1; i < counts.size(); ++i)
            QVERIFY(counts[i] > counts[i - 1] || counts[i] <= 2);
    }

    void ADeviceThatStopsKeepsTheMovieWhole_data()
    {
        QTest::addColumn<bool>("unplugged");
        QTest::newRow("unplugged") << true;
        QTest::newRow("connected, without a frame") << false;
    }

    void ADeviceThatStopsKeepsTheMovieWhole()
    {
        QFETCH(bool, unplugged);
        const auto stop = unplugged ? UnplugTestPicture : FreezeTestPicture;
        const LiveFixture fixture;
        const auto control = fixture.NewControl();
        control->Start();
        QTRY_VERIFY(control->HoldFrame());
        Prepare(*control, Path(1));
        QSignalSpy frames(control.get(), &VideoCap::OnFrame);
        control->Start();
        QTRY_VERIFY(frames.count() > 10);
        stop(true);
        QTRY_VERIFY(!control->HoldFrame());
        stop(false);
        QTRY_VERIFY_WITH_TIMEOUT(control->HoldFrame() != nullptr, 10000);
        const auto told = frames.count();
        QTRY_VERIFY(frames.count() > told + 10);
        control.get()->setCaptureMode(false);
        const MovieReader movie(Path(1));
        QVERIFY2(movie.fault.isEmpty(), qPrintable(movie.fault));
        QVERIFY(movie.frames.size() > 20);
    }

    void AShareThatHangsEndsTheMovieWhole()
    {
        ScriptedDesktop::Install();
        const StoppableShare share(m_folder->path());
        const LiveFixture fixture;
        const auto control = fixture.NewControl();
        control->Start();
        QTRY_VERIFY(control->HoldFrame());
        Prepare(*control, Path(1));
        QSignalSpy frames(control.get(), &VideoCap::OnFrame);
        QSignalSpy told(control.get(), &VideoCap::OnMovieFault);
        control->Start();
        QTRY_VERIFY(frames.count() > 10);
        share.Stop();
        QTRY_COMPARE(told.count(), 1);
        QCOMPARE(told[0][0].toString(), u"이 컴퓨터의 디스크가 응답하지 않아 동영상 저장을 끝냈습니다.!!"_s);
        QVERIFY(!control->CaptureMode());
        QVERIFY(control->HoldFrame());
        share.Resume();
        QTRY_VERIFY(QFile::exists(Path(1)));
        const MovieReader movie(Path(1));
        QVERIFY2(movie.fault.isEmpty(), qPrintable(movie.fault));
        QVERIFY(movie.frames.size() > 5);
        QVERIFY(Partials().isEmpty());
    }

private:
    QString Path(int number) const { return m_folder->filePath(u"%1.avi"_s.arg(number, 3, 10, QChar(u'0'))); }
    QStringList Partials() const
    {
        return QDir(m_folder->path()).entryList({u".*.part"_s}, QDir::Files | QDir::Hidden);
    }

    static void Prepare(VideoCap& control, const QString& path)
    {
        control.setCaptureFileName(path);
        control.setUseCustomVideoFormat(true);
        control.setCustomVideoWidth(320);
        control.setCustomVideoHeight(240);
        control.setFrameRate(18);
        control.setCaptureAudio(true);
        control.setCaptureVideo(true);
        control.setCaptureMode(true);
    }

    std::unique_ptr<QTemporaryDir> m_folder;
};

QTEST_MAIN(MoviesTest)
#include "MoviesTest.moc"
