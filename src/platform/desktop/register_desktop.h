#pragma once

#include <QString>

/// Installs the desktop and the toolbar's pictures, and registers the status bar and the look of the forms.
/// `command` is the command string that started the program, as it stood.
void RegisterDesktop(const QString& command);
