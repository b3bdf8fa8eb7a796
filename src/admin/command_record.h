#pragma once

#include <QString>

/// Tells in the record of access what a command of this program has done, or is about to do, in the command's own
/// words: "retire-log 2023: 1234".
void RecordCommand(const QString& detail);
