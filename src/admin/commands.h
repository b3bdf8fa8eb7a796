#pragma once

#include <QStringList>

#include <functional>

class QTextStream;

/// What the program's main file knows and the commands need.
struct AdminSurroundings
{
    QString version;
    bool showsProgress = false; ///< Somebody looks at standard error.
    /// Program folders of other users that can be looked into.
    std::function<QStringList()> foldersOfOthers;
};
extern AdminSurroundings Surroundings;

/// Runs the command that the arguments name, the program's own name not among them. What it finds goes to `out`, how
/// the program is used, faults and progress to standard error. Gives an `ExitCode`.
int RunCommand(const QStringList& arguments, QTextStream& out);
