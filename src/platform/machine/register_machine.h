#pragma once

/// Installs the checks of the outside.
void RegisterMachine();
