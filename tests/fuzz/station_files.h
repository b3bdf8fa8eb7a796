#pragma once

#include "fuzz.h"
#include "platform/files/LocalFiles.h"

#include <QCoreApplication>
#include <QFile>
#include <QTemporaryDir>

/// A folder in memory, with the file service of the station over it.
class StationFiles
{
public:
    StationFiles() { RegisterFiles(); }

    QString Path(const QString& name) const { return m_folder.filePath(name); }
    /// Traps where the file can't be written: it is no finding then.
    void Write(const QString& name, const QByteArray& content) const
    {
        QFile file(Path(name));
        if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
            __builtin_trap();
    }

private:
    int m_count = 1;
    char m_name[5] = "fuzz";
    char* m_arguments[1] = {m_name};
    QCoreApplication m_application{m_count, m_arguments};
    QTemporaryDir m_folder{QStringLiteral("/dev/shm/fuzz-XXXXXX")};
};
