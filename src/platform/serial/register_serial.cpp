#include "platform/serial/register_serial.h"

#include "frame/components.h"
#include "platform/serial/SerialPort.h"

using namespace Qt::StringLiterals;

namespace {
class PortDevices final : public SerialPortOptions
{
public:
    explicit PortDevices(std::shared_ptr<SerialDevices> devices) : m_devices(std::move(devices)) {}

    void UseDevices(const QHash<QString, QString>& devices) override { *m_devices = devices; }

private:
    std::shared_ptr<SerialDevices> m_devices;
};
} // namespace

void RegisterSerial()
{
    auto devices = std::make_shared<SerialDevices>();
    InstallService<SerialPortOptions>(std::make_unique<PortDevices>(devices));
    RegisterComponent<MSComm>(u"MSCommLib.MSComm"_s, [devices] { return std::make_unique<SerialPort>(devices); });
}
