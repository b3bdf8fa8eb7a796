#include "capture/FillLine.h"

#include "frame/guard.h"
#include "frame/waiting.h"

#include <QPointer>

namespace {
/// A message of one piece of work serves events, and the next may be worked off from there.
void Drain(std::deque<FillLine::Work>& line, const std::function<bool()>& goesOn)
{
    while (goesOn() && !line.empty()) {
        const FillLine::Work work = line.front();
        line.pop_front();
        Guarded(work);
    }
}
} // namespace

void FillLine::Show(const Work& change)
{
    m_changes.push_back(change);
    Drain(m_changes, [this] { return !PicturesAreHeld(); });
}

void FillLine::Command(const Work& command)
{
    if (!IsHeld() && !waiting::IsUnderWay()) {
        command();
        return;
    }
    m_commands.push_back(command);
    if (!IsHeld())
        WorkOffWhenOver();
}

void FillLine::Release()
{
    if (--m_holds == 0 && !(m_changes.empty() && m_commands.empty()))
        QMetaObject::invokeMethod(this, &FillLine::WorkOff, Qt::QueuedConnection);
}

void FillLine::WorkOff()
{
    Drain(m_changes, [this] { return !PicturesAreHeld(); });
    if (waiting::IsUnderWay())
        WorkOffWhenOver();
    else
        Drain(m_commands, [this] { return !IsHeld(); });
}

void FillLine::WorkOffWhenOver()
{
    waiting::WhenOver([self = QPointer(this)] {
        if (self)
            self->WorkOff();
    });
}

void FillLine::Finish()
{
    m_changes.clear();
    Drain(m_commands, [] { return true; });
}
