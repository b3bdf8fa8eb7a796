#include "editor/SnapshotChain.h"

int SnapshotChain::Press()
{
    m_beforePress = m_state;
    const int before = m_state.holderIndex;
    m_state.lastPressIndex = before;
    m_state.holderIndex = before < Holders ? before + 1 : 1;
    if (m_state.holderIndex > 1)
        m_state.undoEnabled = true;
    return before;
}

std::optional<int> SnapshotChain::Undo()
{
    if (m_state.holderIndex < 2) {
        m_state.undoEnabled = false;
        return std::nullopt;
    }
    m_redoEnabled = true;
    --m_state.holderIndex;
    if (m_state.holderIndex < 2)
        m_state.undoEnabled = false;
    return m_state.holderIndex;
}

std::optional<int> SnapshotChain::Redo()
{
    if (m_state.holderIndex >= Holders) {
        m_redoEnabled = false;
        return std::nullopt;
    }
    m_state.undoEnabled = true;
    if (m_state.holderIndex > m_state.lastPressIndex)
        return std::nullopt;
    ++m_state.holderIndex;
    if (m_state.holderIndex > Holders - 1)
        m_redoEnabled = false;
    return m_state.holderIndex;
}
