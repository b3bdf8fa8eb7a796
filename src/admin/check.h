#pragma once

class QTextStream;

/// `check`: what the station needs on this machine, one line each, right or wrong with what to do. Reads the setup
/// itself. Gives an `ExitCode`.
int CheckStation(QTextStream& out);
