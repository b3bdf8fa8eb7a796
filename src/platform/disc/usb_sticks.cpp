#include "platform/disc/usb_sticks.h"

#include "contracts/PlatformError.h"
#include "frame/journal.h"
#include "frame/waiting.h"
#include "frame/WorkThread.h"
#include "platform/bus/bus_answers.h"

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusReply>
#include <QFile>
#include <QMap>
#include <QScopeGuard>
#include <QVariantMap>

#include <algorithm>
#include <atomic>
#include <memory>

using namespace Qt::StringLiterals;

using InterfacesOfObject = QMap<QString, QVariantMap>;
using ManagedObjects = QMap<QDBusObjectPath, InterfacesOfObject>;
Q_DECLARE_METATYPE(InterfacesOfObject)
Q_DECLARE_METATYPE(ManagedObjects)

namespace {
constexpr int ListPatienceMs = 5000;
/// What the kernel still holds for the stick is written by then.
constexpr int UnmountPatienceMs = 300'000;

const QString Service = u"org.freedesktop.UDisks2"_s;
const QString BusName = u"disc-sticks"_s;

/// A connection for one question. Disconnected when it comes back, since the service may have been started anew.
class Bus
{
public:
    Bus()
    {
        if (BusAnswers(SystemBusAddress()))
            m_connection = QDBusConnection::connectToBus(SystemBusAddress(), Name());
    }
    ~Bus() { QDBusConnection::disconnectFromBus(Name()); }
    Bus(const Bus&) = delete;
    Bus& operator=(const Bus&) = delete;

    QDBusMessage Call(const QString& object, const QString& interface, const QString& method,
                      const QVariantList& arguments, int patienceMs)
    {
        QDBusMessage message = QDBusMessage::createMethodCall(Service, object, interface, method);
        message.setArguments(arguments);
        return m_connection.call(message, QDBus::Block, patienceMs);
    }

private:
    QString Name() const { return BusName + QString::number(reinterpret_cast<quintptr>(this)); }

    QDBusConnection m_connection{QString()};
};

/// Where the file system is mounted first; the service's texts end in a NUL.
QString MountPoint(const QVariantMap& fileSystem)
{
    const auto points = qdbus_cast<QByteArrayList>(fileSystem.value(u"MountPoints"_s));
    const QByteArray first = points.value(0);
    const qsizetype end = first.indexOf('\0');
    return QFile::decodeName(end < 0 ? first : first.first(end));
}

bool IsUsbStick(const QVariantMap& drive)
{
    return drive.value(u"ConnectionBus"_s).toString() == u"usb" && !drive.value(u"Optical"_s).toBool() &&
           drive.value(u"Removable"_s).toBool();
}

QList<UsbStick> AskService()
{
    qDBusRegisterMetaType<InterfacesOfObject>();
    qDBusRegisterMetaType<ManagedObjects>();
    qDBusRegisterMetaType<QByteArrayList>();
    Bus bus;
    const QDBusReply<ManagedObjects> reply =
        bus.Call(u"/org/freedesktop/UDisks2"_s, u"org.freedesktop.DBus.ObjectManager"_s, u"GetManagedObjects"_s, {},
                 ListPatienceMs);
    if (!reply.isValid()) {
        journal::Note(Journal::Warning, u"USB 메모리를 찾지 못함(%1): %2"_s.arg(Service, reply.error().name()));
        return {};
    }
    const ManagedObjects objects = reply.value();
    QList<UsbStick> sticks;
    for (auto object = objects.cbegin(); object != objects.cend(); ++object) {
        const QVariantMap block = object->value(Service + u".Block"_s);
        const QString folder = MountPoint(object->value(Service + u".Filesystem"_s));
        const auto drive = objects.value(qvariant_cast<QDBusObjectPath>(block.value(u"Drive"_s)));
        if (!folder.isEmpty() && IsUsbStick(drive.value(Service + u".Drive"_s)))
            sticks.append({folder, object.key().path(), block.value(u"ReadOnly"_s).toBool()});
    }
    std::ranges::sort(sticks, {}, &UsbStick::folder);
    return sticks;
}

struct FoundSticks
{
    std::atomic<bool> isThere = false;
    QList<UsbStick> sticks; ///< Written before `isThere`, read after.
};
} // namespace

QList<UsbStick> MountedSticks()
{
    const auto answer = std::make_shared<FoundSticks>();
    WorkThread thread;
    thread.Post([answer] {
        answer->sticks = AskService();
        answer->isThere = true;
        PostToScreen([] {});
    });
    const waiting::Outcome outcome =
        waiting::Await(u"USB 메모리를 찾고 있습니다."_s, [answer] { return answer->isThere.load(); });
    if (outcome == waiting::Outcome::Done)
        return answer->sticks;
    thread.End(0);
    throw PlatformError(outcome == waiting::Outcome::Cancelled ? u"USB 메모리를 찾지 않고 작업을 취소하였습니다.!!"_s
                                                               : QString());
}

QString UnmountStick(const UsbStick& stick)
{
    Bus bus;
    const QDBusMessage reply =
        bus.Call(stick.object, Service + u".Filesystem"_s, u"Unmount"_s, {QVariantMap()}, UnmountPatienceMs);
    if (reply.type() != QDBusMessage::ErrorMessage)
        return {};
    journal::Note(Journal::Warning, u"USB 메모리를 분리하지 못함: %1"_s.arg(reply.errorName()));
    if (reply.errorName().endsWith(u"DeviceBusy"_s))
        return u"다른 프로그램이 USB 메모리를 사용하고 있습니다.!!"_s;
    return u"USB 메모리를 분리하지 못했습니다.!! (%1)"_s.arg(reply.errorName().left(100));
}
