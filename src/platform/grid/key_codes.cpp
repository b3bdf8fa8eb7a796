#include "platform/grid/key_codes.h"

#include <algorithm>
#include <array>
#include <utility>

int PlatformKeyCode(int key)
{
    if ((key >= Qt::Key_0 && key <= Qt::Key_9) || (key >= Qt::Key_A && key <= Qt::Key_Z))
        return key;
    if (key >= Qt::Key_F1 && key <= Qt::Key_F24)
        return 112 + key - Qt::Key_F1;

    static constexpr std::array<std::pair<int, int>, 18> Codes{{
        {Qt::Key_Backspace, 8},
        {Qt::Key_Tab, 9},
        {Qt::Key_Return, 13},
        {Qt::Key_Enter, 13},
        {Qt::Key_Shift, 16},
        {Qt::Key_Control, 17},
        {Qt::Key_Alt, 18},
        {Qt::Key_Escape, 27},
        {Qt::Key_Space, 32},
        {Qt::Key_PageUp, 33},
        {Qt::Key_PageDown, 34},
        {Qt::Key_End, 35},
        {Qt::Key_Home, 36},
        {Qt::Key_Left, 37},
        {Qt::Key_Up, 38},
        {Qt::Key_Right, 39},
        {Qt::Key_Down, 40},
        {Qt::Key_Delete, 46},
    }};
    const auto* found = std::ranges::find(Codes, key, &std::pair<int, int>::first);
    return found == Codes.end() ? 0 : found->second;
}

int PlatformShiftState(Qt::KeyboardModifiers modifiers)
{
    return (modifiers & Qt::ShiftModifier ? 1 : 0) + (modifiers & Qt::ControlModifier ? 2 : 0) +
           (modifiers & Qt::AltModifier ? 4 : 0);
}
