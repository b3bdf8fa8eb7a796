#include "frame/file_calls.h"

#include "contracts/PlatformError.h"
#include "frame/components.h"
#include "frame/guard.h"
#include "frame/services.h"
#include "frame/waiting.h"
#include "frame/WorkThread.h"

#include <QCoreApplication>
#include <QThread>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <vector>

using namespace Qt::StringLiterals;

namespace {

/// Most calls end within that time: for them nothing is worth while, least of all an event loop.
constexpr auto QuietWait = std::chrono::milliseconds(20);
/// A share that has been given up is hardly there again for the next call.
constexpr int HeldPatienceMs = 1000;
/// Each call that is held costs a thread.
constexpr int MostHeld = 32;

std::atomic<int> held = 0;

struct Call
{
    std::mutex mutex;
    std::condition_variable changed;
    bool isDone = false;
    bool isAwaited = false; ///< In the event loop.
    bool isGivenUp = false;
    std::exception_ptr fault;

    void End(std::exception_ptr ended)
    {
        const std::lock_guard lock(mutex);
        isDone = true;
        fault = std::move(ended);
        if (isGivenUp)
            --held;
        changed.notify_all();
        if (isAwaited)
            PostToScreen([] {});
    }

    /// Its end is to be heard in the event loop.
    void Announce()
    {
        const std::lock_guard lock(mutex);
        isAwaited = true;
    }

    bool IsDone()
    {
        const std::lock_guard lock(mutex);
        return isDone;
    }

    /// False when it has ended meanwhile.
    bool GiveUp()
    {
        const std::lock_guard lock(mutex);
        isGivenUp = !isDone;
        if (isGivenUp)
            ++held;
        return isGivenUp;
    }
};

/// Threads that have nothing to do. They stay until the process ends.
std::vector<std::unique_ptr<WorkThread>>& Idle()
{
    static auto& idle = *new std::vector<std::unique_ptr<WorkThread>>;
    return idle;
}

std::unique_ptr<WorkThread> TakeThread()
{
    if (Idle().empty())
        return std::make_unique<WorkThread>();
    std::unique_ptr<WorkThread> thread = std::move(Idle().back());
    Idle().pop_back();
    return thread;
}

/// Throws FilesAway.
[[noreturn]] void TellGivenUp(waiting::Outcome outcome, bool wasHeld)
{
    if (outcome == waiting::Outcome::Cancelled)
        throw FilesAway(u"저장 폴더가 응답하지 않아 작업을 취소하였습니다.!!"_s);
    // Nothing needs to be said to one who leaves.
    throw FilesAway(wasHeld ? u"저장 폴더가 응답하지 않습니다.!!"_s : QString());
}

waiting::Outcome AwaitLong(const std::function<bool()>& done)
{
    std::unique_ptr<const waiting::Patience> patience;
    if (filecalls::AnyHeld())
        patience = std::make_unique<const waiting::Patience>(HeldPatienceMs);
    return waiting::Await(u"저장 폴더의 응답을 기다리고 있습니다."_s, done);
}

} // namespace

bool filecalls::AnyHeld()
{
    return held > 0;
}

struct filecalls::Begun::State
{
    std::shared_ptr<Call> call = std::make_shared<Call>();
    std::unique_ptr<WorkThread> thread; ///< None for a call that ran in place.
};

filecalls::Begun::Begun(std::function<void()> work) : m_state(std::make_unique<State>())
{
    auto run = [call = m_state->call, work = std::move(work)]() mutable {
        std::exception_ptr fault;
        try {
            work();
        } catch (...) {
            fault = std::current_exception();
        }
        work = nullptr;
        call->End(std::move(fault));
    };
    // Without a desktop there is nobody who could wait.
    if (ServiceSlot<Desktop>() == nullptr || QCoreApplication::instance() == nullptr ||
        QThread::currentThread() != QCoreApplication::instance()->thread()) {
        run();
        return;
    }
    if (held >= MostHeld) {
        m_state->call->End(std::make_exception_ptr(FilesAway(u"저장 폴더가 응답하지 않습니다.!!"_s)));
        return;
    }
    m_state->thread = TakeThread();
    m_state->thread->Post(std::move(run));
}

filecalls::Begun::~Begun()
{
    if (m_state->thread == nullptr)
        return;
    if (m_state->call->GiveUp())
        m_state->thread->End(0);
    else
        Idle().push_back(std::move(m_state->thread));
}

void filecalls::Begun::Await()
{
    const std::shared_ptr<Call> call = m_state->call;
    bool isDone = false;
    {
        std::unique_lock lock(call->mutex);
        isDone = call->changed.wait_for(lock, QuietWait, [&] { return call->isDone; });
    }
    if (!isDone) {
        call->Announce();
        const bool wasHeld = AnyHeld();
        const waiting::Outcome outcome = AwaitLong([&call] { return call->IsDone(); });
        if (outcome != waiting::Outcome::Done && call->GiveUp()) {
            m_state->thread->End(0);
            m_state->thread.reset();
            TellGivenUp(outcome, wasHeld);
        }
    }
    guard::Rethrow(call->fault);
}

void filecalls::Await(std::function<void()> work)
{
    Begun(std::move(work)).Await();
}

void filecalls::AwaitUntil(const std::function<bool()>& done)
{
    const bool wasHeld = AnyHeld();
    const waiting::Outcome outcome = AwaitLong(done);
    if (outcome != waiting::Outcome::Done)
        TellGivenUp(outcome, wasHeld);
}
