#pragma once

#include <QString>

/// Path of a helper program of the station's own, which it starts: in `libexec` of the build folder that this program
/// is in, or of the prefix that both were installed to. Empty when it isn't there.
QString OwnProgram(const QString& name);
