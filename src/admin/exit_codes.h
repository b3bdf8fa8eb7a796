#pragma once

/// How the administrator's program ends.
enum ExitCode : int {
    AllWell = 0,
    Found = 1,       ///< Something is wrong, or was refused.
    UsedWrongly = 2, ///< The command line can't be understood.
    CantWork = 3,    ///< Setup, database or capture root aren't there, or have given out.
};
