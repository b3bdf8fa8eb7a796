#pragma once

#include <QByteArray>
#include <QTemporaryFile>

#include <cstdio>
#include <unistd.h>

/// What the process writes to standard error while this object lives.
class CapturedStderr
{
public:
    CapturedStderr()
    {
        if (!m_file.open())
            return;
        std::fflush(stderr);
        m_kept = dup(STDERR_FILENO);
        dup2(m_file.handle(), STDERR_FILENO);
    }
    ~CapturedStderr() { Restore(); }
    CapturedStderr(const CapturedStderr&) = delete;
    CapturedStderr& operator=(const CapturedStderr&) = delete;

    /// Ends the capture and gives what was written.
    QString Text()
    {
        Restore();
        m_file.seek(0);
        return QString::fromUtf8(m_file.readAll());
    }

private:
    void Restore()
    {
        if (m_kept < 0)
            return;
        std::fflush(stderr);
        dup2(m_kept, STDERR_FILENO);
        close(m_kept);
        m_kept = -1;
    }

    QTemporaryFile m_file;
    int m_kept = -1;
};
