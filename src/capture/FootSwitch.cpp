#include "capture/FootSwitch.h"

#include "contracts/MSComm.h"
#include "contracts/PlatformError.h"
#include "frame/guard.h"
#include "session/VisitContext.h"
#include "text/text_routines.h"

#include <limits>
#include <utility>

using namespace Qt::StringLiterals;

namespace {
/// The pause after a still, in milliseconds. The switch bounces, and a foot is slow to leave it.
constexpr int PauseMs = 100;
/// A file that isn't there by then, because its share is slow, keeps the foot from no further press.
constexpr int FilePatienceMs = 250;

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

FootSwitch::FootSwitch(MSComm& port, Press press) : m_port(port), m_press(std::move(press))
{
    connect(&m_port, &MSComm::OnComm, this, GuardedSlot([this] { OnComm(); }));
    for (QTimer* timer : {&m_pause, &m_patience}) {
        timer->setSingleShot(true);
        timer->setTimerType(Qt::PreciseTimer);
    }
    connect(&m_pause, &QTimer::timeout, this, GuardedSlot([this] { Rearm(); }));
    connect(&m_patience, &QTimer::timeout, this, [this] { Pause(nullptr); });
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
    if (m_isBusy || m_isClosed || m_port.InBufferCount() <= 0)
        return;
    m_isBusy = true;
    m_port.setInBufferCount(0);
    m_patience.start(FilePatienceMs);
    try {
        m_press([this, press = ++m_presses](std::exception_ptr fault) {
            if (press == m_presses && m_patience.isActive())
                Pause(std::move(fault));
            else // The switch is armed again, or about to be.
                guard::Rethrow(fault);
        });
    } catch (...) {
        Pause(std::current_exception());
    }
}

void FootSwitch::Pause(std::exception_ptr fault)
{
    m_patience.stop();
    m_fault = std::move(fault);
    if (m_isClosed)
        return;
    m_port.setPortOpen(false);
    m_pause.start(PauseMs + 1); // more than the pause, by any clock
}

void FootSwitch::Rearm()
{
    m_isBusy = false;
    OpenFootSwitchPort();
    // Told when the switch is armed again: under the box a foot must not press in vain.
    guard::Rethrow(std::exchange(m_fault, nullptr));
}
