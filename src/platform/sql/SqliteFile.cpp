#include "platform/sql/SqliteFile.h"

#include "contracts/files.h"
#include "contracts/PlatformError.h"
#include "frame/services.h"

#include <sqlite3.h>

using namespace Qt::StringLiterals;

namespace {

/// Another process that looks at the file holds it for moments.
constexpr int BusyMs = 3000;

class SqliteFile final : public LocalDatabase
{
public:
    SqliteFile(const QString& path, int flags) : m_path(path)
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

    void Run(const QStringList& statements) override
    {
        Step(u"BEGIN IMMEDIATE"_s, nullptr);
        try {
            for (const QString& statement : statements)
                Step(statement, nullptr);
            Step(u"COMMIT"_s, nullptr);
        } catch (...) {
            sqlite3_exec(m_handle, "ROLLBACK", nullptr, nullptr, nullptr);
            throw;
        }
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
            if (rows != nullptr)
                rows->append(Values(prepared));
        }
        const PlatformError fault = Fault();
        sqlite3_finalize(prepared);
        if (result != SQLITE_DONE)
            throw fault;
    }

private:
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
            NativePath(m_path), QString::fromUtf8(sqlite3_errmsg(m_handle))));
    }

    const QString m_path;
    sqlite3* m_handle = nullptr;
};

QStringList FilesOf(const QString& path)
{
    return {path, path + u"-wal"_s, path + u"-shm"_s};
}

} // namespace

std::unique_ptr<LocalDatabase> SqliteFiles::Open(const QString& path)
{
    // What lies beside it takes its rights over.
    if (!FileExists(path))
        Files().WritePrivateFile(path, {});
    auto file = std::make_unique<SqliteFile>(path, SQLITE_OPEN_READWRITE);
    // FULL: a commit is on the disk when it returns.
    for (const QString& setting : {u"PRAGMA journal_mode = WAL"_s, u"PRAGMA synchronous = FULL"_s})
        file->Rows(setting);
    return file;
}

std::unique_ptr<LocalDatabase> SqliteFiles::OpenToRead(const QString& path)
{
    return std::make_unique<SqliteFile>(path, SQLITE_OPEN_READONLY);
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
