#include "capture/frmCapture.h"
#include "contracts/fpSpread.h"
#include "contracts/MSComm.h"
#include "frame/components.h"
#include "support/PseudoTerminal.h"
#include "support/StationInABox.h"
#include "support/WallClock.h"
#include "visit/VisitContext.h"

#include <QComboBox>
#include <QElapsedTimer>
#include <QSet>
#include <QSignalSpy>
#include <QTest>
#include <QToolButton>

using namespace Qt::StringLiterals;

namespace {
const QString Stomach = u"위내시경"_s;
const QString Day = u"20261124"_s;
} // namespace

/// A foot on a real terminal pair, and the real screen.
class FootSwitchTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_box = std::make_unique<StationInABox>();
        QVERIFY(m_folder.isValid());
        m_device = m_folder.filePath(u"switch"_s);
        m_cable = std::make_unique<PseudoTerminal>(m_device);
        UseService<SerialPortOptions>().UseDevices(
            {{u"1"_s, m_device}, {u"3"_s, m_device}, {u"5"_s, QString::fromUtf8(__FILE__)}});
    }
    void cleanup()
    {
        WallClock::SetBack(0);
        m_box.reset();
        m_cable.reset();
    }

    void APressIsAStill_data()
    {
        QTest::addColumn<QString>("port");
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<int>("stills");
        QTest::newRow("no port told is the first") << u""_s << QByteArray("1") << 1;
        QTest::newRow("port three") << u" 3 "_s << QByteArray("1", 1) << 1;
        QTest::newRow("a zero byte") << u"1"_s << QByteArray("\0", 1) << 1;
        QTest::newRow("what the line discipline would take for itself") << u"1"_s << QByteArray("\3\r\n\21\23\4") << 1;
        QTest::newRow("a burst") << u"1"_s << QByteArray(300, 'x') << 1;
        QTest::newRow("a port that doesn't exist") << u"7"_s << QByteArray("1") << 0;
        QTest::newRow("a file that is no port") << u"5"_s << QByteArray("1") << 0;
        QTest::newRow("no number") << u"COM1"_s << QByteArray("1") << 1; // Stays with the first port.
        QTest::newRow("a number out of range") << u"70000"_s << QByteArray("1") << 1;
        QTest::newRow("none that a port can have") << u"-2"_s << QByteArray("1") << 1;
    }

    void APressIsAStill()
    {
        QFETCH(QString, port);
        QFETCH(QByteArray, bytes);
        QFETCH(int, stills);
        ClientSetup.CommPort = port;
        Open();
        m_cable->Send("noise while the port is closed");
        Press(u"연결"_s);
        QCOMPARE(Stills(), 0);
        m_cable->Send(bytes);
        QTRY_COMPARE(Stills(), stills);
        if (stills == 0)
            return;
        QTRY_VERIFY(Port().PortOpen());
        m_cable->Send("y");
        QTRY_COMPARE(Stills(), 2);
        QVERIFY(m_box->Desk().shown.isEmpty());
    }

    void PressesOfOneStillAreOne()
    {
        // The switch chatters on through the still and the pause after it.
        Open();
        Press(u"연결"_s);
        m_cable->Send("1");
        QTRY_COMPARE(Stills(), 1);
        QElapsedTimer pause;
        pause.start();
        while (!Port().PortOpen() || pause.elapsed() < 50) {
            m_cable->Send("chatter");
            QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
            if (Port().PortOpen())
                break;
        }
        QTRY_VERIFY(Port().PortOpen());
        QCoreApplication::processEvents();
        const int before = Stills();
        m_cable->Send("2");
        QTRY_COMPARE(Stills(), before + 1);
        QVERIFY(before <= 2); // One byte may have come just as the port opened again.
    }

    void TwoHundredPressesOverFourSections()
    {
        ClientSetup.EtcList = u"위내시경,대장내시경,초음파,기관지"_s;
        frmCapture& screen = Open();
        Press(u"연결"_s);
        QSet<int> frames;
        for (int section = 0; section < 4; ++section) {
            screen.cmbEtc().setCurrentIndex(section);
            Q_EMIT screen.cmbEtc().activated(section);
            for (int press = 1; press <= 50; ++press) {
                // As a clock that somebody sets: an hour back, and forth again.
                WallClock::SetBack(press % 2 * 3600);
                m_cable->Send("1");
                QVERIFY(QTest::qWaitFor([this, press] { return Stills(VisitContext.Etc) == press; }));
                QVERIFY(QTest::qWaitFor([this] { return Port().PortOpen(); }));
            }
            const QSignalSpy arrivals(&Port(), &MSComm::OnComm);
            m_cable->Send("one more than the grid takes");
            QVERIFY(QTest::qWaitFor([&arrivals] { return arrivals.count() > 0; }));
            QVERIFY(QTest::qWaitFor([this] { return Port().PortOpen(); }));
            QCOMPARE(Stills(VisitContext.Etc), 50);
            for (int number = 1; number <= 50; ++number)
                frames.insert(FakeVideoCap::FrameNumber(m_box->PicturePath(Day, VisitContext.Etc, number)));
        }
        QCOMPARE(frames.size(), 200);
        QVERIFY(!frames.contains(-1));
        QCOMPARE(m_box->Value(u"SELECT COUNT(*) AS v FROM cap"_s), u"200"_s);
        QVERIFY(m_box->Desk().shown.isEmpty());
    }

    void AFloodIsDiscarded()
    {
        Open();
        Press(u"연결"_s);
        std::thread flood([this] { m_cable->Send(QByteArray(1'000'000, 'x')); });
        QTRY_VERIFY(Stills() >= 1);
        // Each time the port is open again the rest of the flood is another press, until it has run dry.
        QTRY_VERIFY_WITH_TIMEOUT(m_cable->IsDrained(), 30000);
        flood.join();
        QTRY_VERIFY(Port().PortOpen());
        QTRY_COMPARE(Port().InBufferCount(), 0);
        const int before = Stills();
        m_cable->Send("1");
        QTRY_COMPARE(Stills(), before + 1);
    }

    void DeadBeforeConnectAndArmedAfterDisconnect()
    {
        frmCapture& screen = Open();
        m_cable->Send("1");
        QTest::qWait(0);
        QVERIFY(!Port().PortOpen());
        Press(u"연결"_s);
        Press(u"연결"_s);
        QVERIFY(Port().PortOpen());
        screen.findChild<QAction*>(u"연결끊기"_s)->trigger();
        QVERIFY(Port().PortOpen());
        m_cable->Send("1");
        QTRY_COMPARE(m_box->Desk().shown, QStringList{u"캡쳐할 영상이 없습니다.!!"_s});
        QTRY_VERIFY(Port().PortOpen());
        QCOMPARE(Stills(), 0);
    }

    void APressUnderTheSwitchsOwnMessageIsAStill()
    {
        frmCapture& screen = Open();
        Press(u"연결"_s);
        screen.findChild<QAction*>(u"연결끊기"_s)->trigger();
        m_box->Desk().whileShown = [&] {
            m_box->Desk().whileShown = nullptr;
            FakeVideoCap::Last()->live = true;
            m_cable->Send("2");
            QTRY_COMPARE(Stills(), 1);
        };
        m_cable->Send("1");
        QTRY_COMPARE(Stills(), 1);
        QCOMPARE(m_box->Desk().shown, QStringList{u"캡쳐할 영상이 없습니다.!!"_s});
        QTRY_VERIFY(Port().PortOpen());
    }

    void APulledPlugComesBack_data()
    {
        QTest::addColumn<bool>("duringStill");
        QTest::newRow("idle") << false;
        QTest::newRow("in the middle of a still") << true;
    }

    void APulledPlugComesBack()
    {
        QFETCH(bool, duringStill);
        frmCapture& screen = Open();
        Press(u"연결"_s);
        if (duringStill) {
            screen.findChild<QAction*>(u"연결끊기"_s)->trigger();
            m_box->Desk().whileShown = [&] { m_cable.reset(); };
            m_cable->Send("1");
            QTRY_VERIFY(m_cable == nullptr);
            m_box->Desk().whileShown = nullptr;
            Press(u"연결"_s);
        } else {
            m_cable.reset();
        }
        QTRY_VERIFY(Port().PortOpen());
        QTest::qWait(0);
        m_cable = std::make_unique<PseudoTerminal>(m_device);
        QTRY_VERIFY_WITH_TIMEOUT(m_cable->IsHeld(), 10000);
        m_cable->Send("1");
        QTRY_COMPARE(Stills(), 1);
    }

    void TheScreenClosesThePort()
    {
        frmCapture& screen = Open();
        Press(u"연결"_s);
        m_cable->Send("1");
        QTRY_COMPARE(Stills(), 1);
        // In the pause, which then must not open it again.
        screen.close();
        QVERIFY(m_box->Desk().ended);
        QTRY_VERIFY(!m_cable->IsHeld());
    }

private:
    frmCapture& Open()
    {
        m_screen = &Form<frmCapture>();
        m_screen->Show();
        return *m_screen;
    }

    MSComm& Port() const { return *m_screen->findChild<MSComm*>(u"commCapture"_s); }
    void Press(const QString& caption) { m_screen->findChild<QToolButton*>(caption)->click(); }
    int Stills(const QString& section = Stomach) const
    {
        return int(m_box->Names(u"2026"_s, section).filter(u".jpg"_s).size());
    }

    QTemporaryDir m_folder;
    QString m_device;
    std::unique_ptr<StationInABox> m_box;
    std::unique_ptr<PseudoTerminal> m_cable;
    frmCapture* m_screen = nullptr;
};

QTEST_MAIN(FootSwitchTest)
#include "FootSwitchTest.moc"
