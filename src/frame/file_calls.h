#pragma once

#include <functional>
#include <memory>
#include <type_traits>
#include <utility>

/// Calls on files, which a share that hangs may hold for minutes: never on the user-interface thread.
namespace filecalls {

/// Runs the call on a thread of its own and waits for it as `waiting::Await` does; on any other thread than the
/// screen's it runs in place. Throws what the call throws, and FilesAway when the operator gives it up. While an
/// earlier call is still held, a further one is given up by itself after a second.
///
/// A call that was given up goes on behind his back: it may refer to nothing that its caller owns.
void Await(std::function<void()> call);

/// A call that is begun now and waited for later, so that what its caller does meanwhile takes no time of its own. One
/// that nobody has waited for is given up at the end of this.
class Begun
{
public:
    explicit Begun(std::function<void()> call);
    ~Begun();
    Begun(const Begun&) = delete;
    Begun& operator=(const Begun&) = delete;

    /// Once. Throws what the function of that name throws.
    void Await();

private:
    struct State;
    const std::unique_ptr<State> m_state;
};

/// A call that was given up is still held.
bool AnyHeld();

/// Waits in the same way for what a call that was made elsewhere brings. Throws FilesAway.
void AwaitUntil(const std::function<bool()>& done);

/// One that is begun and has a result.
template <class Result>
class BegunAsk
{
public:
    explicit BegunAsk(std::function<Result()> call)
        : m_call([result = m_result, call = std::move(call)] { *result = std::make_unique<Result>(call()); })
    {
    }

    Result Take()
    {
        m_call.Await();
        return std::move(**m_result);
    }

private:
    const std::shared_ptr<std::unique_ptr<Result>> m_result = std::make_shared<std::unique_ptr<Result>>();
    Begun m_call;
};

/// `Await` for a call with a result.
template <class Call>
std::invoke_result_t<Call> Ask(Call call)
{
    using Result = std::invoke_result_t<Call>;
    if constexpr (std::is_void_v<Result>)
        Await(std::move(call));
    else
        return BegunAsk<Result>(std::move(call)).Take();
}

} // namespace filecalls
