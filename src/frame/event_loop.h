#pragma once

#include <functional>

/// Loops that serve events, for the desktops. Each asks `done` after every event and gives true once it holds, false
/// when `hasEnded` does before that.
namespace event_loop {

using Question = std::function<bool()>;

bool ServeUntil(const Question& done, const Question& hasEnded);
/// False also after that time.
bool ServeUntil(const Question& done, const Question& hasEnded, int timeoutMs);

} // namespace event_loop
