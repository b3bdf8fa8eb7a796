#pragma once

#include "contracts/ado.h"

#include <QString>

/// That host is the server of this machine on its socket, by the client library's own rule.
inline bool IsThisMachine(const QString& host)
{
    return host.isEmpty() || host == QLatin1StringView("localhost");
}

/// Where a database is and how it is reached.
struct DatabaseSettings
{
    QString driver{}; ///< `QMARIADB` or `QSQLITE`.
    /// Server; empty and `localhost` mean the server of this machine on its socket. Several, with commas between them,
    /// are tried in turn; each may have a port of its own behind a colon.
    QString host{};
    int port = 0;     ///< 0 means the server's usual port.
    QString socket{}; ///< Socket file of a server of this machine; empty means its usual place.
    QString name{};   ///< Name of the database on the server, or the path of the SQLite file.
    QString user{};
    /// Never crosses a network in clear: over a connection that may be unencrypted, a server that asks for more than a
    /// proof of it is refused.
    QString password{};
    /// File of PEM certificates that sign the server's own. With it nothing crosses the network in clear; empty means
    /// no encryption. A socket of this machine, which no network carries, goes without.
    QString certificateAuthority{};
    /// The server's certificate has to name the host by which it is called. Without it any certificate of the authority
    /// will do, unless the client library looks at the name all the same (`AlwaysChecksServerName`); a server without
    /// encryption is refused only after it has had the user's name and the proof of the password.
    bool verifiesServerName = true;
    int connectTimeoutSeconds = 5;
    int replyTimeoutSeconds = 20; ///< A statement that is not answered in this time counts as a lost connection.
};

/// The client library of this machine refuses a server whose certificate names another host, whatever is asked of it,
/// once there is an authority: from its release 3.4 (Debian 13) on.
bool AlwaysChecksServerName();

/// Opens a connection whose texts are Unicode and in whose literals a backslash is an ordinary character. An SQLite
/// file must exist already. Throws PlatformError, with the driver's text behind the reason in Korean.
ConnectionPointer OpenConnection(const DatabaseSettings& settings);
