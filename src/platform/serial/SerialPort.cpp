#include "platform/serial/SerialPort.h"

#include "contracts/files.h"
#include "contracts/PlatformError.h"
#include "frame/journal.h"

#include <QFile>
#include <QSerialPort>

#include <chrono>
#include <sys/stat.h>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {
// What one look costs is a question to the file system.
constexpr auto WatchInterval = 500ms;
// Nobody reads more than "something came"; the rest of a flood waits in the driver until it is discarded.
constexpr qint64 MostWaiting = 4096;

struct LineSettings
{
    int baud = 9600;
    QSerialPort::Parity parity = QSerialPort::NoParity;
    QSerialPort::DataBits dataBits = QSerialPort::Data8;
    QSerialPort::StopBits stopBits = QSerialPort::OneStop;
};

LineSettings ReadLineSettings(const QString& text)
{
    static const QHash<QString, QSerialPort::Parity> parities = {
        {u"N"_s, QSerialPort::NoParity}, {u"E"_s, QSerialPort::EvenParity}, {u"O"_s, QSerialPort::OddParity}};
    static const QHash<QString, QSerialPort::StopBits> stops = {{u"1"_s, QSerialPort::OneStop},
                                                                {u"2"_s, QSerialPort::TwoStop}};
    const QStringList parts = text.split(u',');
    const int baud = parts.value(0).toInt();
    const int bits = parts.value(2).toInt();
    const QString parity = parts.value(1).toUpper();
    if (parts.size() != 4 || baud <= 0 || bits < 5 || bits > 8 || !parities.contains(parity) ||
        !stops.contains(parts.at(3)))
        throw PlatformError(u"직렬 포트 설정값이 잘못되었습니다.!! (%1)"_s.arg(text));
    return {baud, parities.value(parity), QSerialPort::DataBits(bits), stops.value(parts.at(3))};
}

/// Tells one device behind a name from the next; 0 when there is none.
quint64 NodeOf(const QString& device)
{
    struct stat status = {};
    return stat(QFile::encodeName(device).constData(), &status) == 0 ? status.st_ino : 0;
}
} // namespace

SerialPort::SerialPort(std::shared_ptr<const SerialDevices> devices)
    : MSComm(nullptr), m_devices(std::move(devices)), m_port(std::make_unique<QSerialPort>())
{
    m_watch.setInterval(WatchInterval);
    connect(&m_watch, &QTimer::timeout, this, &SerialPort::Watch);
    m_port->setReadBufferSize(MostWaiting);
    // Whoever is told may close the port, which must not happen inside the port's own signals.
    connect(m_port.get(), &QSerialPort::readyRead, this, &SerialPort::Announce, Qt::QueuedConnection);
    connect(m_port.get(), &QSerialPort::errorOccurred, this, [this](QSerialPort::SerialPortError error) {
        // A device that is gone repeats its error without end until the port is closed.
        if (error == QSerialPort::ReadError || error == QSerialPort::ResourceError)
            CloseDevice();
    });
}

SerialPort::~SerialPort()
{
    m_port->disconnect(this);
}

QString SerialPort::Device() const
{
    const QString device = m_devices->value(QString::number(m_number));
    return device.isEmpty() ? u"/dev/ttyS%1"_s.arg(m_number - 1) : NativePath(device);
}

void SerialPort::setCommPort(int number)
{
    if (m_isOpen)
        throw PlatformError(u"열려 있는 직렬 포트의 번호는 바꿀수 없습니다.!!"_s);
    if (number < 1)
        throw PlatformError(u"직렬 포트 번호가 잘못되었습니다.!! (%1)"_s.arg(number));
    m_number = number;
}

void SerialPort::setSettings(const QString& settings)
{
    const LineSettings line = ReadLineSettings(settings);
    m_port->setBaudRate(line.baud);
    m_port->setParity(line.parity);
    m_port->setDataBits(line.dataBits);
    m_port->setStopBits(line.stopBits);
}

void SerialPort::setPortOpen(bool open)
{
    if (open == m_isOpen)
        return;
    if (!open) {
        m_isOpen = false;
        m_watch.stop();
        CloseDevice();
        return;
    }
    const QString fault = OpenDevice();
    // A device that was in use and was pulled out meanwhile is waited for.
    const bool isAway = m_known == Device() && NodeOf(m_known) == 0;
    if (!fault.isEmpty() && !isAway)
        throw PlatformError(u"직렬 포트를 열수 없습니다.!! (%1: %2)"_s.arg(Device(), fault));
    m_isOpen = true;
    m_watch.start();
}

/// Empty when the device is open; otherwise the reason.
QString SerialPort::OpenDevice()
{
    const QString device = Device();
    m_port->setPortName(device);
    if (!m_port->open(QIODevice::ReadOnly))
        return m_port->errorString();
    // What came while nobody had it open is no press.
    m_port->clear(QSerialPort::Input);
    m_known = device;
    m_node = NodeOf(device);
    return {};
}

void SerialPort::CloseDevice()
{
    if (!m_port->isOpen())
        return;
    m_port->close();
    if (m_isOpen)
        journal::Note(Journal::Warning, u"직렬 포트의 장치가 없어짐: %1"_s.arg(m_known));
}

void SerialPort::Watch()
{
    // A driver may also say nothing when its device is pulled out.
    if (m_port->isOpen() && NodeOf(m_known) != m_node)
        CloseDevice();
    if (!m_port->isOpen() && NodeOf(Device()) != 0 && OpenDevice().isEmpty())
        journal::Note(Journal::Information, u"직렬 포트의 장치가 돌아옴: %1"_s.arg(m_known));
}

int SerialPort::InBufferCount() const
{
    return int(m_port->bytesAvailable());
}

void SerialPort::setInBufferCount(int)
{
    if (!m_port->isOpen())
        return;
    m_port->clear(QSerialPort::Input);
    m_port->readAll();
}

void SerialPort::Announce()
{
    if (m_isOpen && m_port->isOpen() && m_port->bytesAvailable() > 0)
        Q_EMIT OnComm();
}
