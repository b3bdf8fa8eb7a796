#pragma once

class QTextStream;

/// Takes over what dead stations of other users have left on this machine, as far as this user may: their pictures,
/// movies and journals come into this user's folder, and go on from there as his own. Gives an `ExitCode` as
/// `WritePending` does.
int TakeOverPending(QTextStream& out);
