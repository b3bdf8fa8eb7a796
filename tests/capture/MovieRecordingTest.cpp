#include "contracts/RoomAwake.h"
#include "contracts/VideoCap.h"
#include "contracts/VideoOptions.h"
#include "platform/gstreamer/register_video.h"
#include "support/CaptureScreen.h"
#include "support/MovieReader.h"
#include "visit/device_settings.h"

using namespace Qt::StringLiterals;

class MovieRecordingTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_box = std::make_unique<StationInABox>();
        OpenScreen();
        m_video = FakeVideoCap::Last();
    }
    void cleanup() { m_box.reset(); }

    void ARecordingIsCutIntoFiles()
    {
        Press(u"연결"_s);
        Choose(u"동영상저장시작"_s);
        QCOMPARE(Text(u"lblMovie"_s), u"동영상 저장중..."_s);
        QVERIFY(m_video->CaptureMode());
        for (const int frames : {1, 2500})
            Q_EMIT m_video->OnFrame(frames, 0);
        QCOMPARE(Text(u"lblMovieStatus"_s), u"2500 Frame Processed"_s);
        QCOMPARE(Begun(), QStringList{u"001"_s});
        AskInsideAFrameEvent([this] { Q_EMIT m_video->OnFrame(2501, 0); });
        Q_EMIT m_video->OnFrame(2500, 0);
        QCOMPARE(Begun(), (QStringList{u"001"_s, u"002"_s}));
        Q_EMIT m_video->OnFrame(1, 0);
        Q_EMIT m_video->OnFrame(2502, 0);
        QCOMPARE(Begun(), (QStringList{u"001"_s, u"002"_s, u"003"_s}));
        // What is whole is brought while the recording goes on.
        QTRY_COMPARE(Visible().size(), 2);
        m_video->calls.clear();
        Choose(u"동영상저장종료"_s);
        QVERIFY(!m_video->CaptureMode());
        QCOMPARE(Text(u"lblMovie"_s) + Text(u"lblMovieStatus"_s), QString());
        const QStringList calls = {u"Stop"_s, u"Device 0"_s, u"VideoFormat 0"_s, u"VideoInput 0"_s, u"Start"_s};
        QCOMPARE(m_video->calls, calls);
        QTRY_VERIFY(FileExists(Movie(3)) && MovieFiles().size() == 3);
        for (int segment = 1; segment <= 3; ++segment)
            QCOMPARE(Files().ReadFile(Movie(segment)), m_video->movies[segment - 1].toUtf8());
        QVERIFY(LocalMovies().isEmpty());
    }

    void ARecordingGoesOnAfterASleep()
    {
        struct Room : RoomAwake
        {
            int kept = 0;
            void Keep() override { kept = 1; }
            void Release() override { kept = 0; }
        };
        auto* room = new Room;
        InstallService<RoomAwake>(std::unique_ptr<RoomAwake>(room));
        m_box.reset();
        init();
        Press(u"연결"_s);
        QCOMPARE(room->kept, 1);
        Choose(u"동영상저장시작"_s);
        Q_EMIT room->HasSlept();
        QVERIFY(m_video->calls.contains(u"Reopen"_s));
        QCOMPARE(m_video->movies.size(), 2);
        Choose(u"동영상저장종료"_s);
        QCOMPARE(room->kept, 1);
        Choose(u"연결끊기"_s);
        QCOMPARE(room->kept, 0);
        InstallService<RoomAwake>(nullptr);
    }

    void ANewRecordingReplacesTheOneOfTheVisit()
    {
        const QString folder = MovieFolder(VisitContext.CaptureDir);
        const QString stem = u"0000123420261124"_s;
        for (const QString& name : {stem + u"001.avi"_s, stem + u"007.AVI"_s, u"."_s + stem + u"001.avi.h.1.2.part"_s,
                                    u"0000123420261123001.avi"_s, stem + u"001.txt"_s, u"0000123520261124001.avi"_s})
            WriteWholeFile(folder + name, "old");
        m_box->Run(
            u"INSERT INTO ca_sum VALUES ( '00001234', '20261124', 'movie', 7, 'old', 'f0', 2, '2026', 'live' );"_s);
        opened->cmbEtc().setCurrentIndex(1);
        Press(u"연결"_s);
        Choose(u"동영상저장시작"_s);
        // They stay until there is something to take their place.
        QTRY_VERIFY(!MovieFiles().filter(u".recording"_s).isEmpty());
        QCOMPARE(Visible().size(), 6);
        Choose(u"동영상저장종료"_s);
        const QStringList left = {u"."_s + stem + u"001.avi.h.1.2.part"_s, u"0000123420261123001.avi"_s,
                                  stem + u"001.avi"_s, stem + u"001.txt"_s, u"0000123520261124001.avi"_s};
        QTRY_COMPARE(MovieFiles(), left);
        QCOMPARE(Files().ReadFile(folder + stem + u"001.avi"_s), m_video->movies[0].toUtf8());
        const QString sums = u"SELECT GROUP_CONCAT( sum_no || sum_state || sum_hash ) AS v FROM ca_sum"_s;
        QTRY_COMPARE(m_box->Value(sums), u"1live"_s + SumOf(m_video->movies[0].toUtf8()).hash + u",7deletedf0"_s);
    }

    void AnotherStationsMovieStays()
    {
        WriteWholeFile(Movie(1), "theirs");
        const QString theirs = MovieFolder(VisitContext.CaptureDir) + u".0000123420261124.elsewhere.1.2.3.recording"_s;
        WriteWholeFile(theirs, "");
        Press(u"연결"_s);
        Choose(u"동영상저장시작"_s);
        QTRY_COMPARE(MovieFiles().filter(u".recording"_s).size(), 2);
        WriteWholeFile(Movie(3), "theirs too");
        Choose(u"동영상저장종료"_s);
        QTRY_VERIFY(FileExists(Movie(4)) && MovieFiles().size() == 4);
        QCOMPARE(Files().ReadFile(Movie(1)), QByteArray("theirs"));
        QCOMPARE(Files().ReadFile(Movie(3)), QByteArray("theirs too"));
        QCOMPARE(Files().ReadFile(Movie(4)), m_video->movies[0].toUtf8());
    }

    void AShareThatRefusesGetsTheMovieLater()
    {
        WriteWholeFile(Movie(1), "old");
        Press(u"연결"_s);
        Choose(u"동영상저장시작"_s);
        QTRY_COMPARE(MovieFiles().filter(u".recording"_s).size(), 1);
        Files().RenameFile(VisitContext.CaptureDir, m_box->Root() + u"gone"_s);
        Choose(u"동영상저장종료"_s);
        QTRY_VERIFY(Text(u"noticeText"_s).startsWith(u"동영상을 저장 폴더로 옮기지 못하여"_s));
        QCOMPARE(LocalMovies().size(), 1);
        // The station ends, and its next start brings it.
        opened->close();
        QVERIFY2(m_box->Desk().shown.last().startsWith(u"동영상을 저장 폴더로 옮기지 못했습니다.!!"_s),
                 qPrintable(m_box->Desk().shown.last()));
        Files().RenameFile(m_box->Root() + u"gone"_s, VisitContext.CaptureDir.chopped(1));
        OpenScreen();
        QTRY_VERIFY(LocalMovies().isEmpty());
        QTRY_COMPARE(MovieFiles().size(), 1);
        QVERIFY(Files().ReadFile(Movie(1)).endsWith("001.avi"));
    }

    void AStartThatCantSucceedDeletesNothing_data()
    {
        Columns<bool, QString>("live", "message");
        QTest::newRow("no picture") << false << u"캡쳐할 영상이 없습니다.!!"_s;
        QTest::newRow("a full disk") << true << u"이 컴퓨터의 남은 공간이 부족하여 동영상을 저장할수 없습니다.!!"_s;
    }

    void AStartThatCantSucceedDeletesNothing()
    {
        QFETCH2(bool, live, QString, message);
        WriteWholeFile(Movie(1), "old");
        if (live)
            Press(u"연결"_s);
        m_video->room = false;
        Choose(u"동영상저장시작"_s);
        QCOMPARE(m_box->Desk().shown, QStringList{message});
        QVERIFY(!m_video->CaptureMode());
        QCOMPARE(Text(u"lblMovie"_s), QString());
        QCOMPARE(Files().ReadFile(Movie(1)), QByteArray("old"));
    }

    void AShareThatWentAwayGetsNoFolders()
    {
        Press(u"연결"_s);
        Files().RenameFile(VisitContext.CaptureDir, m_box->Root() + u"gone"_s);
        Choose(u"동영상저장시작"_s);
        QVERIFY2(m_box->Desk().shown.value(0).startsWith(u"캡쳐 디렉토리가 없습니다.!!"_s),
                 qPrintable(m_box->Desk().shown.value(0)));
        QVERIFY(!FolderExists(VisitContext.CaptureDir) && !m_video->CaptureMode());
    }

    void AFaultLeavesNoRecordingBehind_data()
    {
        QTest::addColumn<bool>("atStart");
        QTest::newRow("at the start") << true;
        QTest::newRow("at the change of file") << false;
    }

    void AFaultLeavesNoRecordingBehind()
    {
        QFETCH(bool, atStart);
        Press(u"연결"_s);
        if (!atStart)
            Choose(u"동영상저장시작"_s);
        m_box->FaultyFiles().FailAt(1, true);
        if (atStart)
            Choose(u"동영상저장시작"_s);
        else
            Q_EMIT m_video->OnFrame(2501, 0);
        m_box->FaultyFiles().Recover();
        QCOMPARE(m_box->Desk().shown.size(), 1);
        QVERIFY(!m_video->CaptureMode());
        QCOMPARE(Text(u"lblMovie"_s) + Text(u"lblMovieStatus"_s), QString());
    }

    void TheControlEndsTheMovieItself()
    {
        Press(u"연결"_s);
        Choose(u"동영상저장시작"_s);
        m_video->setCaptureMode(false);
        Q_EMIT m_video->OnMovieFault(u"남은 공간이 부족합니다.!!"_s);
        QCOMPARE(m_box->Desk().shown, QStringList{u"남은 공간이 부족합니다.!!"_s});
        QCOMPARE(Text(u"lblMovie"_s), QString());
    }

    void FrameEventsServeEventsAndDontNest()
    {
        Press(u"연결"_s);
        int served = 0;
        int depth = 0;
        int deepest = 0;
        const auto event = [&](int frame) {
            deepest = qMax(deepest, ++depth);
            QTimer::singleShot(0, this, [&] { ++served; });
            Q_EMIT m_video->OnFrame(frame, 0);
            --depth;
        };
        QTimer::singleShot(0, this, [&] {
            for (int frame = 2; frame < 12; ++frame)
                event(frame);
        });
        event(3000);
        QVERIFY(served > 0);
        QTRY_COMPARE(served, 11);
        QVERIFY(deepest <= 2);
        QCOMPARE(Text(u"lblMovieStatus"_s), QString());
        QVERIFY(m_video->movies.isEmpty());
    }

    void AClickInsideTheStartCounts()
    {
        Press(u"연결"_s);
        QTimer::singleShot(0, this, [] { Choose(u"동영상저장종료"_s); });
        Choose(u"동영상저장시작"_s);
        QVERIFY(!m_video->CaptureMode());
        QCOMPARE(Text(u"lblMovie"_s), QString());
    }

    void AnotherConnectForgetsWhatWasCutOff_data()
    {
        Columns<QString, QString>("before", "left");
        QTest::newRow("a recording that was cut off") << u"연결끊기"_s << QString();
        QTest::newRow("one that runs") << u"연결"_s << u"동영상 저장중...38 Frame Processed"_s;
    }

    void AnotherConnectForgetsWhatWasCutOff()
    {
        QFETCH(QString, before);
        Press(u"연결"_s);
        // The click inside the start doesn't take its text.
        m_box->Desk().whilePumped = [] { Press(u"연결"_s); };
        Choose(u"동영상저장시작"_s);
        Q_EMIT m_video->OnFrame(38, 0);
        if (before == u"연결끊기"_s)
            Choose(before);
        QCOMPARE(Text(u"lblMovie"_s) + Text(u"lblMovieStatus"_s), u"동영상 저장중...38 Frame Processed"_s);
        Press(u"연결"_s);
        QTEST(Text(u"lblMovie"_s) + Text(u"lblMovieStatus"_s), "left");
    }

    void TheRecordingGoesOnThrough_data()
    {
        QTest::addColumn<std::function<void(MovieRecordingTest&)>>("event");
        const auto row = [](const char* name, const std::function<void(MovieRecordingTest&)>& event) {
            QTest::newRow(name) << event;
        };
        row("a change of section", [](MovieRecordingTest&) {
            ChooseSection(Colon);
            QCOMPARE(VisitContext.Etc, Colon);
        });
        row("another connect", [](MovieRecordingTest&) { Press(u"연결"_s); });
        row("another format", [](MovieRecordingTest&) {
            DeviceSettings.Sizes = 1;
            Press(u"연결"_s);
        });
        row("stills", [](MovieRecordingTest& test) {
            for (int still = 0; still < 3; ++still)
                Press(u"캡쳐"_s);
            QCOMPARE(test.m_box->Names(u"2026"_s, u"위내시경"_s).size(), 3);
        });
        row("a question opened inside a frame event", [](MovieRecordingTest& test) {
            bool wentOn = false;
            test.AskInsideAFrameEvent([&] {
                const int before = test.FramesTold();
                wentOn = QTest::qWaitFor([&] { return test.FramesTold() > before + 20; });
            });
            QTRY_VERIFY(test.m_box->Desk().whilePumped == nullptr);
            QVERIFY(wentOn);
            test.m_box->Desk().whileShown = nullptr;
            test.m_box->Desk().shown.clear();
        });
        row("the close of the screen", [](MovieRecordingTest&) { opened->close(); });
    }

    void TheRecordingGoesOnThrough()
    {
        QFETCH(std::function<void(MovieRecordingTest&)>, event);
        OpenWithTestPicture();
        Press(u"연결"_s);
        QTRY_VERIFY(opened->capCapture().HoldFrame());
        Choose(u"동영상저장시작"_s);
        QTRY_VERIFY(FramesTold() > 20);
        event(*this);
        if (!m_box->Desk().ended) {
            const int before = FramesTold();
            QVERIFY(before > 20);
            QTRY_VERIFY(FramesTold() > before + 20);
            Choose(u"동영상저장종료"_s);
            QTRY_VERIFY(opened->capCapture().HoldFrame());
        }
        QTRY_COMPARE(MovieFiles().size(), 1);
        QTRY_VERIFY(FileExists(Movie(1)));
        const MovieReader movie(NativePath(Movie(1)));
        QVERIFY2(movie.fault.isEmpty(), qPrintable(movie.fault));
        QVERIFY(movie.frames.size() > (m_box->Desk().ended ? 20 : 40));
        QCOMPARE(movie.sound.size(), movie.frames.size() * 4900);
        QCOMPARE(m_box->Desk().shown, QStringList());
    }

private:
    /// The screen with the real control on the test picture.
    void OpenWithTestPicture()
    {
        m_box.reset();
        m_box = std::make_unique<StationInABox>();
        RegisterVideo();
        UseService<VideoOptions>().OfferTestPicture(true);
        OpenScreen();
        DeviceSettings.Devices = opened->capCapture().Devices().Count() - 1;
        DeviceSettings.Sizes = 2;
    }
    /// The next frame event meets a click that opens a question, under which `work` runs.
    void AskInsideAFrameEvent(const std::function<void()>& work)
    {
        m_box->Desk().whileShown = work;
        m_box->Desk().whilePumped = [] { Press(u"삭제"_s); };
    }
    int FramesTold() const { return Text(u"lblMovieStatus"_s).section(u' ', 0, 0).toInt(); }
    QString Text(const QString& label) const { return opened->findChild<QLabel*>(label)->text(); }
    QString Movie(int segment) const { return MoviePath(CurrentVisit().MovieStem(), segment); }
    /// Numbers of the files that were begun.
    QStringList Begun() const
    {
        QStringList numbers;
        for (const QString& path : m_video->movies)
            numbers << path.chopped(4).right(3);
        return numbers;
    }
    QStringList LocalMovies() const
    {
        return Files().FilesStartingWith(m_box->Desk().StateFolder() + u'\\', u"Movie-"_s);
    }
    QStringList Visible() const
    {
        QStringList names = MovieFiles();
        names.removeIf([](const QString& name) { return name.endsWith(u".recording"_s); });
        return names;
    }
    QStringList MovieFiles() const { return m_box->Names(u"2026"_s, u"movie"_s); }

    std::unique_ptr<StationInABox> m_box;
    FakeVideoCap* m_video = nullptr;
};

QTEST_MAIN(MovieRecordingTest)
#include "MovieRecordingTest.moc"
