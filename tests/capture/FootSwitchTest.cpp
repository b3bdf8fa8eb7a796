#include "contracts/MSComm.h"
#include "support/CaptureScreen.h"
#include "support/PseudoTerminal.h"

#include <thread>

using namespace Qt::StringLiterals;

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
        m_box.reset();
        m_cable.reset();
    }

    void APressIsAStill_data()
    {
        Columns<QString, QByteArray, int>("port", "bytes", "stills");
        QTest::newRow("no port told is the first") << u""_s << QByteArray("1") << 1;
        QTest::newRow("a zero byte") << u"1"_s << QByteArray("\0", 1) << 1;
        QTest::newRow("what the line discipline would take for itself") << u"1"_s << QByteArray("\3\r\n\21\23\4") << 1;
        QTest::newRow("a burst") << u"1"_s << QByteArray(300, 'x') << 1;
        QTest::newRow("a port that doesn't exist") << u"7"_s << QByteArray("1") << 0;
        QTest::newRow("no number") << u"COM1"_s << QByteArray("1") << 1; // Stays with the first port.
        QTest::newRow("a number out of range") << u"70000"_s << QByteArray("1") << 1;
    }

    void APressIsAStill()
    {
        QFETCH3(QString, port, QByteArray, bytes, int, stills);
        ClientSetup.CommPort = port;
        OpenScreen();
        m_cable->Send("noise while the port is closed");
        Press(u"연결"_s);
        QCOMPARE(Stills(), 0);
        m_cable->Send(bytes);
        QTRY_COMPARE(Stills(), stills);
        if (stills == 0)
            return;
        // The foot is let in again when the screen has heard of the file.
        QTRY_VERIFY(!Port().PortOpen());
        QTRY_VERIFY(Port().PortOpen());
        m_cable->Send("y");
        QTRY_COMPARE(Stills(), 2);
        QVERIFY(m_box->Desk().shown.isEmpty());
    }

    void UnderADateThatIsNoneAPressIsToldOnce()
    {
        VisitContext.YmdIsValid = false;
        OpenScreen();
        Press(u"연결"_s);
        for (int press = 1; press <= 2; ++press) {
            m_cable->Send("1");
            QTRY_VERIFY(!Port().PortOpen());
            QTRY_VERIFY(Port().PortOpen());
            QTRY_COMPARE(m_box->Desk().shown, QStringList{QString::fromUtf16(InvalidDateText)});
        }
        QCOMPARE(Stills(), 0);
    }

    void AFloodIsDiscarded()
    {
        OpenScreen();
        Press(u"연결"_s);
        std::thread flood([this] { m_cable->Send(QByteArray(1'000'000, 'x')); });
        QTRY_VERIFY(Stills() >= 1);
        // Each time the port is open again the rest of the flood is another press, until it has run dry.
        QTRY_VERIFY_WITH_TIMEOUT(m_cable->isDrained, 30000);
        flood.join();
        AwaitStills();
        const int before = Stills();
        // The first of them may come into the last pause.
        QTRY_VERIFY((m_cable->Send("1"), Stills() > before));
    }

    void DeadBeforeConnectAndArmedAfterDisconnect()
    {
        OpenScreen();
        m_cable->Send("1");
        QTest::qWait(0);
        QVERIFY(!Port().PortOpen());
        Press(u"연결"_s);
        Press(u"연결"_s);
        QVERIFY(Port().PortOpen());
        Choose(u"연결끊기"_s);
        QVERIFY(Port().PortOpen());
        m_cable->Send("1");
        QTRY_COMPARE(m_box->Desk().shown, QStringList{u"캡쳐할 영상이 없습니다.!!"_s});
        QTRY_VERIFY(Port().PortOpen());
        QCOMPARE(Stills(), 0);
    }

    void APressUnderTheSwitchsOwnMessageIsAStill()
    {
        OpenScreen();
        Press(u"연결"_s);
        Choose(u"연결끊기"_s);
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
        OpenScreen();
        Press(u"연결"_s);
        if (duringStill) {
            Choose(u"연결끊기"_s);
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
        frmCapture& screen = OpenScreen();
        Press(u"연결"_s);
        m_cable->Send("1");
        QTRY_COMPARE(Stills(), 1);
        // In the pause, which then must not open it again.
        screen.close();
        QVERIFY(m_box->Desk().ended);
        QTRY_VERIFY(!m_cable->IsHeld());
    }

private:
    MSComm& Port() const { return *opened->findChild<MSComm*>(u"commCapture"_s); }
    int Stills(const QString& section = Stomach) const
    {
        return int(m_box->Names(u"2026"_s, section).filter(u".jpg"_s).size());
    }

    QTemporaryDir m_folder;
    QString m_device;
    std::unique_ptr<StationInABox> m_box;
    std::unique_ptr<PseudoTerminal> m_cable;
};

QTEST_MAIN(FootSwitchTest)
#include "FootSwitchTest.moc"
