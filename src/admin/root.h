#pragma once

class QTextStream;

/// The capture root's identity: in its mark, and as the database remembers it. Both give an `ExitCode`; `Found` where
/// they differ or one is missing.

int ShowRoot(QTextStream& out);
/// The database remembers the present root, in a table that is made for it: every station refuses another from then on.
int StoreRoot(QTextStream& out);
