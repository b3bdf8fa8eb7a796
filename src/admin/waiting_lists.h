#pragma once

#include "contracts/files.h"

#include <QJsonObject>
#include <QString>

#include <functional>

/// What the commands on lists that wait have in common.

/// Whose a list is, for the one who reads of it.
QString HolderText(Holder holder, const QString& foreignOwner);
/// The same as facts: `holder`, and `owner` where it is another user's.
QJsonObject HolderFacts(Holder holder, const QString& foreignOwner);
/// Shows this user's folder, then those of others as far as this user may look into them; gives the sum of the lines.
int ShowFolders(const std::function<int(const QString& folder)>& show);
/// Serves events until nothing is left, or nothing has come on for so long.
void AwaitNothingLeft(const std::function<int()>& left, int patienceMs);
