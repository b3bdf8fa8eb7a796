#pragma once

#include <QString>

/// What is done about a capture root that isn't there.
enum class MissingRoot {
    IsMade,
    IsTold, ///< As what keeps the program from starting; so is a share that doesn't answer.
};

/// Registers `prjStartProfile.clsStartProfile`. It uses the desktop and the file service.
void RegisterSetup(MissingRoot missingRoot = MissingRoot::IsMade);

/// The scale of the screen that the setup names, empty when it names none or can't be read: the start tells of that.
/// Needs the file service and no application.
QString ScreenScaleOfSetup(const QString& programFolder);
