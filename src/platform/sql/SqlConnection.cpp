#include "platform/sql/SqlConnection.h"

#include "contracts/PlatformError.h"
#include "platform/sql/MariaDbEngine.h"
#include "platform/sql/SqliteEngine.h"
#include "platform/sql/SqlRecordset.h"

#include <QSqlError>
#include <QThread>
#include <QUuid>

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
} // namespace

std::unique_ptr<SqlEngine> MakeEngine(const QString& driver)
{
    for (auto engine : {+[]() -> std::unique_ptr<SqlEngine> { return std::make_unique<MariaDbEngine>(); },
                        +[]() -> std::unique_ptr<SqlEngine> { return std::make_unique<SqliteEngine>(); }}) {
        std::unique_ptr<SqlEngine> made = engine();
        if (made->Drivers().contains(driver, Qt::CaseInsensitive))
            return made;
    }
    return nullptr;
}

ConnectionPointer OpenConnection(const DatabaseSettings& settings)
{
    std::unique_ptr<SqlEngine> engine = MakeEngine(settings.driver);
    if (engine == nullptr)
        throw PlatformError(u"데이터베이스 드라이버 %1은(는) 쓸 수 없습니다.!!"_s.arg(settings.driver));
    return std::make_shared<SqlConnection>(settings, std::move(engine));
}

SqlConnection::SqlConnection(const DatabaseSettings& settings, std::unique_ptr<SqlEngine> engine)
    : m_settings(settings), m_engine(std::move(engine)),
      m_name(u"station-%1"_s.arg(QUuid::createUuid().toString(QUuid::WithoutBraces)))
{
    const QString driver = InstalledDriver(*m_engine);
    m_database = QSqlDatabase::addDatabase(driver, m_name);
    m_engine->Configure(m_database, m_settings);
    try {
        Open();
    } catch (...) {
        m_database = QSqlDatabase();
        QSqlDatabase::removeDatabase(m_name);
        throw;
    }
}

SqlConnection::~SqlConnection()
{
    m_database.close();
    m_database = QSqlDatabase();
    QSqlDatabase::removeDatabase(m_name);
}

QString SqlConnection::DefaultDatabase() const
{
    return m_engine->DatabaseName(m_settings);
}

std::unique_ptr<AdoRecordset> SqlConnection::Execute(const QString& statement)
{
    const QString translated = m_engine->Translated(statement);
    bool reopened = !m_database.isOpen();
    if (reopened)
        Open();
    for (int tries = 1;; ++tries) {
        QSqlQuery query = Run(translated);
        // A fault can also come up between two rows.
        auto rows = std::make_unique<SqlRecordset>(query);
        const QSqlError error = query.lastError();
        query.clear();
        if (!error.isValid())
            return rows;

        const FaultKind kind = m_engine->Judge(error);
        if (kind == FaultKind::Lost && !reopened) {
            reopened = true;
            m_database.close();
            Open();
        } else if (kind == FaultKind::Contention && tries < ContentionTries) {
            QThread::msleep(ContentionPauseMs);
        } else {
            if (kind == FaultKind::Lost)
                m_database.close();
            const QString text = FaultText(u"데이터베이스 작업을 하지 못하였습니다.!!"_s, error);
            if (kind != FaultKind::Final)
                throw DatabaseAway(text);
            throw PlatformError(text);
        }
    }
}

std::unique_ptr<AdoRecordset> SqlConnection::NewRecordset()
{
    return std::make_unique<SqlRecordset>();
}

void SqlConnection::Open()
{
    if (!m_database.open()) {
        const QSqlError error = m_database.lastError();
        throw DatabaseAway(FaultText(m_engine->OpeningFault(error, m_settings), error));
    }
    for (const QString& statement : m_engine->SessionStatements()) {
        const QSqlError error = Run(statement).lastError();
        if (error.isValid()) {
            m_database.close();
            throw DatabaseAway(FaultText(m_engine->OpeningFault(error, m_settings), error));
        }
    }
}

QSqlQuery SqlConnection::Run(const QString& statement)
{
    QSqlQuery query(m_database);
    query.setForwardOnly(true);
    query.exec(statement);
    return query;
}
