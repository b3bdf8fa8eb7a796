#include "contracts/LocalDatabase.h"
#include "filing/DeletionJob.h"
#include "filing/MovieJob.h"
#include "filing/originals.h"
#include "filing/PictureRecord.h"
#include "filing/visit_json.h"
#include "identifiers/dicom_uids.h"
#include "pacs/handed_files.h"
#include "pacs/PacsHandover.h"
#include "records/study_identity.h"
#include "screenparts/NoticeStrip.h"
#include "support/CaptureScreen.h"
#include "support/EditorInABox.h"
#include "support/PacsPeer.h"
#include "support/PacsServer.h"
#include "support/SenderInABox.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <latch>
#include <thread>

using namespace Qt::StringLiterals;
using namespace capture_screen;

namespace {

constexpr int LongMs = 60'000;

Visit VisitOfToday(const QString& section = Stomach)
{
    return VisitOf(QString::fromUtf16(StationInABox::Chart), u"01"_s, Day, section);
}

/// What the strip of the screen opened last says; empty when it isn't there.
QString Notice()
{
    const auto* strip = opened->findChild<NoticeStrip*>();
    return strip->isHidden() ? QString() : strip->findChild<QLabel*>()->text();
}

} // namespace

/// The real sender as a process of its own, from the journal's hand to a server that may be in any trouble.
class SenderTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_box = std::make_unique<EditorInABox>();
        m_peer = std::make_unique<PacsPeer>();
        m_peer->Start();
        m_sender = std::make_unique<SenderInABox>(*m_box, m_peer->Port());
    }
    void cleanup()
    {
        m_pacs.reset();
        m_before.clear();
        m_sender.reset();
        m_box.reset();
        m_peer.reset();
    }

    /// From the press to the server: what is deleted before it goes never goes, what is taken behind "저장" does, and
    /// nothing is lost by closing the screen.
    void AVisitGoes_data()
    {
        Columns<QByteArray, bool, bool, QList<int>>("setup", "isThere", "isStored", "come");
        QTest::newRow("when it is stored") << QByteArray() << true << true << QList<int>{1, 3, 4};
        QTest::newRow("not stored") << QByteArray() << true << false << QList<int>{};
        QTest::newRow("closed without that") << QByteArray("AtClosing=1\n") << true << false << QList<int>{1, 3, 4};
        QTest::newRow("each still") << QByteArray("Send=still\n") << true << true << QList<int>{1, 2, 3, 4};
        QTest::newRow("when the server comes") << QByteArray() << false << true << QList<int>{1, 3, 4};
    }

    void AVisitGoes()
    {
        QFETCH4(QByteArray, setup, bool, isThere, bool, isStored, QList<int>, come);
        m_sender->WriteSetup(m_peer->Port(), "Institution=31100001\n" + setup);
        if (!isThere)
            m_peer->Stop();
        OpenWithOneStill();
        Press(u"캡쳐"_s);
        Press(u"캡쳐"_s);
        if (setup.contains("still"))
            QTRY_COMPARE_WITH_TIMEOUT(Numbers(), (QList<int>{1, 2, 3}), LongMs);
        m_box->Desk().answers = {true};
        ChooseOver(1, 2, 1, u"그림지우기"_s);
        if (isStored)
            Press(u"저장"_s);
        Press(u"캡쳐"_s);
        if (!isThere)
            QTRY_VERIFY_WITH_TIMEOUT(Notice().startsWith(u"PACS 0/3, PACS 서버에 연결할 수 없습니다."), LongMs);
        m_box->Desk().shown.clear();
        opened->Unload();
        QVERIFY2(m_box->Desk().shown.isEmpty(), qPrintable(m_box->Desk().shown.join(u'|')));
        if (!isThere)
            m_peer->Start();
        QTRY_VERIFY_WITH_TIMEOUT(m_sender->HasEnded(), LongMs);
        QCOMPARE(Numbers(), come);
        QCOMPARE(State().waiting, 0);
    }

    /// Refusals that pass cost nothing but time, nobody's picture holds up the others', and each comes once.
    void EachAnswerHasItsConsequence_data()
    {
        Columns<QStringList, QList<int>, int, int, QString>("trouble", "come", "waiting", "setAside", "reason");
        const QList<int> all{1, 2, 3};
        const QList<int> none;
        const auto passes = [&](const char* name, const QStringList& trouble, const QList<int>& come) {
            QTest::newRow(name) << trouble << come << 0 << 0 << QString();
        };
        passes("full for a while", {u"--statuses"_s, u"A700,A701"_s}, {3, 1, 2});
        passes("at fault for a while", {u"--statuses"_s, u"0110"_s}, {2, 3, 1});
        passes("takes them with warnings", {u"--statuses"_s, u"B000,0107,0116"_s}, all);
        passes("stops in the middle", {u"--cut"_s, u"2"_s}, {1, 3, 2});
        passes("takes one and doesn't say so", {u"--unanswered"_s, u"2"_s}, all);
        passes("isn't to be asked", {u"--refuse"_s, u"find"_s}, all);
        QTest::newRow("refuses one") << QStringList{u"--statuses"_s, u"0000,A900"_s, u"--comment"_s, u"no"_s}
                                     << QList<int>{1, 3} << 0 << 1 << u"A900"_s;
        QTest::newRow("knows the station no more")
            << QStringList{u"--statuses"_s, u"0000,0124"_s} << QList<int>{1} << 2 << 0 << u"0124"_s;
        QTest::newRow("takes no such pictures")
            << QStringList{u"--refuse"_s, u"store"_s} << none << 3 << 0 << u"받지"_s;
        QTest::newRow("lets it in no more")
            << QStringList{u"--reject"_s, u"permanent"_s} << none << 3 << 0 << u"거부"_s;
        QTest::newRow("says nothing") << QStringList{u"--silent"_s, u"association"_s} << none << 3 << 0
                                      << u"응답하지"_s;
        QTest::newRow("babbles") << QStringList{u"--babble"_s, u"store"_s} << none << 3 << 0 << u"끊겼습니다"_s;
    }

    void EachAnswerHasItsConsequence()
    {
        QFETCH5(QStringList, trouble, QList<int>, come, int, waiting, int, setAside, QString, reason);
        m_peer->Start(trouble);
        HandOver(3);
        const auto isSettled = [&] {
            const SenderQueue::State state = State();
            return state.lines == 0 && state.waiting == waiting && state.setAside == setAside &&
                   (waiting == 0 || state.away.contains(reason)) && Numbers() == come;
        };
        QTRY_VERIFY2_WITH_TIMEOUT(isSettled(), qPrintable(Told()), LongMs);
        if (setAside > 0)
            QVERIFY2(SenderQueue::In(m_box->Desk().ProgramFolder() + u'\\')[0].entries[0].reason.contains(reason),
                     qPrintable(Told()));
        // The operator wants it at once.
        m_peer->Start();
        m_pacs->SendNow();
        const auto hasCome = [&] {
            QList<int> sorted = Numbers();
            std::ranges::sort(sorted);
            return sorted == QList<int>{1, 2, 3};
        };
        QTRY_VERIFY2_WITH_TIMEOUT(hasCome(), qPrintable(Told()), LongMs);
        QTRY_COMPARE_WITH_TIMEOUT(State().setAside, 0, LongMs);
    }

    /// What is taken at a station where nobody presses "저장" belongs to a visit that another one has stored.
    void AVisitIsStoredAtAnotherStation()
    {
        HandOver(2);
        QTRY_COMPARE_WITH_TIMEOUT(Numbers().size(), 2, LongMs);
        EndAll();
        const QDir folder(m_box->Desk().ProgramFolder());
        for (const QString& name : folder.entryList({u"Sender-*"_s}))
            QVERIFY(QFile::remove(folder.filePath(name)));
        MakeHandover();
        m_box->AddPicture(Day, Stomach, 3);
        m_pacs->Outlet()->HandOver(PictureRecord{u"other"_s, VisitOfToday(), PictureState::OnShare, 3});
        QVERIFY(m_pacs->End().isEmpty());
        QTRY_COMPARE_WITH_TIMEOUT(Numbers(), (QList<int>{1, 2, 3}), LongMs);
        QCOMPARE(m_peer->Objects().size(), 3);
    }

    /// Whatever dies, at whatever moment: all of it comes, and nothing twice.
    void WhoDiesLosesNothing()
    {
        constexpr int Count = 40;
        HandOver(Count);
        int killed = 0;
        for (int at = 3; at < Count; at += 7) {
            QTRY_VERIFY_WITH_TIMEOUT(m_peer->Objects().size() >= at, LongMs);
            killed += m_sender->Kill();
            m_sender->Start(); // The end of a screen waits for one.
            // The journal may hand over again what it couldn't let go of.
            if (at % 2 == 0)
                HandOver(Count);
        }
        QVERIFY(killed >= 4);
        QTRY_COMPARE_WITH_TIMEOUT(State().waiting, 0, LongMs);
        QSet<QString> uids;
        for (const PacsPeer::Stored& object : m_peer->Objects())
            uids << object.uid;
        QCOMPARE(m_peer->Objects().size(), Count);
        QCOMPARE(uids.size(), Count);
    }

    /// A picture whose file is away waits for itself; one that is to be deleted waits for nothing.
    void OnesOwnTroubleIsOnesOwn()
    {
        m_peer->Stop();
        HandOver(3);
        const Visit colon = VisitOfToday(Colon);
        m_pacs->Outlet()->HandOver(PictureRecord{u"elsewhere"_s, colon, PictureState::OnShare, 1});
        m_pacs->VisitIsStored(colon);
        DeletionJob job;
        job.visit = VisitOfToday();
        job.items = {DeletionJob::Item{1}, DeletionJob::Item{2}};
        m_pacs->Outlet()->Withdraw(job);
        job.items[1].isMoved = true;
        m_pacs->Outlet()->Restore(job); // The share didn't take the first.
        QTRY_COMPARE_WITH_TIMEOUT(State().waiting, 3, LongMs);
        m_peer->Start();
        m_pacs->SendNow();
        QTRY_VERIFY2_WITH_TIMEOUT(State().waiting == 1 && State().away.contains(u"검사 폴더가 없습니다"),
                                  qPrintable(Told()), LongMs);
        QList<int> sorted = Numbers();
        std::ranges::sort(sorted);
        QCOMPARE(sorted, (QList<int>{1, 3}));
        MakeFolder(colon.SectionFolder());
        WriteWholeFile(colon.PicturePath(1), StationInABox::Jpeg({64, 48}, Qt::green));
        QTRY_COMPARE_WITH_TIMEOUT(m_peer->Objects().size(), 3, LongMs);
    }

    /// A marked-up picture goes beside its original and names it, each once, whether it was sent before or not; one put
    /// back is the original again.
    void AMarkedPictureBringsItsOriginal()
    {
        PacsServer server;
        server.Start();
        m_sender->WriteSetup(server.Port(), "Institution=31100001\nSection.위내시경=XC\n");
        MarkWithOriginal(1, Qt::red, false);
        HandOver(2);
        QTRY_COMPARE_WITH_TIMEOUT(Told(server), (QStringList{u"1"_s, u"2"_s, u"1001 of 1"_s}), LongMs);
        MarkWithOriginal(2, Qt::red, true);
        const QStringList both{u"1"_s, u"2"_s, u"1001 of 1"_s, u"1002 of 2"_s};
        QTRY_COMPARE_WITH_TIMEOUT(Told(server), both, LongMs);
        // An instance never changes its class, whatever the setup says later.
        m_sender->WriteSetup(server.Port(), "Institution=31100001\n");
        MakeHandover();
        MarkWithOriginal(2, Qt::blue, true);
        QTRY_COMPARE_WITH_TIMEOUT(Told(server), both + QStringList{u"2002 of 2"_s}, LongMs);
        for (const QString& object : server.Objects())
            QCOMPARE(PacsServer::Element(object, "0008,0060"), u"XC"_s);
        WriteWholeFile(VisitOfToday().PicturePath(2), m_before[2]);
        m_pacs->PictureIsMarked(VisitOfToday(), 2, false);
        m_pacs->End(); // The line stands in the queue then.
        QTRY_COMPARE_WITH_TIMEOUT(State().waiting, 0, LongMs);
        QCOMPARE(server.Objects().size(), 5);
        QCOMPARE(m_box->Value(u"SELECT st_modality || st_time AS v FROM ca_study"_s), u"XC101112"_s);
    }

    /// What is deleted after it was sent is rejected there once, with its marked one; back again it is another
    /// instance.
    void ADeletedPictureIsRejected_data()
    {
        Columns<bool, bool>("rejects", "isOfAnotherStation");
        QTest::newRow("as the setup wants") << true << false;
        QTest::newRow("sent by another station") << true << true;
        QTest::newRow("without the key") << false << false;
    }

    void ADeletedPictureIsRejected()
    {
        QFETCH2(bool, rejects, bool, isOfAnotherStation);
        const QByteArray setup = QByteArray("Institution=31100001\n") + (rejects ? "Reject=1\n" : "");
        m_sender->WriteSetup(m_peer->Port(), setup);
        HandOver(2);
        if (!isOfAnotherStation)
            MarkWithOriginal(1, Qt::red, true);
        const int sent = isOfAnotherStation ? 2 : 3;
        QTRY_COMPARE_WITH_TIMEOUT(m_peer->Objects().size(), sent, LongMs);
        EndAll();
        const QDir folder(m_box->Desk().ProgramFolder());
        for (const QString& name : folder.entryList({isOfAnotherStation ? u"Sender-*"_s : u"none"_s}))
            QVERIFY(QFile::remove(folder.filePath(name)));
        MakeHandover();
        const Visit visit = VisitOfToday();
        const QByteArray deleted = Files().ReadFile(visit.PicturePath(1));
        DeletionJob job;
        job.visit = visit;
        job.items = {DeletionJob::Item{1}};
        m_pacs->Outlet()->Withdraw(job);
        MakeFolder(visit.LogFolder());
        WriteWholeFile(visit.DeletedPicturePath(1), deleted);
        DeleteFile(visit.PicturePath(1));
        const int notes = !rejects ? 0 : isOfAnotherStation ? 1 : 2;
        QTRY_COMPARE_WITH_TIMEOUT(m_peer->Objects().size(), sent + notes, LongMs);
        QTRY_COMPARE_WITH_TIMEOUT(State().waiting, 0, LongMs);
        QCOMPARE(SenderQueue().Staying().size(), rejects ? 0 : 2);
        WriteWholeFile(visit.PicturePath(1), deleted);
        m_pacs->Outlet()->HandOver(PictureRecord{u"back"_s, visit, PictureState::OnShare, 1, PictureOrigin::Restored});
        QTRY_VERIFY_WITH_TIMEOUT(State().waiting == 0 && m_sender->HasEnded(), LongMs);
        QSet<QString> uids;
        for (const PacsPeer::Stored& object : m_peer->Objects())
            uids << object.uid;
        // A marked one brings its original again.
        QCOMPARE(uids.size(), sent + notes + notes);
    }

    /// A movie is made ready while nothing is live, and holds up no picture; one that can't be goes aside.
    void AMovieGoesBesideThePictures()
    {
        PacsServer server;
        server.Start();
        m_sender->WriteSetup(server.Port(), "Institution=31100001\nMovies=1\nSend=still\n");
        MakeHandover();
        const Visit visit = VisitOfToday();
        MakeFolder(MovieFolder(visit.captureDir));
        const QString path = MoviePath(visit.MovieStem(), 1);
        QProcess::execute(u"ffmpeg"_s,
                          {u"-v"_s, u"error"_s, u"-f"_s, u"lavfi"_s, u"-i"_s,
                           u"testsrc=size=320x240:rate=18:duration=1"_s, u"-c:v"_s, u"mjpeg"_s, NativePath(path)});
        WriteWholeFile(MoviePath(visit.MovieStem(), 2), "no movie");
        MovieJob job{u"movie"_s, visit, QDateTime(QDate(2026, 11, 24), QTime(9, 8, 7))};
        auto live = Files().Lock(handed_files::LiveLockPath());
        for (const int number : {1, 2})
            m_pacs->Outlet()->HandOverMovie(job, MoviePath(visit.MovieStem(), number).section(u'\\', -1));
        HandOver(1);
        QTRY_COMPARE_WITH_TIMEOUT(server.Objects().size(), 1, LongMs);
        QCOMPARE(State().movies, 2);
        live.reset();
        QTRY_COMPARE_WITH_TIMEOUT(server.Objects().size(), 2, LongMs);
        QTRY_COMPARE_WITH_TIMEOUT(State().setAside, 1, LongMs);
        QString movie;
        for (const QString& object : server.Objects()) {
            if (PacsServer::Element(object, "0008,0016").endsWith(u"77.1.1.1"))
                movie = object;
        }
        QCOMPARE(PacsServer::Element(movie, "0028,0008"), u"18"_s);
        QVERIFY(PacsServer::Element(movie, "0008,0033").startsWith(u"090807"));
        QTRY_COMPARE_WITH_TIMEOUT(QDir(m_box->Desk().ProgramFolder()).entryList({u"PacsMovie*"_s}), QStringList(),
                                  LongMs);
    }

    /// A clinic that nothing tells from others sends nothing, and is told; then all goes, and keeps what it has.
    void NothingGoesUnderAnotherClinic()
    {
        m_sender->WriteSetup(m_peer->Port(), {});
        HandOver(2);
        QTRY_VERIFY_WITH_TIMEOUT(m_sender->HasEnded() && State().NeedsSetup(), LongMs);
        QCOMPARE(m_peer->Objects().size(), 0);
        const QString told = m_pacs->End();
        QVERIFY2(told.startsWith(u"PACS로 보낼 그림 2장이 남아 있습니다.!!") && told.contains(u"Institution"),
                 qPrintable(told));
        for (const QByteArray name : {"31100001", "31100002"}) {
            m_sender->WriteSetup(m_peer->Port(), "PatientIdPrefix=A-\nInstitution=" + name + '\n');
            MakeHandover();
            Mark(2, name == "31100001" ? Qt::red : Qt::blue);
            QTRY_COMPARE_WITH_TIMEOUT(m_peer->Objects().size(), name == "31100001" ? 2 : 3, LongMs);
        }
        for (const PacsPeer::Stored& object : m_peer->Objects())
            QCOMPARE(object.patientId, u"A-00001234"_s);
        QCOMPARE(m_box->Value(u"SELECT GROUP_CONCAT( uid_institution ) AS v FROM ca_uid"_s), u"31100001"_s);
    }

    /// Lists of an earlier release: what waited goes, what had been sent doesn't, and the study stays the one it was.
    void FormerListsAreTakenOver()
    {
        for (const int number : {1, 2, 3})
            m_box->AddPicture(Day, Stomach, number, number == 1 ? u""_s : QString());
        const Visit visit = VisitOfToday();
        DicomPicture facts;
        facts.chart = visit.chart;
        facts.ymd = visit.ymd;
        facts.section = visit.etc;
        facts.number = 1;
        facts.identity.institution = u""_s;
        QJsonObject waiting = ToJson(visit);
        waiting.insert(u"number"_s, 2);
        QJsonObject sent = ToJson(visit);
        sent.insert(u"number"_s, 1);
        sent.insert(u"uid"_s, InstanceUid(facts, Files().ReadFile(visit.PicturePath(1))));
        QStringList mark = Files().ProcessMark().split(u'.');
        mark[3] += u'0';
        const QString list = m_box->Desk().ProgramFolder() + u"\\Pacs-%1.json"_s.arg(mark.join(u'.'));
        WriteWholeFile(
            list, QJsonDocument(
                      QJsonObject{{u"day"_s, Day}, {u"entries"_s, QJsonArray{waiting}}, {u"sent"_s, QJsonArray{sent}}})
                      .toJson());
        MakeHandover();
        QTRY_COMPARE_WITH_TIMEOUT(Numbers(), QList<int>{2}, LongMs);
        QVERIFY(!FileExists(list));
        m_pacs->VisitIsStored(visit);
        QTRY_COMPARE_WITH_TIMEOUT(Numbers(), (QList<int>{2, 3}), LongMs);
    }

    /// The screen, the journal's thread and the sender are there first at the same moment.
    void AFreshQueueIsOpenedByAllAtOnce()
    {
        std::atomic<int> faults = 0;
        for (int round = 0; round < 60; ++round) {
            const QString path = m_box->Desk().ProgramFolder() + u"\\fresh%1"_s.arg(round);
            std::latch start(4);
            const auto open = [&] {
                start.arrive_and_wait();
                try {
                    UseService<LocalDatabases>().Open(path)->Run({u"CREATE TABLE IF NOT EXISTS t ( x )"_s});
                } catch (const PlatformError&) {
                    ++faults;
                }
            };
            std::vector<std::jthread> all;
            for (int each = 0; each < 4; ++each)
                all.emplace_back(open);
        }
        QCOMPARE(faults.load(), 0);
    }

    /// A clinic without a server has nothing of all that.
    void WithoutAServerThereIsNothing()
    {
        ClientSetup.Pacs.Host.clear();
        OpenWithOneStill();
        Press(u"저장"_s);
        QCOMPARE(QDir(m_box->Desk().ProgramFolder()).entryList({u"Sender*"_s}), QStringList());
        QVERIFY(PacsHandover::ForSetup(ClientSetup, SaupTable, Launched()) == nullptr);
    }

private:
    /// Nobody has the queue open any more. The end of the screen may start another sender.
    void EndAll()
    {
        QTRY_VERIFY_WITH_TIMEOUT(m_sender->HasEnded(), LongMs);
        m_pacs.reset();
        QTRY_VERIFY_WITH_TIMEOUT(m_sender->HasEnded(), LongMs);
    }

    void MakeHandover()
    {
        m_pacs.reset();
        m_pacs = PacsHandover::ForSetup(ClientSetup, SaupTable, Launched());
    }

    /// A stored visit with so many pictures, each another one.
    void HandOver(int count)
    {
        MakeHandover();
        for (int number = 1; number <= count; ++number) {
            if (!FileExists(VisitOfToday().PicturePath(number)))
                m_box->AddPicture(Day, Stomach, number, number == 1 ? u""_s : QString());
            PictureRecord picture{u"picture%1"_s.arg(number), VisitOfToday(), PictureState::OnShare, number};
            picture.takenAt = QDateTime(QDate(2026, 11, 24), QTime(10, 11, 11 + number));
            m_pacs->Outlet()->HandOver(picture);
        }
        m_pacs->VisitIsStored(VisitOfToday());
    }

    void Mark(int number, Qt::GlobalColor colour)
    {
        WriteWholeFile(VisitOfToday().PicturePath(number), StationInABox::Jpeg({64, 48}, colour));
        m_pacs->PictureIsMarked(VisitOfToday(), number, false);
    }

    /// As the editor does. Before it is handed over nobody is told.
    void MarkWithOriginal(int number, Qt::GlobalColor colour, bool isHandedOver)
    {
        const Visit visit = VisitOfToday();
        if (!FileExists(visit.PicturePath(number)))
            m_box->AddPicture(Day, Stomach, number, number == 1 ? u""_s : QString());
        if (!m_before.contains(number))
            m_before.insert(number, Files().ReadFile(visit.PicturePath(number)));
        OriginalKeeper original(visit, number);
        original.Keep();
        WriteWholeFile(visit.PicturePath(number), StationInABox::Jpeg({64, 48}, colour));
        original.NoteWritten();
        if (isHandedOver)
            m_pacs->PictureIsMarked(visit, number, false);
    }

    /// Instance numbers of what a server has, with that of what it was made from.
    static QStringList Told(const PacsServer& server)
    {
        QHash<QString, QString> numbers;
        for (const QString& object : server.Objects())
            numbers.insert(PacsServer::Element(object, "0008,0018"), PacsServer::Element(object, "0020,0013"));
        QStringList told;
        for (const QString& object : server.Objects()) {
            const QString source = numbers.value(PacsServer::Element(object, "0008,1155"));
            told << PacsServer::Element(object, "0020,0013") + (source.isEmpty() ? QString() : u" of "_s + source);
        }
        return told;
    }

    /// Of what the server has taken, as it came.
    QList<int> Numbers() const
    {
        QList<int> numbers;
        for (const PacsPeer::Stored& object : m_peer->Objects()) {
            if (object.status == u"0000" || object.status.startsWith(u'B') || object.status == u"0107" ||
                object.status == u"0116")
                numbers << object.number;
        }
        return numbers;
    }

    static SenderQueue::State State() { return SenderQueue().Look(); }

    QString Told() const
    {
        const SenderQueue::State state = State();
        QStringList numbers;
        for (const int number : Numbers())
            numbers << QString::number(number);
        return u"waiting %1, aside %2, there %3: %4"_s.arg(state.waiting)
            .arg(state.setAside)
            .arg(numbers.join(u','), state.away);
    }

    std::unique_ptr<EditorInABox> m_box;
    std::unique_ptr<PacsPeer> m_peer;
    std::unique_ptr<SenderInABox> m_sender;
    std::unique_ptr<PacsHandover> m_pacs;
    QHash<int, QByteArray> m_before; ///< Pictures before they were marked.
};

QTEST_MAIN(SenderTest)
#include "SenderTest.moc"
