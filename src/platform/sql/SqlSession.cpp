#include "platform/sql/SqlSession.h"

#include "contracts/PlatformError.h"
#include "frame/journal.h"
#include "platform/sql/RowSource.h"
#include "platform/sql/SqlRows.h"

#include <QSqlDriver>
#include <QSqlError>
#include <QSqlRecord>
#include <QThread>
#include <QUuid>

#include <sys/socket.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {
// A cluster that takes a member in or out answers again within a second.
constexpr int ContentionTries = 6;
constexpr int ContentionPauseMs = 200;

QString DriverText(const QSqlError& error)
{
    const QString text = error.databaseText().trimmed();
    const QString shown = text.isEmpty() ? error.driverText().trimmed() : text;
    const QString number = error.nativeErrorCode();
    return number.isEmpty() ? shown : u"%1 [%2]"_s.arg(shown, number);
}

QString FaultText(const QString& reason, const QSqlError& error)
{
    return u"%1\n\n%2"_s.arg(reason, DriverText(error));
}

QString InstalledDriver(const SqlEngine& engine)
{
    const QStringList installed = QSqlDatabase::drivers();
    for (const QString& driver : engine.Drivers()) {
        if (installed.contains(driver))
            return driver;
    }
    throw PlatformError(u"데이터베이스 드라이버 %1이(가) 설치되어 있지 않습니다.!!"_s.arg(engine.Drivers().first()));
}

/// Where the server may be found, to be tried in turn.
QStringList HostsOf(const DatabaseSettings& settings)
{
    QStringList hosts;
    for (const QString& host : settings.host.split(u','))
        hosts.append(host.trimmed());
    return hosts;
}
} // namespace

SqlSession::SqlSession(const DatabaseSettings& settings, std::unique_ptr<SqlEngine> engine)
    : m_settings(settings), m_engine(std::move(engine)),
      m_name(u"station-%1"_s.arg(QUuid::createUuid().toString(QUuid::WithoutBraces)))
{
}

void SqlSession::Open()
{
    if (!m_database.isValid())
        m_database = QSqlDatabase::addDatabase(InstalledDriver(*m_engine), m_name);
    QStringList hosts = HostsOf(m_settings);
    // The one that answered last answers first.
    if (hosts.removeOne(m_host))
        hosts.prepend(m_host);
    while (!m_database.isOpen()) {
        try {
            OpenAtHost(hosts.first());
        } catch (const PlatformError&) {
            hosts.removeFirst();
            if (hosts.isEmpty())
                throw;
        }
    }
}

void SqlSession::Reopen()
{
    Open();
    journal::Note(Journal::Information, u"데이터베이스에 다시 연결됨"_s);
}

void SqlSession::OpenAtHost(const QString& host)
{
    DatabaseSettings settings = m_settings;
    const qsizetype colon = host.lastIndexOf(u':');
    settings.host = colon < 0 ? host : host.left(colon);
    if (colon >= 0)
        settings.port = QStringView(host).mid(colon + 1).toInt();
    m_engine->Configure(m_database, settings);
    const auto refuse = [&](const QSqlError& error) {
        Close();
        throw DatabaseAway(FaultText(m_engine->OpeningFault(error, settings), error));
    };
    if (!m_database.open())
        refuse(m_database.lastError());
    if (!m_engine->IsProtected(m_database, settings)) {
        Close();
        throw DatabaseAway(u"데이터베이스 서버와 암호화하여 연결할 수 없습니다.!!"_s);
    }
    {
        const std::lock_guard lock(m_mutex);
        const int socket = m_engine->Socket(m_database);
        m_socket = socket < 0 ? -1 : dup(socket);
    }
    for (const QString& statement : m_engine->SessionStatements()) {
        const QSqlError error = RunQuery(m_database, statement).lastError();
        if (error.isValid())
            refuse(error);
    }
    for (const QString& statement : m_engine->ClusterStatements())
        RunQuery(m_database, statement);
    EndOldSession();
    m_host = host;
}

void SqlSession::EndOldSession()
{
    const FirstRow ask = [this](const QString& statement) -> std::optional<QStringList> {
        QSqlQuery query = RunQuery(m_database, statement);
        QStringList columns;
        if (query.isSelect() && query.next()) {
            for (int column = 0; column < query.record().count(); ++column)
                columns.append(query.value(column).toString());
        }
        return query.lastError().isValid() ? std::nullopt : std::optional(columns);
    };
    const std::optional<SessionIdentity> own = m_engine->Identify(ask);
    if (m_old && own && !m_engine->EndSession(*m_old, *own, ask)) {
        Close();
        throw DatabaseAway(u"이전 데이터베이스 연결이 아직 끝나지 않았습니다.!!"_s);
    }
    if (own)
        m_old.reset();
    m_identity = own;
}

void SqlSession::Close()
{
    m_database.close();
    if (m_identity)
        m_old = std::exchange(m_identity, std::nullopt);
    const std::lock_guard lock(m_mutex);
    m_isSent = false;
    if (m_socket >= 0)
        close(std::exchange(m_socket, -1));
}

void SqlSession::End()
{
    Close();
    m_database = QSqlDatabase();
    QSqlDatabase::removeDatabase(m_name);
}

void SqlSession::Execute(const QString& statement, ExecuteOption option, SqlRows& rows,
                         const std::function<void()>& hasBegun)
{
    const QString translated = m_engine->Translated(statement);
    bool reopened = !m_database.isOpen();
    if (reopened)
        Reopen();
    for (int tries = 1;; ++tries) {
        Send();
        std::unique_ptr<RowSource> source = option == adAsyncFetch
                                                ? m_engine->Stream(m_database, translated)
                                                : std::make_unique<QueryRows>(RunQuery(m_database, translated));
        bool someCame = false;
        if (!source->Error().isValid()) {
            rows.Begin(*source);
            while (rows.TakeBlock(*source)) {
                someCame = true;
                hasBegun();
            }
        }
        // A fault can also come up between two rows.
        const QSqlError error = source->Error();
        source.reset();
        if (!error.isValid())
            return;

        FaultKind kind = m_engine->Judge(error);
        // A node that doesn't find back to its cluster: another host may still be in it.
        if (kind == FaultKind::Contention && tries >= ContentionTries)
            kind = FaultKind::Lost;
        if (kind == FaultKind::Lost) {
            journal::Note(Journal::Warning, u"데이터베이스 연결이 끊김 [%1]"_s.arg(error.nativeErrorCode()));
            Close();
        }
        CheckInterrupted();
        if (kind == FaultKind::Lost && !reopened && !someCame) {
            reopened = true;
            Reopen();
        } else if (kind == FaultKind::Contention && !someCame) {
            QThread::msleep(ContentionPauseMs);
        } else {
            const QString text = FaultText(u"데이터베이스 작업을 하지 못하였습니다.!!"_s, error);
            if (kind == FaultKind::NoTable)
                throw TableRefused(text);
            if (kind != FaultKind::Final)
                throw DatabaseAway(text);
            throw PlatformError(text);
        }
    }
}

void SqlSession::Send()
{
    CheckInterrupted();
    const std::lock_guard lock(m_mutex);
    m_isSent = true;
}

void SqlSession::CheckInterrupted() const
{
    const std::lock_guard lock(m_mutex);
    if (m_isInterrupted)
        throw DatabaseAway(u"데이터베이스 작업을 취소하였습니다.!!"_s);
}

bool SqlSession::Interrupt()
{
    const std::lock_guard lock(m_mutex);
    m_isInterrupted = true;
    if (!m_isSent)
        return true;
    if (m_socket >= 0)
        shutdown(m_socket, SHUT_RDWR);
    return false;
}

void SqlSession::Resume()
{
    const std::lock_guard lock(m_mutex);
    m_isInterrupted = false;
    m_isSent = false;
}
