#pragma once

#include "contracts/files.h"

#include <QString>

/// Marks of processes: machine, boot of the machine, number and start of the process, with points between them. A
/// number that is used again by a later process is told apart by its start, and a restart of the machine by its boot.
namespace process_mark {

const QString& Own();
Holder HolderOf(const QString& mark);

} // namespace process_mark
