#pragma once

#include <functional>

class QObject;

/// The one line for what comes later: behind the handlers that run, a wait of one of them, or a fill of the screen. On
/// the user-interface thread alone.
namespace later {

/// What is under way, and keeps work waiting.
enum Busy : unsigned {
    Handler = 1, ///< A guarded handler runs: what it may still be using must outlive it.
    Wait = 2,    ///< A handler waits; see `waiting`.
    Fill = 4,    ///< Grids are being filled.
    Placing = 8, ///< The visit's own pictures are being placed in their grid.
};
/// What messages and the last parts of commands stay behind.
inline constexpr unsigned Screen = Wait | Fill;

/// While one lives, each of these is under way.
class Hold
{
public:
    explicit Hold(unsigned what);
    ~Hold();
    Hold(const Hold&) = delete;
    Hold& operator=(const Hold&) = delete;

private:
    const unsigned m_what;
};
/// One of these is under way.
bool IsHeld(unsigned what);

using Work = std::function<void()>;
/// Does the work once nothing of `behind` is under way: before this returns, when that is so now. It is guarded, comes
/// behind what waits for the same, and before what waits for more; it is dropped with its subject, that which it is
/// for.
void Do(const QObject* subject, unsigned behind, Work work);
/// The same, but never before this returns.
void Post(const QObject* subject, unsigned behind, Work work);
/// What the subject has in the line behind exactly these is dropped.
void Drop(const QObject* subject, unsigned behind);
/// The same comes to its end now, in its order, whatever is under way.
void Finish(const QObject* subject, unsigned behind);

} // namespace later
