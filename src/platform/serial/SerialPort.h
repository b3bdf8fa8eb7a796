#pragma once

#include "contracts/MSComm.h"

#include <QTimer>

#include <memory>

class QSerialPort;

/// Device file by port number.
using SerialDevices = QHash<QString, QString>;

/// A serial port of the machine. An open port whose device goes away stays open for its user: the device is taken again
/// when it is back, and what it sent meanwhile is not told of.
class SerialPort final : public MSComm
{
    Q_OBJECT

public:
    explicit SerialPort(std::shared_ptr<const SerialDevices> devices);
    ~SerialPort() override;

    void setCommPort(int number) override;
    void setSettings(const QString& settings) override;
    void setInputLen(int) override {}
    void setInputMode(int) override {}
    bool PortOpen() const override { return m_isOpen; }
    void setPortOpen(bool open) override;
    int InBufferCount() const override;
    void setInBufferCount(int count) override;

private:
    QString Device() const;
    QString OpenDevice();
    void CloseDevice();
    void Watch();
    void Announce();

    const std::shared_ptr<const SerialDevices> m_devices;
    std::unique_ptr<QSerialPort> m_port; ///< Open while the device is there.
    QTimer m_watch;
    int m_number = 1;
    QString m_known; ///< The device that was open last.
    quint64 m_node = 0;
    bool m_isOpen = false;
};
