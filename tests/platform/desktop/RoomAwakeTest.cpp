#include "frame/components.h"
#include "frame/journal.h"
#include "platform/desktop/BusRoomAwake.h"
#include "support/testing.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusUnixFileDescriptor>

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {
class FakeScreenSaver : public QObject
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.ScreenSaver")

public:
    QStringList calls;

public Q_SLOTS:
    uint Inhibit(const QString& program, const QString&)
    {
        calls << u"Inhibit "_s + program;
        return 77;
    }
    void UnInhibit(uint cookie) { calls << u"UnInhibit %1"_s.arg(cookie); }
};

class FakeLogind : public QObject
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.login1.Manager")

public:
    QStringList calls;
    int readEnd = -1;

    /// The other end of what was handed out is closed.
    bool IsGivenBack() const
    {
        char byte = 0;
        return read(readEnd, &byte, 1) == 0;
    }

public Q_SLOTS:
    QDBusUnixFileDescriptor Inhibit(const QString& what, const QString& who, const QString&, const QString& mode)
    {
        calls << what + u' ' + who + u' ' + mode;
        int ends[2];
        if (pipe2(ends, O_CLOEXEC | O_NONBLOCK) != 0)
            return {};
        readEnd = ends[0];
        QDBusUnixFileDescriptor lock;
        lock.giveFileDescriptor(ends[1]);
        return lock;
    }
};

class KeptJournal : public Journal
{
public:
    std::atomic<int> lines = 0;
    void Write(Severity, const QString&) override { ++lines; }
};
} // namespace

class RoomAwakeTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { m_folder = std::make_unique<QTemporaryDir>(); }

    void TheRoomStaysAwakeWhileItIsKept()
    {
        QProcess daemon;
        const QString address = u"unix:path="_s + m_folder->filePath(u"bus"_s);
        daemon.start(u"dbus-daemon"_s, {u"--session"_s, u"--nofork"_s, u"--nopidfile"_s, u"--print-address"_s,
                                        u"--address="_s + address});
        QVERIFY(daemon.waitForReadyRead());
        UseBus(address);
        QDBusConnection bus = QDBusConnection::connectToBus(address, u"fakes"_s);
        FakeScreenSaver saver;
        FakeLogind logind;
        QVERIFY(bus.registerObject(u"/org/freedesktop/ScreenSaver"_s, &saver, QDBusConnection::ExportAllSlots));
        QVERIFY(bus.registerObject(u"/org/freedesktop/login1"_s, &logind, QDBusConnection::ExportAllSlots));
        QVERIFY(bus.registerService(u"org.freedesktop.ScreenSaver"_s));
        QVERIFY(bus.registerService(u"org.freedesktop.login1"_s));

        BusRoomAwake room;
        QSignalSpy slept(&room, &RoomAwake::HasSlept);
        room.Keep();
        room.Keep();
        QTRY_COMPARE(logind.calls, QStringList(u"idle:sleep capture-station block"_s));
        QCOMPARE(saver.calls, QStringList(u"Inhibit capture-station"_s));
        for (const bool begins : {true, false}) {
            QDBusMessage signal = QDBusMessage::createSignal(u"/org/freedesktop/login1"_s,
                                                             u"org.freedesktop.login1.Manager"_s, u"PrepareForSleep"_s);
            signal.setArguments({begins});
            QVERIFY(bus.send(signal));
        }
        QTRY_COMPARE(slept.size(), 1);
        QVERIFY(!logind.IsGivenBack());
        room.Release();
        QTRY_VERIFY(logind.IsGivenBack());
        QTRY_COMPARE(saver.calls.value(1), u"UnInhibit 77"_s);
        QDBusConnection::disconnectFromBus(u"fakes"_s);
        daemon.kill();
        QVERIFY(daemon.waitForFinished());
    }

    void ABusThatDoesntAnswerIsNotedOnce_data()
    {
        QTest::addColumn<bool>("isThere");
        QTest::newRow("missing") << false;
        QTest::newRow("silent") << true;
    }

    void ABusThatDoesntAnswerIsNotedOnce()
    {
        QFETCH(bool, isThere);
        auto* journal = new KeptJournal;
        InstallService<Journal>(std::unique_ptr<Journal>(journal));
        const QByteArray path = m_folder->filePath(u"silent"_s).toUtf8();
        const int silent = socket(AF_UNIX, SOCK_STREAM, 0);
        sockaddr_un address = {AF_UNIX, {}};
        qstrncpy(address.sun_path, path.constData(), sizeof(address.sun_path));
        if (isThere) {
            QCOMPARE(bind(silent, reinterpret_cast<const sockaddr*>(&address), sizeof(address)), 0);
            QCOMPARE(listen(silent, 8), 0);
        }
        UseBus(u"unix:path="_s + QString::fromUtf8(path));
        {
            BusRoomAwake room(200);
            for (int i = 0; i < 2; ++i) {
                room.Keep();
                room.Release();
            }
            QTRY_COMPARE_WITH_TIMEOUT(journal->lines.load(), 2, 20000); // One for each bus.
        }
        QCOMPARE(journal->lines.load(), 2);
        InstallService<Journal>(nullptr);
        close(silent);
    }

private:
    static void UseBus(const QString& address)
    {
        qputenv("DBUS_SESSION_BUS_ADDRESS", address.toUtf8());
        qputenv("DBUS_SYSTEM_BUS_ADDRESS", address.toUtf8());
    }

    std::unique_ptr<QTemporaryDir> m_folder;
};

QTEST_GUILESS_MAIN(RoomAwakeTest)
#include "RoomAwakeTest.moc"
