#pragma once

#include "contracts/desktop.h"

#include <QString>

#include <functional>

/// Waits of a handler for what goes on elsewhere: a statement at the server. The screen goes on being painted, timers,
/// the live picture, the foot switch and the shutter are served; what else the operator does is held back until the
/// wait is over.
namespace waiting {

enum class Outcome {
    Done,
    Cancelled, ///< The operator has given it up.
    Leaving,   ///< He closes the screen, the program ends, or a handler up the stack can go on: nothing needs to be
               ///< said, and what comes later is dropped.
};

/// A wait as the operator is to see it.
struct Notice
{
    QString text;           ///< Empty when no wait is to be shown any more.
    bool mayCancel = false; ///< It has gone on for so long that it may be given up.
};

/// The pointer becomes busy, and the wait is shown, after so long.
inline constexpr int ShownAfterMs = 500;
/// It can be given up after so long; set by tests alone.
inline int cancelledAfterMs = 3000;

/// Waits until `done` holds, which is asked after each event. `text` tells the operator what is awaited.
Outcome Await(const QString& text, const std::function<bool()>& done);
/// Serves events until `done` holds, no longer than that; neither shown nor given up. True when it holds.
bool ServeFor(int patienceMs, const std::function<bool()>& done, WaitInput input = WaitInput::Held);
/// A handler up the stack waits.
bool IsUnderWay();
/// The operator gives up the wait that was begun last.
void Cancel();

/// While one lives, a wait that lasts longer ends as `Leaving`: the screen closes.
class Patience
{
public:
    explicit Patience(int patienceMs);
    ~Patience();
    Patience(const Patience&) = delete;
    Patience& operator=(const Patience&) = delete;

private:
    int m_before;
};

/// Who shows the waits. With none they go unseen.
void setPresenter(std::function<void(const Notice&)> presenter);

} // namespace waiting
