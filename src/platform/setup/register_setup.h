#pragma once

#include <QString>

/// Registers `prjStartProfile.clsStartProfile`. It uses the desktop and the file service.
void RegisterSetup();

/// The scale of the screen that the setup names, empty when it names none or can't be read: the start tells of that.
/// Needs the file service and no application.
QString ScreenScaleOfSetup(const QString& programFolder);
