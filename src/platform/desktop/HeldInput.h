#pragma once

#include <QObject>

#include <functional>
#include <memory>
#include <vector>

class QWindow;

/// While one lives, what the operator does with mouse, keyboard and wheel is held back; it is done, in its order, once
/// the object has gone and events are served. A control that is marked `ServedWhileWaiting` is served all the same.
class HeldInput final : public QObject
{
public:
    /// While `isOpen` holds nothing is held back. `leave` is called when a window is to be closed, or a control marked
    /// `LeavesWait` is pressed.
    HeldInput(std::function<bool()> isOpen, std::function<void()> leave);
    ~HeldInput() override;

    bool eventFilter(QObject* receiver, QEvent* event) override;

private:
    bool Holds(QWindow& window, QEvent& event);
    bool HoldsMouse(const QWindow& window, const QEvent& event);

    std::function<bool()> m_isOpen;
    std::function<void()> m_leave;
    bool m_pressWasServed = false; ///< The button that is down went to a control that is served.
    std::vector<std::function<void()>> m_held;
};
