#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusObjectPath>
#include <QDBusVirtualObject>
#include <QMap>
#include <QProcess>
#include <QStringList>
#include <QVariantMap>

using FakeInterfaces = QMap<QString, QVariantMap>;
using FakeObjects = QMap<QDBusObjectPath, FakeInterfaces>;
Q_DECLARE_METATYPE(FakeInterfaces)
Q_DECLARE_METATYPE(FakeObjects)

/// A message bus of its own with the service udisks2 on it, which knows one USB stick, mounted at a folder, and a disk
/// of the machine.
class FakeUdisks : public QDBusVirtualObject
{
public:
    FakeUdisks(const QString& socket, QString stick) : m_stick(std::move(stick))
    {
        qDBusRegisterMetaType<FakeInterfaces>();
        qDBusRegisterMetaType<FakeObjects>();
        qDBusRegisterMetaType<QByteArrayList>();
        const QString address = QStringLiteral("unix:path=") + socket;
        m_daemon.start(QStringLiteral("dbus-daemon"),
                       {QStringLiteral("--session"), QStringLiteral("--nofork"), QStringLiteral("--nopidfile"),
                        QStringLiteral("--print-address"), QStringLiteral("--address=") + address});
        m_daemon.waitForReadyRead();
        qputenv("DBUS_SYSTEM_BUS_ADDRESS", address.toUtf8());
        QDBusConnection bus = QDBusConnection::connectToBus(address, QStringLiteral("udisks"));
        bus.registerVirtualObject(QStringLiteral("/org/freedesktop/UDisks2"), this, QDBusConnection::SubPath);
        bus.registerService(QStringLiteral("org.freedesktop.UDisks2"));
    }
    ~FakeUdisks() override
    {
        QDBusConnection::disconnectFromBus(QStringLiteral("udisks"));
        qunsetenv("DBUS_SYSTEM_BUS_ADDRESS");
        m_daemon.kill();
        m_daemon.waitForFinished();
    }

    QString refusal; ///< Name of the error that unmounting ends with.
    bool isReadOnly = false;
    QStringList unmounted;

    bool handleMessage(const QDBusMessage& message, const QDBusConnection& bus) override
    {
        if (message.member() == QStringLiteral("GetManagedObjects"))
            return bus.send(message.createReply(QVariant::fromValue(Objects())));
        if (message.member() != QStringLiteral("Unmount"))
            return false;
        if (!refusal.isEmpty())
            return bus.send(message.createErrorReply(refusal, QStringLiteral("no")));
        unmounted << message.path();
        return bus.send(message.createReply());
    }
    QString introspect(const QString&) const override { return {}; }

private:
    FakeObjects Objects() const
    {
        const QString service = QStringLiteral("org.freedesktop.UDisks2.");
        FakeObjects objects;
        for (const bool isUsb : {false, true}) {
            const QString name = isUsb ? QStringLiteral("stick") : QStringLiteral("disk");
            const QDBusObjectPath drive(QStringLiteral("/org/freedesktop/UDisks2/drives/") + name);
            objects[drive][service + QStringLiteral("Drive")] = {
                {QStringLiteral("ConnectionBus"), isUsb ? QStringLiteral("usb") : QString()},
                {QStringLiteral("Removable"), isUsb},
                {QStringLiteral("Optical"), false}};
            const QDBusObjectPath block(QStringLiteral("/org/freedesktop/UDisks2/block_devices/") + name);
            objects[block][service + QStringLiteral("Block")] = {{QStringLiteral("Drive"), QVariant::fromValue(drive)},
                                                                 {QStringLiteral("ReadOnly"), isReadOnly}};
            const QByteArray place = isUsb ? m_stick.toUtf8() : QByteArray("/");
            objects[block][service + QStringLiteral("Filesystem")] = {
                {QStringLiteral("MountPoints"), QVariant::fromValue(QByteArrayList{place + '\0'})}};
        }
        return objects;
    }

    QString m_stick;
    QProcess m_daemon;
};
