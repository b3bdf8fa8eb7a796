#pragma once

#include "contracts/OutsideChecks.h"

/// The folder of the captures: whether it answers, what carries it, what the station needs of it, and its room. A file
/// is made there and deleted again.
CheckLines CheckRootFolder(const ClientSetupRecord& client);

/// Cameras, sound, serial port, printer and disc drive, as far as the user who runs this may use them.
CheckLines CheckDevices(const ClientSetupRecord& client);

/// Fonts, plugins, helper programs and the input method: what the station finds only while it runs.
CheckLines CheckParts(const ClientSetupRecord& client);

/// The program's own folders, which hold each picture and its record until they are safe: whether they can be written
/// and have room. A file is made there and deleted again.
CheckLines CheckProgramFolders();
