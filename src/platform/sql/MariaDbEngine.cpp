#include "platform/sql/MariaDbEngine.h"

#include "platform/sql/database.h"
#include "platform/sql/MariaDbRows.h"

#include <QRegularExpression>
#include <QSqlDatabase>
#include <QSqlDriver>
#include <QSqlError>
#include <QThread>
#include <QUuid>

using namespace Qt::StringLiterals;

namespace {
// Numbers of the server's and the client library's error lists.
constexpr int AccessDenied = 1045;
constexpr int AccessDeniedToDatabase = 1044;
constexpr int AccessDeniedWithoutPassword = 1698;
constexpr int UnknownDatabase = 1049;
constexpr int ServerNotReady = 1047; // a Galera node that is joining or cut off
constexpr int ServerShutdown = 1053;
constexpr int DiskFull = 1021;
constexpr int WriteFailed = 1026;
constexpr int TableFull = 1114;
constexpr int CommitFailed = 1180; // also a Galera node that lost its cluster while it committed
constexpr int LockWaitEnded = 1205;
constexpr int ServerReadOnly = 1290;
constexpr int TransactionReadOnly = 1792;
constexpr int TableReadOnly = 1036;
constexpr int TableUnknown = 1146;
constexpr int TableForbidden = 1142;
constexpr int ColumnForbidden = 1143;
constexpr int Deadlock = 1213; // also a Galera commit that met another node's
constexpr int QueryInterrupted = 1317;
constexpr int ConnectionKilled = 1927;
constexpr int NoSocket = 2002;
constexpr int NoHost = 2003;
constexpr int UnknownHost = 2005;
constexpr int ServerGone = 2006;
constexpr int ServerLost = 2013;
constexpr int EncryptionFailed = 2026;
constexpr int ServerLostAt = 2055;
constexpr int IdleDisconnect = 4031;
constexpr int AuthenticationNotAllowed = 5010;

// A session that is ended undoes its statement first.
constexpr int GoneTries = 100;
constexpr int GonePauseMs = 50;

/// Id of the session that holds the token's lock, empty when none does; nothing when that can't be told.
std::optional<QString> HolderOf(const QString& token, const FirstRow& ask)
{
    const std::optional<QStringList> row = ask(u"SELECT IS_USED_LOCK('%1')"_s.arg(token));
    return row ? std::optional(row->value(0)) : std::nullopt;
}

int Number(const QSqlError& error)
{
    return error.nativeErrorCode().toInt();
}

/// Null when the driver is built on another client library.
MYSQL* SessionOf(const QSqlDatabase& database)
{
    // The toolkit tells the type by the name that it was declared or by the one that it was compiled under.
    const QVariant handle = database.driver()->handle();
    const QByteArrayView type(handle.typeName());
    if (type != "MYSQL*" && type != "st_mysql*")
        return nullptr;
    return *static_cast<MYSQL* const*>(handle.constData());
}
bool UsesEncryption(const DatabaseSettings& settings)
{
    return !settings.certificateAuthority.isEmpty() && !IsThisMachine(settings.host);
}

/// Ways to prove the password without giving it away, whoever asks. A server may ask for others, such as for the
/// password itself, and the library would answer in clear; or for one that is locked with a key of the server's, which
/// anybody can make.
const QString HarmlessAuthentication = u"mysql_native_password,client_ed25519"_s;

/// The host as the client library takes it. The toolkit has no option for what the library is to refuse before it has
/// sent anything; the library takes options in the place of a host, parted by semicolons.
QString HostOption(const DatabaseSettings& settings)
{
    if (IsThisMachine(settings.host))
        return settings.host;
    QStringList options{u"host=%1"_s.arg(settings.host)};
    const bool isEncrypted = UsesEncryption(settings);
    if (isEncrypted)
        options.append(u"ssl-verify-server-cert=%1"_s.arg(settings.verifiesServerName ? 1 : 0));
    // Only with the check of the name does the library insist on encryption; `ssl-enforce` doesn't make it.
    if (!isEncrypted || !settings.verifiesServerName)
        options.append(u"restricted-auth=%1"_s.arg(HarmlessAuthentication));
    return options.join(u';');
}
} // namespace

bool AlwaysChecksServerName()
{
    constexpr unsigned long First = 30400;
    return mysql_get_client_version() >= First;
}

QStringList MariaDbEngine::Drivers() const
{
    return {u"QMARIADB"_s, u"QMYSQL"_s};
}

void MariaDbEngine::Configure(QSqlDatabase& database, const DatabaseSettings& settings) const
{
    database.setHostName(HostOption(settings));
    // The host that was tried before may have had a port of its own.
    database.setPort(settings.port > 0 ? settings.port : -1);
    database.setDatabaseName(settings.name);
    database.setUserName(settings.user);
    database.setPassword(settings.password);
    // An UPDATE counts the rows that it finds: whether they were as expected, not whether the new values differ.
    QStringList options{u"CLIENT_FOUND_ROWS"_s, u"MYSQL_OPT_CONNECT_TIMEOUT=%1"_s.arg(settings.connectTimeoutSeconds),
                        u"MYSQL_OPT_READ_TIMEOUT=%1"_s.arg(settings.replyTimeoutSeconds),
                        u"MYSQL_OPT_WRITE_TIMEOUT=%1"_s.arg(settings.replyTimeoutSeconds)};
    if (!settings.socket.isEmpty())
        options.append(u"UNIX_SOCKET=%1"_s.arg(settings.socket));
    if (UsesEncryption(settings))
        options.append(u"SSL_CA=%1"_s.arg(settings.certificateAuthority));
    database.setConnectOptions(options.join(u';'));
}

QStringList MariaDbEngine::SessionStatements() const
{
    // No strict mode: a character that a column of the clinic can't hold becomes "?", and the row is written.
    // The lock waits stay below the reply timeout, so that the server tells what it waited for.
    // The last one asks for nothing, but a node that is cut off from its cluster refuses it, and would take the others.
    return {u"SET NAMES utf8mb4"_s,
            u"SET SESSION sql_mode = 'NO_BACKSLASH_ESCAPES,NO_ENGINE_SUBSTITUTION', SESSION autocommit = 1, "
            "SESSION innodb_lock_wait_timeout = 10, SESSION lock_wait_timeout = 10"_s,
            u"DO 1"_s};
}

QStringList MariaDbEngine::ClusterStatements() const
{
    // A row that was written through one node is in the others' tables a moment later. Before it reads, updates or
    // deletes (1 + 2) a node brings in what was written before; an insertion meets it anyway.
    return {u"SET SESSION wsrep_sync_wait = 3"_s};
}

QString MariaDbEngine::DatabaseName(const DatabaseSettings& settings) const
{
    return settings.name;
}

QString MariaDbEngine::Translated(const QString& statement) const
{
    // A database may have a name that is no bare word, such as one with a hyphen.
    static const QRegularExpression showTables(uR"(^\s*SHOW\s+TABLES\s+FROM\s+([^`].*?)\s*$)"_s,
                                               QRegularExpression::CaseInsensitiveOption);
    const QRegularExpressionMatch match = showTables.match(statement);
    if (!match.hasMatch())
        return statement;
    return u"SHOW TABLES FROM `%1`"_s.arg(match.captured(1).replace(u"`"_s, u"``"_s));
}

std::unique_ptr<RowSource> MariaDbEngine::Stream(const QSqlDatabase& database, const QString& statement) const
{
    if (MYSQL* session = SessionOf(database))
        return std::make_unique<MariaDbRows>(*session, statement);
    return std::make_unique<QueryRows>(RunQuery(database, statement));
}

FaultKind MariaDbEngine::Judge(const QSqlError& error) const
{
    switch (Number(error)) {
    case ServerGone:
    case ServerLost:
    case ServerLostAt:
    case IdleDisconnect:
    case ConnectionKilled:
    case ServerShutdown:
    case QueryInterrupted:
        return FaultKind::Lost;
    case ServerNotReady:
    case CommitFailed:
    case Deadlock:
        return FaultKind::Contention;
    case DiskFull:
    case WriteFailed:
    case TableFull:
    case LockWaitEnded:
    case ServerReadOnly:
    case TransactionReadOnly:
    case TableReadOnly:
        return FaultKind::NotNow;
    case TableUnknown:
    case TableForbidden:
    case ColumnForbidden:
        return FaultKind::NoTable;
    default:
        return FaultKind::Final;
    }
}

QString MariaDbEngine::OpeningFault(const QSqlError& error, const DatabaseSettings& settings) const
{
    switch (Number(error)) {
    case AccessDenied:
    case AccessDeniedWithoutPassword:
        return u"데이터베이스의 사용자나 암호가 맞지 않습니다.!!"_s;
    case AccessDeniedToDatabase:
        return u"데이터베이스 %1에 대한 사용 권한이 없습니다.!!"_s.arg(settings.name);
    case UnknownDatabase:
        return u"데이터베이스 %1이(가) 서버에 없습니다.!!"_s.arg(settings.name);
    case NoSocket:
    case NoHost:
    case UnknownHost:
        return u"데이터베이스 서버에 연결할 수 없습니다.!!"_s;
    case EncryptionFailed:
        return u"데이터베이스 서버와 암호화하여 연결할 수 없습니다.!!"_s;
    case AuthenticationNotAllowed:
        return u"데이터베이스 서버가 암호를 그대로 보내라고 하여 연결하지 않았습니다.!!"_s;
    case ServerNotReady:
        return u"데이터베이스 서버가 클러스터에 들어 있지 않습니다.!!"_s;
    default:
        return u"데이터베이스에 연결할 수 없습니다.!!"_s;
    }
}

std::optional<SessionIdentity> MariaDbEngine::Identify(const FirstRow& ask) const
{
    // The time of this statement less the time since the start: the same second for every session, whatever the clock
    // has done meanwhile. MySQL keeps the figure in another place.
    for (const QString& figures : {u"information_schema.GLOBAL_STATUS"_s, u"performance_schema.global_status"_s}) {
        const QString token = u"capture-station-"_s + QUuid::createUuid().toString(QUuid::WithoutBraces);
        const QStringList row = ask(u"SELECT CONNECTION_ID(), CONCAT(@@hostname, ':', @@port, ':', "
                                    "UNIX_TIMESTAMP() - VARIABLE_VALUE), GET_LOCK('%1', 0) FROM %2 "
                                    "WHERE VARIABLE_NAME = 'UPTIME'"_s.arg(token, figures))
                                    .value_or(QStringList());
        if (row.value(2) == u"1"_s)
            return SessionIdentity{row[0], row[1], token};
    }
    return std::nullopt;
}

bool MariaDbEngine::EndSession(const SessionIdentity& old, const SessionIdentity& own, const FirstRow& ask) const
{
    // Another process, after a restart or on another node, knows nothing of it; an id without the token is another's.
    if (old.server != own.server)
        return true;
    for (int tries = 0; tries < GoneTries; ++tries) {
        const std::optional<QString> holder = HolderOf(old.token, ask);
        if (!holder)
            return false;
        if (*holder != old.id)
            return true;
        ask(u"KILL "_s + old.id);
        QThread::msleep(GonePauseMs);
    }
    return false;
}

bool MariaDbEngine::IsProtected(const QSqlDatabase& database, const DatabaseSettings& settings) const
{
    // Without the check of the name the library goes on in clear with a server that knows no encryption. No statement
    // has been sent yet, and of the password no more than the proof of it.
    MYSQL* session = SessionOf(database);
    return !UsesEncryption(settings) || (session != nullptr && mysql_get_ssl_cipher(session) != nullptr);
}

int MariaDbEngine::Socket(const QSqlDatabase& database) const
{
    MYSQL* session = SessionOf(database);
    return session == nullptr ? -1 : static_cast<int>(mysql_get_socket(session));
}

QString MariaDbEngine::TableFolder() const
{
    return u":/sql/mariadb/"_s;
}
