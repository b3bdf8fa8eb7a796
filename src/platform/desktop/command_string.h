#pragma once

#include "contracts/desktop.h"

/// The program's argument, with what the environment says of its encoding.
CommandString CommandStringOf(const char* argument);
