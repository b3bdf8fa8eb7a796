#pragma once

#include <QStringList>

/// The statements of a script in order, without its comment lines (`--` at the beginning of a line). A statement ends
/// with a semicolon at the end of a line.
QStringList StatementsOfScript(const QString& script);
