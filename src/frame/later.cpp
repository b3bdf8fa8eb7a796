#include "frame/later.h"

#include "frame/guard.h"
#include "frame/WorkThread.h"

#include <QPointer>

#include <algorithm>
#include <array>
#include <bit>
#include <list>

namespace {

struct Entry
{
    QPointer<const QObject> subject;
    unsigned behind = 0;
    later::Work work;
};

std::list<Entry> line;
constexpr std::array Kinds{later::Handler, later::Wait, later::Fill, later::Placing};
std::array<int, Kinds.size()> held{};

int& HeldOf(unsigned kind)
{
    return held[static_cast<size_t>(std::countr_zero(kind))];
}

void Run(std::list<Entry>::iterator entry)
{
    const Entry taken = std::move(*entry);
    line.erase(entry);
    if (taken.subject != nullptr)
        Guarded(taken.work);
}

/// The first of those that wait for the least, of all that can go.
std::list<Entry>::iterator Next()
{
    auto next = line.end();
    for (auto entry = line.begin(); entry != line.end(); ++entry) {
        const bool isFirst = next == line.end() || std::popcount(entry->behind) < std::popcount(next->behind);
        if (isFirst && !later::IsHeld(entry->behind))
            next = entry;
    }
    return next;
}

/// A message of one piece of work serves events, and the next may be worked off from there.
void WorkOff()
{
    for (auto next = Next(); next != line.end(); next = Next())
        Run(next);
}

} // namespace

later::Hold::Hold(unsigned what) : m_what(what)
{
    for (const Busy kind : Kinds)
        HeldOf(kind) += (what & kind) != 0 ? 1 : 0;
}

later::Hold::~Hold()
{
    for (const Busy kind : Kinds)
        HeldOf(kind) -= (m_what & kind) != 0 ? 1 : 0;
    const unsigned what = m_what;
    if (std::ranges::any_of(line, [what](const Entry& entry) { return (entry.behind & what) != 0; }))
        PostToScreen(WorkOff);
}

bool later::IsHeld(unsigned what)
{
    return std::ranges::any_of(Kinds, [what](Busy kind) { return (what & kind) != 0 && HeldOf(kind) > 0; });
}

void later::Do(const QObject* subject, unsigned behind, Work work)
{
    line.push_back({subject, behind, std::move(work)});
    if (!IsHeld(behind))
        WorkOff();
}

void later::Post(const QObject* subject, unsigned behind, Work work)
{
    line.push_back({subject, behind, std::move(work)});
    PostToScreen(WorkOff);
}

void later::Drop(const QObject* subject, unsigned behind)
{
    line.remove_if([&](const Entry& entry) { return entry.subject == subject && entry.behind == behind; });
}

void later::Finish(const QObject* subject, unsigned behind)
{
    const auto isMeant = [&](const Entry& entry) { return entry.subject == subject && entry.behind == behind; };
    for (auto entry = std::ranges::find_if(line, isMeant); entry != line.end();
         entry = std::ranges::find_if(line, isMeant))
        Run(entry);
}
