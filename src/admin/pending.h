#pragma once

class QTextStream;

/// What waits on this machine: pictures whose rows aren't in, or that aren't in the capture root either. Both give an
/// `ExitCode`; `Found` as long as something waits.

/// Shows it, with whose it is.
int ListPending(QTextStream& out);
/// Files and writes what dead stations of this user have left, as the station's next start would. What belongs to one
/// that lives stays its own.
int WritePending(QTextStream& out);
