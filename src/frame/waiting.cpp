#include "frame/waiting.h"

#include "frame/components.h"
#include "frame/later.h"
#include "frame/services.h"

#include <QScopeGuard>
#include <QTimer>

#include <algorithm>
#include <optional>
#include <vector>

namespace {

struct Wait
{
    const std::function<bool()>& done;
    waiting::Notice notice;
    std::optional<waiting::Outcome> end; ///< Why it ends before its time.
};

/// The waits of the handlers that run one inside the other. An inner one ends as soon as an outer one can go on: the
/// handler that came first isn't held up by what it let in.
std::vector<Wait*> waits;
std::function<void(const waiting::Notice&)> presenter;
int patienceNowMs = 0; ///< 0 for no limit.

/// One that was begun before the last is over.
bool IsOuterOver()
{
    return std::any_of(waits.begin(), waits.end() - 1,
                       [](const Wait* wait) { return wait->end.has_value() || wait->done(); });
}

void Present()
{
    if (presenter)
        presenter(waits.empty() ? waiting::Notice{} : waits.back()->notice);
}

} // namespace

waiting::Outcome waiting::Await(const QString& text, const std::function<bool()>& done)
{
    Wait wait{done, {}, {}};
    waits.push_back(&wait);
    const later::Hold hold(later::Wait);
    const MousePointer before = MousePointerNow();
    const auto over = qScopeGuard([&] {
        std::erase(waits, &wait);
        if (!wait.notice.text.isEmpty()) {
            SetMousePointer(before);
            Present();
        }
    });
    // What is to come later is forgotten with it.
    QObject awaited;
    QTimer::singleShot(ShownAfterMs, &awaited, [&] {
        wait.notice.text = text;
        SetMousePointer(PointerBusy);
        Present();
    });
    QTimer::singleShot(cancelledAfterMs, &awaited, [&] {
        wait.notice.mayCancel = true;
        Present();
    });
    if (patienceNowMs > 0)
        QTimer::singleShot(patienceNowMs, &awaited, [&] { wait.end = Outcome::Leaving; });

    const bool served =
        UseService<Desktop>().ServeUntil({.done = [&] { return done() || wait.end.has_value() || IsOuterOver(); },
                                          .leave = [&] { wait.end = Outcome::Leaving; }});
    if (done())
        return Outcome::Done;
    return served && wait.end ? *wait.end : Outcome::Leaving;
}

bool waiting::ServeFor(int patienceMs, const std::function<bool()>& done, WaitInput input)
{
    return UseService<Desktop>().ServeUntil({.done = done, .patienceMs = patienceMs, .input = input});
}

waiting::Patience::Patience(int patienceMs) : m_before(std::exchange(patienceNowMs, patienceMs)) {}

waiting::Patience::~Patience()
{
    patienceNowMs = m_before;
}

bool waiting::IsUnderWay()
{
    return !waits.empty();
}

void waiting::Cancel()
{
    if (!waits.empty())
        waits.back()->end = Outcome::Cancelled;
}

void waiting::setPresenter(std::function<void(const Notice&)> shown)
{
    presenter = std::move(shown);
}
