#pragma once

#include "contracts/files.h"

#include <QString>
#include <QStringList>

#include <functional>

/// Marks of processes: machine, boot of the machine, number and start of the process, with points between them. A
/// number that is used again by a later process is told apart by its start, and a restart of the machine by its boot.
namespace process_mark {

const QString& Own();
/// A process of another boot is dead when that boot is one of the record's.
Holder HolderOf(const QString& mark);
bool IsOfThisMachine(const QString& mark);
/// The machine's own record of its boots, a folder with an empty file for each: this one's is added. A folder that is
/// made now holds also those of the marks that `known` gives.
void KeepBoots(const QString& folder, const std::function<QStringList()>& known);

} // namespace process_mark
