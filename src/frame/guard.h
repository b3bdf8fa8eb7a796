#pragma once

#include "frame/later.h"

#include <QString>

#include <exception>
#include <functional>
#include <type_traits>
#include <utility>

namespace guard {
/// Answers the exception that is in flight: pointer back to normal, message to the operator.
void AnswerFault();
/// What a fault that was kept says to the operator.
QString TextOf(const std::exception_ptr& fault);
/// Throws a fault that was kept; none for null.
void Rethrow(const std::exception_ptr& fault);
/// True when the fault that was kept is of that class.
template <class Fault>
bool Is(const std::exception_ptr& fault)
{
    try {
        std::rethrow_exception(fault);
    } catch (const Fault&) {
        return true;
    } catch (...) {
        return false;
    }
}
/// Calls the handler with the arguments, or without them where it takes none.
template <class Handler, class... Arguments>
void Invoke(const Handler& handler, Arguments&&... arguments)
{
    if constexpr (std::is_invocable_v<const Handler&, Arguments...>)
        handler(std::forward<Arguments>(arguments)...);
    else
        handler();
}

} // namespace guard

/// The one way into the station's code from an event: a fault of the outside world ends the handler with a message,
/// and the program goes on. Gives true when the handler ran to its end.
template <class Handler>
bool Guarded(Handler&& handler)
{
    const later::Hold hold(later::Handler);
    try {
        std::forward<Handler>(handler)();
        return true;
    } catch (...) {
        guard::AnswerFault();
        return false;
    }
}

/// A slot that runs `handler` under `Guarded`, with the signal's arguments or, where it takes none, without them.
template <class Handler>
auto GuardedSlot(Handler handler)
{
    return [handler](auto&&... arguments) {
        Guarded([&] { guard::Invoke(handler, std::forward<decltype(arguments)>(arguments)...); });
    };
}
