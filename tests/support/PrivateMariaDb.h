#pragma once

#include <QProcess>
#include <QString>
#include <QTemporaryDir>

/// A MariaDB server of the test's own: data in a temporary folder, reached through a socket, with durable commits and
/// what the environment says in STATION_SERVER_OPTIONS. It ends with the test, also when that crashes.
class PrivateMariaDb
{
public:
    PrivateMariaDb() = default;
    ~PrivateMariaDb();
    PrivateMariaDb(const PrivateMariaDb&) = delete;
    PrivateMariaDb& operator=(const PrivateMariaDb&) = delete;

    /// Starts the server, on the data of an earlier start if there was one, and waits until it answers. With an
    /// address of this machine it listens there too, with a PEM file of certificate and key encrypted where the client
    /// asks for it. False, with the reason in `Fault`, when it can't.
    bool Start(const QString& address = {}, const QString& certificate = {});
    static constexpr int Port = 13306; ///< At the address.
    /// Ends the server as a shutdown of the machine would.
    void Stop();
    /// Ends the server at once, as a power cut would.
    void Kill();

    /// The server stands still, as one whose machine hangs: it takes connections, and answers nothing.
    void Freeze();
    void Thaw();

    /// Runs statements as an administrator, in a database if one is named. False, with the reason in `Fault`.
    bool Run(const QString& statements, const QString& database = {});

    QString Socket() const;
    const QString& Fault() const { return m_fault; }

private:
    /// A copy of what an earlier test of this build has made, or made now.
    bool TakeData();
    bool MakeData();
    bool WaitUntilReady();

    QTemporaryDir m_folder{QStringLiteral("/tmp/station-db-XXXXXX")};
    QProcess m_server;
    QString m_fault;
};
