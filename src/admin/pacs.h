#pragma once

class QTextStream;

/// Pictures of this machine that wait for the clinic's server, or that it has refused. Each gives an `ExitCode`;
/// `Found` as long as there are any.

/// Shows them, with whose they are and why.
int ListPacs(QTextStream& out);
/// Sends what dead stations of this user have left, also what was refused. What belongs to one that lives stays its
/// own.
int RetryPacs(QTextStream& out);
/// Forgets what was refused, in the lists of dead stations. The pictures themselves stay as they are.
int DropPacs(QTextStream& out);
