#include "platform/sql/SqlConnection.h"

#include "contracts/PlatformError.h"
#include "frame/components.h"
#include "frame/guard.h"
#include "frame/services.h"
#include "frame/waiting.h"
#include "platform/sql/MariaDbEngine.h"
#include "platform/sql/SqliteEngine.h"
#include "platform/sql/SqlRecordset.h"

#include <QPointer>

#include <condition_variable>

using namespace Qt::StringLiterals;

namespace {
/// A database that answers does so within this time, and nothing is served meanwhile: no handler comes between the
/// statements of another without need.
constexpr auto QuietWait = std::chrono::milliseconds(5);
/// Only the opening of a connection can't be cut off.
constexpr int EndPatienceMs = 1000;
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

/// A piece of work that somebody waits for.
struct SqlConnection::Task
{
    std::function<void(Task&)> work;
    std::shared_ptr<SqlRows> rows = std::make_shared<SqlRows>();

    std::mutex mutex;
    std::condition_variable changed;
    bool isRunning = false;
    bool hasBegun = false; ///< Rows are there, or it has ended.
    bool isGivenUp = false;
    std::exception_ptr fault;

    bool HasBegun()
    {
        const std::lock_guard lock(mutex);
        return hasBegun;
    }

    /// Wakes who waits, once.
    void Begin(std::exception_ptr ended = nullptr)
    {
        {
            const std::lock_guard lock(mutex);
            if (std::exchange(hasBegun, true))
                return;
            fault = std::move(ended);
            changed.notify_all();
        }
        PostToScreen([] {});
    }

    void Run(SqlSession& session)
    {
        {
            const std::lock_guard lock(mutex);
            if (isGivenUp)
                return;
            session.Resume();
            isRunning = true;
        }
        std::exception_ptr ended;
        try {
            work(*this);
        } catch (...) {
            ended = std::current_exception();
        }
        {
            const std::lock_guard lock(mutex);
            isRunning = false;
            session.Resume();
        }
        rows->End(ended);
        Begin(ended);
    }

    /// True when it comes to nothing; false when its end is about to come.
    bool GiveUp(SqlSession& session)
    {
        const std::lock_guard lock(mutex);
        isGivenUp = !isRunning || session.Interrupt();
        return isGivenUp && !hasBegun;
    }
};

SqlConnection::SqlConnection(const DatabaseSettings& settings, std::unique_ptr<SqlEngine> engine)
    : m_session(std::make_shared<SqlSession>(settings, std::move(engine)))
{
    const auto task = std::make_shared<Task>();
    task->work = [session = m_session](Task&) { session->Open(); };
    try {
        Await(task);
    } catch (...) {
        EndSession();
        throw;
    }
}

SqlConnection::~SqlConnection()
{
    EndSession();
}

void SqlConnection::EndSession()
{
    m_session->Interrupt();
    m_thread.End(EndPatienceMs, [session = m_session] { session->End(); });
}

QString SqlConnection::DefaultDatabase() const
{
    return Engine().DatabaseName(m_session->Settings());
}

std::unique_ptr<AdoRecordset> SqlConnection::Execute(const QString& statement, ExecuteOption option)
{
    if (m_thread.IsCurrent()) {
        const auto rows = std::make_shared<SqlRows>();
        m_session->Execute(statement, option, *rows, [] {});
        rows->End(nullptr);
        return std::make_unique<SqlRecordset>(rows);
    }
    const auto task = std::make_shared<Task>();
    task->work = [session = m_session, statement, option](Task& self) {
        session->Execute(statement, option, *self.rows, [&] {
            if (option == adAsyncFetch)
                self.Begin();
        });
    };
    Await(task);
    return std::make_unique<SqlRecordset>(task->rows);
}

void SqlConnection::Await(const std::shared_ptr<Task>& task)
{
    m_thread.Post([task, session = m_session] { task->Run(*session); });
    {
        std::unique_lock lock(task->mutex);
        task->changed.wait_for(lock, QuietWait, [&] { return task->hasBegun; });
    }
    const auto hasBegun = [&task] { return task->HasBegun(); };
    if (!hasBegun()) {
        const QString text = u"데이터베이스의 응답을 기다리고 있습니다."_s;
        const waiting::Outcome outcome = waiting::Await(text, hasBegun);
        if (outcome != waiting::Outcome::Done) {
            const QString told = outcome == waiting::Outcome::Leaving
                                     ? QString()
                                     : u"데이터베이스가 응답하지 않아 작업을 취소하였습니다.!!"_s;
            if (task->GiveUp(*m_session))
                throw DatabaseAway(told);
            // What was cut off ends at once, and an answer that was quicker counts. A file's lock has its own limit.
            UseService<Desktop>().ServeUntil({.done = hasBegun});
            std::unique_lock lock(task->mutex);
            task->changed.wait(lock, [&] { return task->hasBegun; });
            if (task->fault != nullptr)
                throw DatabaseAway(told);
        }
    }
    const std::lock_guard lock(task->mutex);
    guard::Rethrow(task->fault);
}

std::unique_ptr<AdoRecordset> SqlConnection::NewRecordset()
{
    return std::make_unique<SqlRecordset>();
}

void SqlConnection::Queue(QObject* context, Work work, Done done)
{
    m_thread.Post([session = m_session, work = std::move(work), done = std::move(done), context = QPointer(context)] {
        session->Resume();
        std::exception_ptr fault;
        try {
            work();
        } catch (...) {
            fault = std::current_exception();
        }
        session->Resume();
        PostToScreen([done, context, fault] {
            if (context)
                done(fault);
        });
    });
}
