#include "platform/machine/register_machine.h"

#include "contracts/OutsideChecks.h"
#include "frame/components.h"
#include "platform/machine/machine_checks.h"
#include "platform/machine/RootSetup.h"
#include "platform/setup/setup_checks.h"

namespace {

class MachineChecks final : public OutsideChecks
{
public:
    Setup LookAtSetup() override { return CheckSetup(); }
    ConnectionPointer OpenForUpkeep(const QString& user, const QString& password, const QString& passwordFile) override
    {
        return ::OpenForUpkeep(user, password, passwordFile);
    }
    CheckLines LookAtCaptureRoot(const ClientSetupRecord& client) override { return CheckRootFolder(client); }
    CheckLines LookAtMachine(const ClientSetupRecord& client) override
    {
        return CheckProgramFolders() + CheckDevices(client) + CheckParts(client);
    }
};

} // namespace

void RegisterMachine()
{
    InstallService<OutsideChecks>(std::make_unique<MachineChecks>());
    InstallService<MachineSetup>(std::make_unique<RootSetup>());
}
