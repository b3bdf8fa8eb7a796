#include "platform/desktop/BusRoomAwake.h"

#include "frame/journal.h"
#include "platform/bus/bus_answers.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusReply>
#include <QDBusUnixFileDescriptor>

#include <functional>
#include <optional>
#include <utility>

using namespace Qt::StringLiterals;

namespace {
const QString Program = u"capture-station"_s;
const QString Reason = u"영상을 보고 있습니다"_s;
const QString ScreenSaver = u"org.freedesktop.ScreenSaver"_s;
const QString ScreenSaverPath = u"/org/freedesktop/ScreenSaver"_s;
const QString Logind = u"org.freedesktop.login1"_s;
const QString LogindPath = u"/org/freedesktop/login1"_s;
const QString LogindManager = u"org.freedesktop.login1.Manager"_s;

QString SessionAddress()
{
    const QString told = qEnvironmentVariable("DBUS_SESSION_BUS_ADDRESS");
    const QString folder = qEnvironmentVariable("XDG_RUNTIME_DIR");
    // Without either none is started for this.
    return !told.isEmpty() || folder.isEmpty() ? told : u"unix:path="_s + folder + u"/bus"_s;
}

/// A bus that is connected to when it is needed, and its service.
class Bus
{
public:
    Bus(QString name, QString service, int patienceMs)
        : m_name(std::move(name)), m_service(std::move(service)), m_patienceMs(patienceMs)
    {
    }
    ~Bus() { Close(); }
    Bus(const Bus&) = delete;
    Bus& operator=(const Bus&) = delete;

    /// Null when it isn't there, which is told. `opened` hears of each new connection.
    QDBusConnection* Open(const QString& address, const std::function<void(QDBusConnection&)>& opened = {})
    {
        if (m_connection && m_connection->isConnected())
            return &*m_connection;
        Close();
        if (!BusAnswers(address, m_patienceMs)) {
            Tell(u"버스가 응답하지 않음"_s);
            return nullptr;
        }
        m_connection = QDBusConnection::connectToBus(address, m_name);
        if (m_connection->isConnected()) {
            if (opened)
                opened(*m_connection);
            return &*m_connection;
        }
        Tell(u"버스에 연결하지 못함"_s);
        return nullptr;
    }

    /// Nothing, and it is told, when the service isn't there or doesn't answer.
    template <class Answer>
    std::optional<Answer> Call(QDBusMessage message, const QVariantList& arguments)
    {
        message.setArguments(arguments);
        const QDBusReply<Answer> reply = m_connection->call(message, QDBus::Block, m_patienceMs);
        if (reply.isValid())
            return reply.value();
        Tell(reply.error().name());
        // What it may grant yet is nobody's then.
        if (reply.error().type() == QDBusError::NoReply || reply.error().type() == QDBusError::TimedOut)
            Close();
        return std::nullopt;
    }

    void Close()
    {
        if (std::exchange(m_connection, std::nullopt))
            QDBusConnection::disconnectFromBus(m_name);
    }

    QDBusConnection* Opened() { return m_connection ? &*m_connection : nullptr; }

private:
    void Tell(const QString& reason)
    {
        if (!std::exchange(m_isTold, true))
            journal::Note(Journal::Warning, u"화면 잠금과 절전을 막지 못함(%1): %2"_s.arg(m_service, reason));
    }

    const QString m_name;
    const QString m_service;
    const int m_patienceMs;
    std::optional<QDBusConnection> m_connection;
    bool m_isTold = false;
};
} // namespace

struct BusRoomAwake::Buses
{
    explicit Buses(int patience) : patienceMs(patience) {}

    const int patienceMs;
    Bus session{u"room-awake-session"_s, ScreenSaver, patienceMs};
    Bus system{u"room-awake-system"_s, Logind, patienceMs};
    std::optional<uint> cookie;
    std::optional<QDBusUnixFileDescriptor> lock; ///< The system is kept awake while it is open.

    void Keep(BusRoomAwake* owner)
    {
        if (!cookie && session.Open(SessionAddress()) != nullptr)
            cookie = session.Call<uint>(
                QDBusMessage::createMethodCall(ScreenSaver, ScreenSaverPath, ScreenSaver, u"Inhibit"_s),
                {Program, Reason});
        // The bus knows members by their names alone.
        const auto hearSleep = [owner](QDBusConnection& bus) {
            bus.connect(Logind, LogindPath, LogindManager, u"PrepareForSleep"_s, owner, SLOT(OnPrepareForSleep(bool)));
        };
        if (lock || system.Open(SystemBusAddress(), hearSleep) == nullptr)
            return;
        lock = system.Call<QDBusUnixFileDescriptor>(
            QDBusMessage::createMethodCall(Logind, LogindPath, LogindManager, u"Inhibit"_s),
            {u"idle:sleep"_s, Program, Reason, u"block"_s});
    }

    void Release()
    {
        lock.reset();
        const std::optional<uint> given = std::exchange(cookie, std::nullopt);
        if (!given || session.Opened() == nullptr)
            return;
        QDBusMessage message =
            QDBusMessage::createMethodCall(ScreenSaver, ScreenSaverPath, ScreenSaver, u"UnInhibit"_s);
        message.setArguments({*given});
        session.Opened()->call(message, QDBus::Block, patienceMs);
    }
};

BusRoomAwake::BusRoomAwake(int patienceMs) : m_buses(std::make_shared<Buses>(patienceMs)) {}

BusRoomAwake::~BusRoomAwake()
{
    // Both buses and both services, and one of them once more.
    m_worker.End(5 * m_buses->patienceMs, [buses = m_buses] { buses->Release(); });
}

void BusRoomAwake::Keep()
{
    if (!std::exchange(m_isKept, true))
        m_worker.Post([this, buses = m_buses] { buses->Keep(this); });
}

void BusRoomAwake::Release()
{
    if (std::exchange(m_isKept, false))
        m_worker.Post([buses = m_buses] { buses->Release(); });
}

void BusRoomAwake::OnPrepareForSleep(bool begins)
{
    journal::Note(Journal::Information, begins ? u"컴퓨터가 절전에 들어감"_s : u"컴퓨터가 절전에서 깨어남"_s);
    if (!begins)
        Q_EMIT HasSlept();
}
