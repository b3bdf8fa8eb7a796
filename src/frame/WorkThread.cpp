#include "frame/WorkThread.h"

#include "frame/guard.h"
#include "frame/journal.h"

#include <QCoreApplication>

#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>

namespace {
struct PostedWork
{
    std::mutex mutex;
    std::deque<std::function<void()>> line;
};

/// Never destroyed: a thread that was left behind may still post while the process ends.
PostedWork& Posted()
{
    static auto& posted = *new PostedWork;
    return posted;
}

void DoPosted()
{
    std::function<void()> work;
    {
        const std::lock_guard lock(Posted().mutex);
        work = std::move(Posted().line.front());
        Posted().line.pop_front();
    }
    work();
}

/// A fault that nobody has caught must not end the program.
void Do(const std::function<void()>& work)
{
    try {
        work();
    } catch (...) {
        journal::NoteFault(guard::TextOf(std::current_exception()));
    }
}
} // namespace

/// Outlives the object when its thread had to be left behind.
struct WorkThread::State
{
    mutable std::mutex mutex;
    std::condition_variable changed;
    std::deque<std::function<void()>> line;
    std::function<void()> last;
    bool isBusy = false;
    bool ends = false;
    bool hasEnded = false;
    std::thread thread;
    std::thread::id id;

    bool IsIdle() const { return line.empty() && !isBusy; }
};

WorkThread::WorkThread() : m_state(std::make_shared<State>())
{
    const std::lock_guard lock(m_state->mutex);
    m_state->thread = std::thread([state = m_state] { Run(state); });
    m_state->id = m_state->thread.get_id();
}

WorkThread::~WorkThread()
{
    End();
}

void WorkThread::Run(const std::shared_ptr<State>& state)
{
    std::unique_lock lock(state->mutex);
    while (true) {
        state->changed.wait(lock, [&] { return state->ends || !state->line.empty(); });
        if (state->ends)
            break;
        std::function<void()> work = std::move(state->line.front());
        state->line.pop_front();
        state->isBusy = true;
        lock.unlock();
        Do(work);
        work = nullptr;
        lock.lock();
        state->isBusy = false;
        state->changed.notify_all();
    }
    if (state->last) {
        lock.unlock();
        Do(state->last);
        lock.lock();
    }
    state->hasEnded = true;
    state->changed.notify_all();
}

void WorkThread::Post(std::function<void()> work)
{
    const std::lock_guard lock(m_state->mutex);
    if (m_state->ends)
        return;
    m_state->line.push_back(std::move(work));
    m_state->changed.notify_all();
}

bool WorkThread::IsCurrent() const
{
    const std::lock_guard lock(m_state->mutex);
    return std::this_thread::get_id() == m_state->id;
}

bool WorkThread::IsIdle() const
{
    const std::lock_guard lock(m_state->mutex);
    return m_state->IsIdle();
}

bool WorkThread::AwaitIdle(int patienceMs) const
{
    std::unique_lock lock(m_state->mutex);
    return m_state->changed.wait_for(lock, std::chrono::milliseconds(patienceMs), [this] { return m_state->IsIdle(); });
}

bool WorkThread::End(int patienceMs, std::function<void()> last)
{
    std::deque<std::function<void()>> dropped;
    std::unique_lock lock(m_state->mutex);
    if (!m_state->thread.joinable())
        return m_state->hasEnded;
    m_state->ends = true;
    m_state->last = std::move(last);
    dropped.swap(m_state->line);
    m_state->changed.notify_all();
    const bool ended =
        m_state->changed.wait_for(lock, std::chrono::milliseconds(patienceMs), [this] { return m_state->hasEnded; });
    std::thread thread = std::move(m_state->thread);
    lock.unlock();
    if (ended)
        thread.join();
    else
        thread.detach();
    return ended;
}

void PostToScreen(std::function<void()> work)
{
    const std::lock_guard lock(Posted().mutex);
    Posted().line.push_back(std::move(work));
    QMetaObject::invokeMethod(qApp, &DoPosted, Qt::QueuedConnection);
}
