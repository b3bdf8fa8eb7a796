#pragma once

#include "contracts/OutsideChecks.h"

#include <QString>
#include <QStringList>

/// Value of an option such as `--user=`; empty without it.
QString OptionValue(const QStringList& options, const QString& name);

/// A connection for work that may take long: on a server by the account that the option of the name `userOption` names,
/// with the password from `--password-file=` or the terminal; else by the setup's own. A file is the station's own.
/// Throws PlatformError.
ConnectionPointer OpenForUpkeep(const OutsideChecks::Setup& setup, const QStringList& options,
                                const QString& userOption);
