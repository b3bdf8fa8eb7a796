#pragma once

/// Installs the desktop of a program without a screen, and tells on standard error of waits that last.
void RegisterTerminal();

/// True when somebody may be looking at what goes to standard error.
bool IsErrorTerminal();
