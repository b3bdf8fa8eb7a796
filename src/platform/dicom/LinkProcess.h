#pragma once

#include <QByteArray>
#include <QCborMap>

#include <stop_token>
#include <sys/types.h>

/// The program `capture-station-dicom` as a child process: it holds the connections to servers and dcmtk's library, so
/// that whatever a server sends can reach neither this process nor its memory. It dies with the thread that started it,
/// and is started anew when it is needed again.
class LinkProcess
{
public:
    enum class End {
        Answered,
        Missing, ///< The program can't be started.
        Died,    ///< Before its answer, or its answer was none.
        Late,    ///< Killed for it, as in the next.
        Stopped,
    };

    LinkProcess() = default;
    ~LinkProcess();
    LinkProcess(const LinkProcess&) = delete;
    LinkProcess& operator=(const LinkProcess&) = delete;

    /// Sends a request and waits for its answer, of at most `mostBytes`. Starts the process where it doesn't live.
    End Ask(const QCborMap& request, QCborMap& answer, qint64 mostBytes, qint64 patienceMs,
            const std::stop_token& stop);
    /// True while the process lives that has answered last.
    bool IsLiving();
    void Kill();

private:
    bool Start();

    pid_t m_process = -1;
    int m_socket = -1;
};
