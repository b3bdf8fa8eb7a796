#pragma once

#include "contracts/SenderProcess.h"

/// The sender of the package, or of the build folder that this program is in: as a unit of the user's service manager,
/// which lets it live on when the user logs out, where one answers; else as a program of its own.
class SenderStart : public SenderProcess
{
public:
    void Start(bool isAgain) override;
};

/// Installs the service.
void RegisterSender();
