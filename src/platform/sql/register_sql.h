#pragma once

/// Registers `prjTableKeeper.clsTableKeeper`.
void RegisterSql();
