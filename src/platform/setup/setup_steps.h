#pragma once

#include "platform/setup/register_setup.h"
#include "platform/setup/SetupFile.h"

#include <QByteArray>
#include <QStringList>

/// The steps from a setup file to an open connection, for the start and for whoever looks at each by itself.
namespace setup_steps {

/// Where the setup is looked for, in order.
QStringList Candidates(const QString& programFolder);
/// The first that is there, absolute; empty when none is.
QString FindSetupFile(const QStringList& candidates);
/// Content of the setup file, or of the one with the password. Throws PlatformError, also for one of more than 1 MB and
/// for what is no regular file: a pipe would be waited for, and a device has no end.
QByteArray ReadSmallFile(const QString& path);
/// Reads the password from its own file, if the setup names one. Throws PlatformError.
void ReadPassword(SetupFile& file);
/// The file that holds the password; empty without one.
QString PasswordHolder(const SetupFile& file, const QString& setupPath);
/// Throws PlatformError when the capture root isn't there, or not mounted where the setup asks for that; FilesAway when
/// its share doesn't answer.
void CheckCaptureRoot(const SetupFile& file, MissingRoot missingRoot);

} // namespace setup_steps
