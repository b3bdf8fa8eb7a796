#pragma once

#include "contracts/LocalDatabase.h"

/// Databases of this machine as SQLite files with a log that is written ahead.
class SqliteFiles : public LocalDatabases
{
public:
    std::unique_ptr<LocalDatabase> Open(const QString& path, Outlives outlives) override;
    std::unique_ptr<LocalDatabase> OpenToRead(const QString& path) override;
    void Remove(const QString& path) override;
    void Rename(const QString& from, const QString& to) override;
};
