#pragma once

#include <QByteArray>
#include <QFile>
#include <QString>

#include <atomic>
#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

/// The far end of a serial cable: a terminal pair of the kernel's, its near end reachable under a name of the test's.
/// Pulled out when it goes.
class PseudoTerminal
{
public:
    explicit PseudoTerminal(const QString& name) : m_name(name)
    {
        m_far = posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
        if (m_far < 0 || grantpt(m_far) != 0 || unlockpt(m_far) != 0)
            qFatal("no terminal pair");
        QFile::remove(name);
        QFile::link(QString::fromLocal8Bit(ptsname(m_far)), name);
        // A line of bytes from the first one on, as a serial port is.
        const int near = open(ptsname(m_far), O_RDWR | O_NOCTTY | O_CLOEXEC);
        termios line = {};
        tcgetattr(near, &line);
        cfmakeraw(&line);
        tcsetattr(near, TCSANOW, &line);
        close(near);
    }
    ~PseudoTerminal()
    {
        QFile::remove(m_name);
        close(m_far);
    }
    PseudoTerminal(const PseudoTerminal&) = delete;
    PseudoTerminal& operator=(const PseudoTerminal&) = delete;

    std::atomic<bool> isDrained = false; ///< All that was sent has gone into the cable.
    /// Waits until the cable has taken all of it.
    void Send(const QByteArray& bytes)
    {
        for (qsizetype done = 0; done < bytes.size();) {
            const ssize_t sent = write(m_far, bytes.constData() + done, size_t(bytes.size() - done));
            if (sent <= 0)
                return;
            done += sent;
        }
        isDrained = true;
    }
    /// Somebody has the near end open.
    bool IsHeld() const
    {
        pollfd state = {m_far, POLLOUT, 0};
        return poll(&state, 1, 0) >= 0 && (state.revents & POLLHUP) == 0;
    }

private:
    QString m_name;
    int m_far;
};
