#pragma once

#include <QHash>
#include <QObject>
#include <QString>

/// `MSCommLib.MSComm`: a serial port that tells when bytes have arrived. Faults are PlatformErrors.
class MSComm : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

    /// Number of the port; refused while the port is open.
    virtual void setCommPort(int number) = 0;
    /// Such as "9600,N,8,1".
    virtual void setSettings(const QString& settings) = 0;
    /// 0: a read takes the whole buffer.
    virtual void setInputLen(int bytes) = 0;
    /// 0: text.
    virtual void setInputMode(int mode) = 0;
    /// True from the opening to the closing, also while an unplugged port is waited for.
    virtual bool PortOpen() const = 0;
    /// Closing discards what was received.
    virtual void setPortOpen(bool open) = 0;
    /// Bytes that wait; setting 0 discards them.
    virtual int InBufferCount() const = 0;
    virtual void setInBufferCount(int count) = 0;

Q_SIGNALS:
    /// Bytes have arrived.
    void OnComm();
};

/// What the clinic's setup decides about serial ports.
class SerialPortOptions
{
public:
    virtual ~SerialPortOptions() = default;
    /// Device file by port number; a number without an entry is /dev/ttyS of the number less one.
    virtual void UseDevices(const QHash<QString, QString>& devices) = 0;
};
