#include "platform/sql/SqliteFile.h"

#include "contracts/files.h"
#include "contracts/PlatformError.h"
#include "frame/services.h"

#include <QDeadlineTimer>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QThread>

#include <sqlite3.h>

#include <mutex>
#include <optional>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

const QString LogEnding = u"-wal"_s;
/// Another process that looks at the file holds it for moments.
constexpr int BusyMs = 10'000;
constexpr int BusyPauseMs = 5;
/// A file that changes while it is copied is copied again.
constexpr int CopyTries = 10;
constexpr int CopyPauseMs = 20;
/// What reading a whole list takes is a small part of it. In the engine's own steps, counted by the thousand.
constexpr int StepsAtOnce = 1000;
constexpr int MostThousandSteps = 100'000;

class SqliteFile : public LocalDatabase
{
public:
    /// `told` is what faults call it.
    SqliteFile(const QString& path, int flags, const QString& told) : m_told(told)
    {
        if (sqlite3_open_v2(NativePath(path).toUtf8().constData(), &m_handle, flags | SQLITE_OPEN_FULLMUTEX, nullptr) !=
            SQLITE_OK) {
            const PlatformError fault = Fault();
            sqlite3_close(m_handle);
            throw fault;
        }
        sqlite3_busy_timeout(m_handle, BusyMs);
    }
    ~SqliteFile() override { sqlite3_close(m_handle); }
    SqliteFile(const SqliteFile&) = delete;
    SqliteFile& operator=(const SqliteFile&) = delete;

    /// Commits go to a log beside the file. The engine itself waits for nobody while a fresh file gets one, and whoever
    /// opens it at the same moment is about that as well.
    void KeepLog()
    {
        const QDeadlineTimer limit(BusyMs);
        int result = SQLITE_BUSY;
        while ((result = sqlite3_exec(m_handle, "PRAGMA journal_mode = WAL", nullptr, nullptr, nullptr)) ==
                   SQLITE_BUSY &&
               !limit.hasExpired())
            QThread::msleep(BusyPauseMs);
        if (result != SQLITE_OK)
            throw Fault();
    }

    void Run(const QStringList& statements) override
    {
        Together([&] {
            for (const QString& statement : statements)
                Step(statement, nullptr);
        });
    }

    void Together(const std::function<void()>& work) override
    {
        if (sqlite3_get_autocommit(m_handle) == 0) {
            work();
            return;
        }
        Step(u"BEGIN IMMEDIATE"_s, nullptr);
        try {
            work();
            Step(u"COMMIT"_s, nullptr);
        } catch (...) {
            sqlite3_exec(m_handle, "ROLLBACK", nullptr, nullptr, nullptr);
            throw;
        }
    }

    /// Whatever stands in it: nothing that it defines runs, and what has no end is cut off.
    void DistrustContent()
    {
        for (const auto& [setting, value] :
             {std::pair(SQLITE_DBCONFIG_DEFENSIVE, 1), std::pair(SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0),
              std::pair(SQLITE_DBCONFIG_ENABLE_VIEW, 0), std::pair(SQLITE_DBCONFIG_ENABLE_TRIGGER, 0)})
            sqlite3_db_config(m_handle, setting, value, nullptr);
        sqlite3_limit(m_handle, SQLITE_LIMIT_LENGTH, static_cast<int>(LargestListBytes));
        m_bytesLeft = LargestListBytes;
        const auto takesTooLong = [](void* steps) { return ++*static_cast<int*>(steps) > MostThousandSteps ? 1 : 0; };
        sqlite3_progress_handler(m_handle, StepsAtOnce, takesTooLong, &m_thousandSteps);
    }

    QList<QVariantList> Rows(const QString& statement) override
    {
        QList<QVariantList> rows;
        Step(statement, &rows);
        return rows;
    }

    void Step(const QString& statement, QList<QVariantList>* rows)
    {
        const QByteArray text = statement.toUtf8();
        sqlite3_stmt* prepared = nullptr;
        if (sqlite3_prepare_v2(m_handle, text.constData(), static_cast<int>(text.size()), &prepared, nullptr) !=
            SQLITE_OK)
            throw Fault();
        int result = SQLITE_OK;
        while ((result = sqlite3_step(prepared)) == SQLITE_ROW) {
            if (rows != nullptr && HasRoomFor(prepared))
                rows->append(Values(prepared));
        }
        const PlatformError fault = Fault();
        sqlite3_finalize(prepared);
        if (result != SQLITE_DONE)
            throw fault;
    }

private:
    /// A list from a file of that length has no more in it than the file.
    bool HasRoomFor(sqlite3_stmt* row)
    {
        if (!m_bytesLeft)
            return true;
        for (int column = 0; column < sqlite3_column_count(row); ++column)
            *m_bytesLeft -= sqlite3_column_bytes(row, column) + 1;
        if (*m_bytesLeft < 0)
            sqlite3_interrupt(m_handle);
        return *m_bytesLeft >= 0;
    }

    static QVariantList Values(sqlite3_stmt* row)
    {
        QVariantList values;
        for (int column = 0; column < sqlite3_column_count(row); ++column) {
            switch (sqlite3_column_type(row, column)) {
            case SQLITE_NULL:
                values.append(QVariant());
                break;
            case SQLITE_INTEGER:
                values.append(qlonglong{sqlite3_column_int64(row, column)});
                break;
            default: {
                const void* bytes = sqlite3_column_blob(row, column);
                values.append(QString::fromUtf8(static_cast<const char*>(bytes), sqlite3_column_bytes(row, column)));
            }
            }
        }
        return values;
    }

    PlatformError Fault() const
    {
        return PlatformError(u"이 컴퓨터의 목록을 쓸 수 없습니다.!! (%1)\n\n%2"_s.arg(
            NativePath(m_told), QString::fromUtf8(sqlite3_errmsg(m_handle))));
    }

    const QString m_told;
    sqlite3* m_handle = nullptr;
    int m_thousandSteps = 0;
    std::optional<qint64> m_bytesLeft; ///< Of values; nothing for no limit.
};

QByteArray VersionOf(const QStringList& files)
{
    QByteArray versions;
    for (const QString& file : files)
        versions += Files().VersionOf(file) + '\n';
    return versions;
}

/// Copies the database and its log as they belong together.
void CopyDatabase(const QString& from, const QString& to)
{
    const QStringList files{from, from + LogEnding};
    for (int tries = 0; tries < CopyTries; ++tries) {
        const QByteArray version = VersionOf(files);
        const QByteArray database = ReadListFile(from);
        const bool hasLog = Files().KindOf(from + LogEnding) != FileKind::None;
        const QByteArray log = hasLog ? ReadListFile(from + LogEnding) : QByteArray();
        if (VersionOf(files) == version) {
            Files().WritePrivateFile(to, database);
            if (hasLog)
                Files().WritePrivateFile(to + LogEnding, log);
            return;
        }
        QThread::msleep(CopyPauseMs);
    }
    throw PlatformError(u"다른 프로그램이 쓰고 있는 목록입니다.!! (%1)"_s.arg(NativePath(from)));
}

/// A copy, in a folder that goes with it.
class CopiedDatabase final : public LocalDatabase
{
public:
    explicit CopiedDatabase(const QString& path)
    {
        const QString copy = m_folder.filePath(u"list"_s);
        CopyDatabase(path, copy);
        m_database = std::make_unique<SqliteFile>(copy, SQLITE_OPEN_READWRITE, path);
        m_database->DistrustContent();
    }

    void Run(const QStringList& statements) override { m_database->Run(statements); }
    void Together(const std::function<void()>& work) override { m_database->Together(work); }
    QList<QVariantList> Rows(const QString& statement) override { return m_database->Rows(statement); }

private:
    const QTemporaryDir m_folder;
    std::unique_ptr<SqliteFile> m_database;
};

/// What lies beside it takes its rights over. One thread at a time: who makes it closes a descriptor of it, by which
/// the kernel drops all locks that this process has on it, those of another thread's engine too.
void MakeOnce(const QString& path)
{
    static std::mutex making;
    const std::lock_guard lock(making);
    if (FileExists(path))
        return;
    // Another process may be about to make it as well, and to write into it.
    const QString fresh = Files().PartialPath(QFileInfo(NativePath(path)).path());
    Files().WritePrivateFile(fresh, {});
    if (!Files().PlaceNewFile(fresh, path))
        DeleteFile(fresh);
}

QStringList FilesOf(const QString& path)
{
    return {path, path + LogEnding, path + u"-shm"_s};
}

} // namespace

std::unique_ptr<LocalDatabase> SqliteFiles::Open(const QString& path, Outlives outlives)
{
    MakeOnce(path);
    auto file = std::make_unique<SqliteFile>(path, SQLITE_OPEN_READWRITE, path);
    file->KeepLog();
    // FULL: a commit is on the disk when it returns.
    file->Rows(outlives == PowerCut ? u"PRAGMA synchronous = FULL"_s : u"PRAGMA synchronous = NORMAL"_s);
    return file;
}

std::unique_ptr<LocalDatabase> SqliteFiles::OpenToRead(const QString& path)
{
    return std::make_unique<CopiedDatabase>(path);
}

void SqliteFiles::Remove(const QString& path)
{
    // The file itself first: what is left beside it then belongs to nothing.
    for (const QString& file : FilesOf(path))
        DeleteFile(file);
}

void SqliteFiles::Rename(const QString& from, const QString& to)
{
    const QStringList old = FilesOf(from);
    const QStringList fresh = FilesOf(to);
    for (qsizetype at = 0; at < old.size(); ++at) {
        if (FileExists(old[at]))
            Files().RenameFile(old[at], fresh[at]);
    }
}
