#include "capture/FootSwitch.h"

#include "contracts/desktop.h"
#include "contracts/MSComm.h"
#include "contracts/PlatformError.h"
#include "frame/components.h"
#include "frame/guard.h"
#include "text/text_routines.h"
#include "visit/VisitContext.h"

#include <QElapsedTimer>
#include <QScopeGuard>

#include <exception>
#include <limits>

using namespace Qt::StringLiterals;

namespace {
/// The pause after a still, in milliseconds. The switch bounces, and a foot is slow to leave it.
constexpr int PauseMs = 100;

template <class Step>
void IgnoringFaults(Step step)
{
    try {
        step();
    } catch (const PlatformError&) {
        // The switch stays dead, the screen works.
    }
}

int SetupPort()
{
    const QString text = Trim(ClientSetup.CommPort);
    if (text.isEmpty())
        return 1;
    if (!IsNumericText(text) || WholeNumber(text) > std::numeric_limits<qint16>::max())
        throw PlatformError(u"직렬 포트 번호가 잘못되었습니다.!! (%1)"_s.arg(text));
    return WholeNumber(text);
}
} // namespace

FootSwitch::FootSwitch(MSComm& port, std::function<void()> press) : m_port(port), m_press(std::move(press))
{
    connect(&m_port, &MSComm::OnComm, this, GuardedSlot([this] { OnComm(); }));
}

void FootSwitch::OpenFootSwitchPort()
{
    IgnoringFaults([this] { m_port.setCommPort(SetupPort()); });
    if (m_isClosed || m_port.PortOpen())
        return;
    IgnoringFaults([this] { m_port.setSettings(u"9600,N,8,1"_s); });
    IgnoringFaults([this] { m_port.setInputLen(0); });
    IgnoringFaults([this] { m_port.setPortOpen(true); });
    IgnoringFaults([this] { m_port.setInputMode(0); });
}

void FootSwitch::Close()
{
    m_isClosed = true;
    if (m_port.PortOpen())
        m_port.setPortOpen(false);
}

void FootSwitch::OnComm()
{
    // The pause serves events too.
    if (m_isBusy || m_isClosed || m_port.InBufferCount() <= 0)
        return;
    std::exception_ptr fault;
    {
        m_isBusy = true;
        const auto idle = qScopeGuard([this] { m_isBusy = false; });
        m_port.setInBufferCount(0);
        try {
            m_press();
        } catch (...) {
            fault = std::current_exception();
        }
        if (!m_isClosed)
            Pause();
    }
    // Told when the switch is armed again: under the box a foot must not press in vain.
    if (fault != nullptr)
        std::rethrow_exception(fault);
}

void FootSwitch::Pause()
{
    m_port.setPortOpen(false);
    QElapsedTimer pause;
    pause.start();
    const auto isOver = [this, &pause] { return m_isClosed || pause.nsecsElapsed() > PauseMs * 1'000'000LL; };
    // The timer behind the wait may be a few milliseconds early; the clock decides.
    while (!isOver() && !UseService<Desktop>().ProgramEnded())
        UseService<Desktop>().PumpEventsUntil(isOver, PauseMs / 10);
    OpenFootSwitchPort();
}
