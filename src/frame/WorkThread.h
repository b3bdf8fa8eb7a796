#pragma once

#include <functional>
#include <limits>
#include <memory>

/// A thread of an adapter's or a room's own that does pieces of work one after the other, in the order in which they
/// were handed over. Used by the thread that made it.
class WorkThread
{
public:
    WorkThread();
    /// Ends as `End` does.
    ~WorkThread();
    WorkThread(const WorkThread&) = delete;
    WorkThread& operator=(const WorkThread&) = delete;

    /// Behind all that was handed over before. What the work throws is noted in the journal, and goes no further.
    /// Dropped once the thread has been ended.
    void Post(std::function<void()> work);
    /// True on the thread itself.
    bool IsCurrent() const;
    /// All that was handed over has been done.
    bool IsIdle() const;
    /// Waits for that, no longer than the time. False when it has run out.
    bool AwaitIdle(int patienceMs = Forever) const;
    static constexpr int Forever = std::numeric_limits<int>::max();

    /// Drops what hasn't begun, does `last` behind the piece that runs, and waits for both. One that doesn't come to
    /// its end in that time, such as a call that the kernel holds, is left behind with its thread; false then.
    bool End(int patienceMs = 1000, std::function<void()> last = {});

private:
    struct State;
    static void Run(const std::shared_ptr<State>& state);

    std::shared_ptr<State> m_state;
};

/// Does the work on the user-interface thread, the next time that it serves events. From any thread.
void PostToScreen(std::function<void()> work);
