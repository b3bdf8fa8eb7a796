#include "platform/desktop/EndSignals.h"

#include <QSocketNotifier>

#include <csignal>
#include <fcntl.h>
#include <unistd.h>

namespace {

/// Of the pipe; read by the signal handler.
volatile std::sig_atomic_t writeEnd = -1;

void Arrive(int)
{
    const char byte = 1;
    // A full pipe holds the request already.
    [[maybe_unused]] const ssize_t written = write(writeEnd, &byte, 1);
}

} // namespace

EndSignals::EndSignals(const std::function<void()>& arrived)
{
    int ends[2] = {-1, -1};
    if (pipe2(ends, O_CLOEXEC | O_NONBLOCK) != 0)
        return;
    m_readEnd = ends[0];
    writeEnd = ends[1];
    auto* notifier = new QSocketNotifier(m_readEnd, QSocketNotifier::Read, this);
    connect(notifier, &QSocketNotifier::activated, this, [this, arrived] {
        char bytes[16];
        while (read(m_readEnd, bytes, sizeof bytes) > 0) {
        }
        arrived();
    });
    Listen(true);
}

EndSignals::~EndSignals()
{
    if (m_readEnd < 0)
        return;
    Listen(false);
    close(writeEnd);
    close(m_readEnd);
    writeEnd = -1;
}

void EndSignals::Listen(bool on) const
{
    struct sigaction action = {};
    action.sa_handler = on ? Arrive : SIG_DFL;
    action.sa_flags = SA_RESTART;
    for (const int signal : {SIGTERM, SIGINT, SIGHUP})
        sigaction(signal, &action, nullptr);
}
