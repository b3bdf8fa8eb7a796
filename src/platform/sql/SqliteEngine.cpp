#include "platform/sql/SqliteEngine.h"

#include "platform/sql/database.h"
#include "platform/sql/RowSource.h"
#include "platform/sql/sqlite_dialect.h"

#include <QSqlDatabase>
#include <QSqlError>
#include <QUrl>

using namespace Qt::StringLiterals;

namespace {
// Numbers of the engine's list of results.
constexpr int Busy = 5;
constexpr int Locked = 6;
constexpr int ReadOnly = 8;
constexpr int InputOutput = 10;
constexpr int Full = 13;
constexpr int CannotOpen = 14;
} // namespace

QStringList SqliteEngine::Drivers() const
{
    return {u"QSQLITE"_s};
}

void SqliteEngine::Configure(QSqlDatabase& database, const DatabaseSettings& settings) const
{
    // As an address with mode=rw a file that is missing is a fault; under its plain name it would be made, empty.
    const QUrl address = QUrl::fromLocalFile(settings.name);
    database.setDatabaseName(QString::fromLatin1(address.toEncoded()) + u"?mode=rw"_s);
    database.setConnectOptions(
        u"QSQLITE_OPEN_URI;QSQLITE_BUSY_TIMEOUT=%1"_s.arg(settings.connectTimeoutSeconds * 1000));
}

QStringList SqliteEngine::SessionStatements() const
{
    // With the write-ahead log a station can read while another one writes; FULL makes each commit durable.
    return {u"PRAGMA journal_mode = WAL"_s, u"PRAGMA synchronous = FULL"_s};
}

QStringList SqliteEngine::ClusterStatements() const
{
    return {};
}

QString SqliteEngine::DatabaseName(const DatabaseSettings& /*settings*/) const
{
    return u"main"_s;
}

QString SqliteEngine::Translated(const QString& statement) const
{
    return sqlite::Translated(statement);
}

std::unique_ptr<RowSource> SqliteEngine::Stream(const QSqlDatabase& database, const QString& statement) const
{
    return std::make_unique<QueryRows>(RunQuery(database, statement));
}

FaultKind SqliteEngine::Judge(const QSqlError& error) const
{
    // It has no number of its own.
    if (error.databaseText().startsWith(u"no such table"_s))
        return FaultKind::NoTable;
    // The upper bytes tell a kind more closely.
    switch (error.nativeErrorCode().toInt() & 0xff) {
    case Busy:
    case Locked:
    case ReadOnly:
    case InputOutput:
    case Full:
    case CannotOpen:
        return FaultKind::NotNow;
    default:
        return FaultKind::Final;
    }
}

QString SqliteEngine::OpeningFault(const QSqlError& /*error*/, const DatabaseSettings& settings) const
{
    return u"데이터베이스 파일 %1을(를) 열 수 없습니다.!!"_s.arg(settings.name);
}

std::optional<SessionIdentity> SqliteEngine::Identify(const FirstRow& /*ask*/) const
{
    return std::nullopt;
}

bool SqliteEngine::EndSession(const SessionIdentity& /*old*/, const SessionIdentity& /*own*/,
                              const FirstRow& /*ask*/) const
{
    return true;
}

bool SqliteEngine::IsProtected(const QSqlDatabase& /*database*/, const DatabaseSettings& /*settings*/) const
{
    return true; // It crosses no network.
}

int SqliteEngine::Socket(const QSqlDatabase& /*database*/) const
{
    return -1;
}

QString SqliteEngine::TableFolder() const
{
    return u":/sql/sqlite/"_s;
}
