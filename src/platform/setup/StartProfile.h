#pragma once

#include "contracts/setup_components.h"
#include "platform/setup/register_setup.h"
#include "platform/setup/SetupFile.h"

/// The clinic's setup from the file `Setup.ini`: the one that the environment variable CAPTURE_STATION_SETUP names,
/// else the one in the program's own folder, else the one in /etc/capture-station. All that is wrong with it is told in
/// one message.
class StartProfile : public clsStartProfile
{
public:
    explicit StartProfile(MissingRoot missingRoot) : m_missingRoot(missingRoot) {}

    bool SetupRead(ClientSetupRecord& setup, SaupRecords& places, bool openConnection,
                   ConnectionPointer& connection) override;

private:
    const MissingRoot m_missingRoot;
};
