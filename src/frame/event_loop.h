#pragma once

#include <functional>

/// The loop that serves events for the desktops.
namespace event_loop {

using Question = std::function<bool()>;

/// Asks `done` after every event and gives true once it holds, false when `hasEnded` does before that, or after that
/// time; 0 for no limit.
bool ServeUntil(const Question& done, const Question& hasEnded, int patienceMs = 0);

} // namespace event_loop
