#pragma once

#include "support/testing.h"

#include <arpa/inet.h>
#include <poll.h>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>

/// A database server on a port of this machine that knows no encryption and asks its one client to prove who he is in
/// another way, such as by the password itself. Keeps what arrives.
class PryingServer
{
public:
    explicit PryingServer(const QByteArray& method) : m_method(method)
    {
        m_place.sin_family = AF_INET;
        m_place.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t length = sizeof m_place;
        if (bind(m_door, reinterpret_cast<sockaddr*>(&m_place), length) != 0 || listen(m_door, 1) != 0 ||
            getsockname(m_door, reinterpret_cast<sockaddr*>(&m_place), &length) != 0)
            qFatal("no free port");
        m_thread = std::thread([this] { Serve(); });
    }
    ~PryingServer() { Heard(); }
    PryingServer(const PryingServer&) = delete;
    PryingServer& operator=(const PryingServer&) = delete;

    int Port() const { return ntohs(m_place.sin_port); }
    /// All that the client has sent, once he has gone.
    QByteArray Heard()
    {
        if (m_thread.joinable()) {
            shutdown(m_door, SHUT_RDWR); // a client that never came is waited for no more
            m_thread.join();
            close(m_door);
        }
        return m_heard;
    }

private:
    static constexpr int PatienceMs = 10000;

    void Serve()
    {
        const int client = accept(m_door, nullptr, nullptr);
        if (client < 0)
            return;
        // Version, session and challenge; what it can do: long passwords, a database's name, protocol 4.1, ways to
        // prove who one is. TLS isn't among it.
        Send(client, 0,
             QByteArrayLiteral("\x0a"
                               "5.5.5-10.11.0-MariaDB\0\x01\0\0\0abcdefgh\0\x09\xa2\x2d\x02\0\x08\0\x15"
                               "\0\0\0\0\0\0\0\0\0\0ijklmnopqrst\0mysql_native_password\0"));
        if (Receive(client)) {
            Send(client, 2, '\xfe' + m_method + '\0' + QByteArray(20, 'x') + '\0');
            while (Receive(client)) {
            }
        }
        close(client);
    }
    static void Send(int client, char number, const QByteArray& content)
    {
        const QByteArray packet = QByteArray(1, char(content.size())) + QByteArray(2, '\0') + number + content;
        if (write(client, packet.constData(), size_t(packet.size())) != packet.size())
            qFatal("nobody listens");
    }
    /// False when nothing more comes.
    bool Receive(int client)
    {
        pollfd waiting{client, POLLIN, 0};
        char bytes[1024];
        const ssize_t got = poll(&waiting, 1, PatienceMs) > 0 ? read(client, bytes, sizeof bytes) : 0;
        m_heard.append(bytes, qMax<ssize_t>(got, 0));
        return got > 0;
    }

    const QByteArray m_method;
    const int m_door = socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in m_place{};
    QByteArray m_heard;
    std::thread m_thread;
};
