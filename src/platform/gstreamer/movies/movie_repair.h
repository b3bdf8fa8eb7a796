#pragma once

#include <QString>

/// Completes the movies that a crash of this machine's station left unfinished in the folder. Those of other machines
/// and of processes that live stay as they are.
void RepairMovies(const QString& folder);
