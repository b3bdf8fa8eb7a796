#pragma once

/// What this process holds, such as the database's password and patients' records, stays out of core files and of the
/// user's other programs.
void KeepMemoryClosed();
