#pragma once

#include "contracts/OutsideChecks.h"

/// Fonts, plugins, helper programs and the input method: what the station finds only while it runs.
CheckLines CheckParts();
