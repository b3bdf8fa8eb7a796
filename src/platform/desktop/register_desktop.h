#pragma once

struct CommandString;

/// Installs the desktop and the toolbar's pictures, and registers the status bar and the look of the forms.
void RegisterDesktop(const CommandString& command);
/// Installs `RoomAwake`. Without it the room may fall asleep.
void RegisterRoomAwake();
