#include "platform/dicom/LinkProcess.h"

#include "frame/own_program.h"
#include "platform/dicom/link_answers.h"

#include <QDeadlineTimer>
#include <QFile>
#include <QtEndian>

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <memory>
#include <poll.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace Qt::StringLiterals;
using End = LinkProcess::End;

namespace {

/// How soon a stop is noticed.
constexpr qint64 LookMs = 50;

/// The process's socket within one question.
class Exchange
{
public:
    Exchange(int socket, qint64 patienceMs, const std::stop_token& stop)
        : m_socket(socket), m_deadline(patienceMs), m_stop(stop)
    {
    }

    End Send(const QByteArray& bytes)
    {
        for (qsizetype at = 0; at < bytes.size();) {
            if (const End end = Await(POLLOUT); end != End::Answered)
                return end;
            const ssize_t sent = send(m_socket, bytes.constData() + at, static_cast<size_t>(bytes.size() - at),
                                      MSG_NOSIGNAL | MSG_DONTWAIT);
            if (sent < 0 && errno != EINTR && errno != EAGAIN)
                return End::Died;
            at += qMax<ssize_t>(sent, 0);
        }
        return End::Answered;
    }

    End Receive(char* target, qint64 bytes)
    {
        while (bytes > 0) {
            if (const End end = Await(POLLIN); end != End::Answered)
                return end;
            const ssize_t got = recv(m_socket, target, static_cast<size_t>(bytes), MSG_DONTWAIT);
            if (got == 0 || (got < 0 && errno != EINTR && errno != EAGAIN))
                return End::Died;
            target += qMax<ssize_t>(got, 0);
            bytes -= qMax<ssize_t>(got, 0);
        }
        return End::Answered;
    }

private:
    End Await(short event)
    {
        for (;;) {
            if (m_stop.stop_requested())
                return End::Stopped;
            if (m_deadline.hasExpired())
                return End::Late;
            pollfd look = {m_socket, event, 0};
            // A process that has ended is seen by the call that follows.
            if (poll(&look, 1, static_cast<int>(qMin(LookMs, m_deadline.remainingTime()))) > 0)
                return End::Answered;
        }
    }

    int m_socket;
    QDeadlineTimer m_deadline;
    const std::stop_token& m_stop;
};

End ReadAnswer(Exchange& exchange, QCborMap& answer, qint64 mostBytes)
{
    quint32 told = 0;
    if (const End end = exchange.Receive(reinterpret_cast<char*>(&told), sizeof told); end != End::Answered)
        return end;
    const quint32 length = qFromLittleEndian(told);
    if (length > mostBytes)
        return End::Died;
    QByteArray bytes(length, Qt::Uninitialized);
    if (const End end = exchange.Receive(bytes.data(), bytes.size()); end != End::Answered)
        return end;
    return linkanswers::Read(bytes, answer) ? End::Answered : End::Died;
}

} // namespace

LinkProcess::~LinkProcess()
{
    Kill();
}

bool LinkProcess::Start()
{
    const QByteArray program = QFile::encodeName(OwnProgram(u"capture-station-dicom"_s));
    int ends[2];
    if (program.isEmpty() || socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0)
        return false;
    posix_spawn_file_actions_t actions;
    posix_spawnattr_t attributes;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, ends[1], STDIN_FILENO);
    posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    // Not every library of the station closes its sockets and devices for a program that is started.
    posix_spawn_file_actions_addclosefrom_np(&actions, STDERR_FILENO + 1);
    posix_spawnattr_init(&attributes);
    sigset_t none;
    sigemptyset(&none);
    posix_spawnattr_setsigmask(&attributes, &none);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK);
    QByteArray name = program;
    char* words[] = {name.data(), nullptr};
    char* environment[] = {nullptr};
    const int failed = posix_spawn(&m_process, program.constData(), &actions, &attributes, words, environment);
    posix_spawn_file_actions_destroy(&actions);
    posix_spawnattr_destroy(&attributes);
    close(ends[1]);
    m_socket = ends[0];
    if (failed == 0)
        return true;
    m_process = -1;
    Kill();
    return false;
}

void LinkProcess::Kill()
{
    if (m_process > 0) {
        kill(m_process, SIGKILL);
        while (waitpid(m_process, nullptr, 0) < 0 && errno == EINTR) {
        }
    }
    if (m_socket >= 0)
        close(m_socket);
    m_process = -1;
    m_socket = -1;
}

bool LinkProcess::IsLiving()
{
    if (m_process > 0 && waitpid(m_process, nullptr, WNOHANG) != 0) {
        m_process = -1;
        Kill();
    }
    return m_process > 0;
}

End LinkProcess::Ask(const QCborMap& request, QCborMap& answer, qint64 mostBytes, qint64 patienceMs,
                     const std::stop_token& stop)
{
    if (stop.stop_requested())
        return End::Stopped;
    if (!IsLiving() && !Start())
        return End::Missing;
    const QByteArray bytes = request.toCborValue().toCbor();
    const quint32 length = qToLittleEndian(static_cast<quint32>(bytes.size()));
    Exchange exchange(m_socket, patienceMs, stop);
    End end = exchange.Send(QByteArray(reinterpret_cast<const char*>(&length), sizeof length));
    if (end == End::Answered)
        end = exchange.Send(bytes);
    if (end == End::Answered)
        end = ReadAnswer(exchange, answer, mostBytes);
    if (end != End::Answered)
        Kill();
    return end;
}
