#pragma once

#include <optional>

/// Which of the five holders of the editor stands for the present picture, and where undo and redo may go. The
/// pictures themselves are the caller's.
///
/// A stroke takes two snapshots: the picture before it goes to the holder that `Press` gives, the one after it to
/// `HolderIndex`. Above the fifth holder the chain turns to the first, and nothing before the turn can be undone.
class SnapshotChain
{
public:
    static constexpr int Holders = 5;

    /// Holder of the present picture, 1 to 5.
    int HolderIndex() const { return m_state.holderIndex; }
    /// `HolderIndex` as it was at the last press; redo goes one above it at most.
    int LastPressIndex() const { return m_state.lastPressIndex; }
    /// Whether the buttons can be pressed; that a step follows isn't said with it.
    bool UndoEnabled() const { return m_state.undoEnabled; }
    bool RedoEnabled() const { return m_redoEnabled; }

    /// A stroke begins. Gives the holder that takes the picture as it is before the stroke.
    int Press();
    /// The press led to no mark: undo and redo stand as before it.
    void TakeBackPress() { m_state = m_beforePress; }
    /// The holder to show, or none when there is no step.
    std::optional<int> Undo();
    std::optional<int> Redo();

private:
    struct State
    {
        int holderIndex = 1;
        int lastPressIndex = 1;
        bool undoEnabled = false;
    };

    State m_state;
    State m_beforePress;
    bool m_redoEnabled = false;
};
