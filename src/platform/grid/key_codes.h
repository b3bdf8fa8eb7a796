#pragma once

#include <Qt>

/// The platform's virtual key code of a key, 0 for one that has none.
int PlatformKeyCode(int key);
/// The platform's shift state: 1 Shift, 2 Ctrl, 4 Alt, added up.
int PlatformShiftState(Qt::KeyboardModifiers modifiers);
