#pragma once

/// Registers `prjStartProfile.clsStartProfile`. It uses the desktop and the file service.
void RegisterSetup();
