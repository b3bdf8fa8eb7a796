#pragma once

#include <QProcess>
#include <QStorageInfo>
#include <QTest>

#include <csignal>
#include <sys/prctl.h>

/// A folder as a share whose server can be stopped: it is mounted over itself through a process of its own. While that
/// stands still, the system holds every call on a file below it.
class StoppableShare
{
public:
    explicit StoppableShare(const QString& folder) : m_folder(folder)
    {
        m_server.setChildProcessModifier([] { prctl(PR_SET_PDEATHSIG, SIGKILL); });
        m_server.start(QStringLiteral("bindfs"),
                       {QStringLiteral("-f"), QStringLiteral("-o"),
                        QStringLiteral("attr_timeout=0,entry_timeout=0,negative_timeout=0"), folder, folder});
        if (!QTest::qWaitFor([&] { return QStorageInfo(folder).rootPath() == folder; }))
            qFatal("no share can be mounted: %s", m_server.readAllStandardError().constData());
    }
    ~StoppableShare()
    {
        Resume();
        QProcess::execute(QStringLiteral("fusermount3"), {QStringLiteral("-u"), QStringLiteral("-z"), m_folder});
        m_server.terminate();
        m_server.waitForFinished();
    }
    StoppableShare(const StoppableShare&) = delete;
    StoppableShare& operator=(const StoppableShare&) = delete;

    void Stop() const { kill(pid_t(m_server.processId()), SIGSTOP); }
    qint64 Process() const { return m_server.processId(); }
    void Resume() const { kill(pid_t(m_server.processId()), SIGCONT); }

private:
    QString m_folder;
    QProcess m_server;
};
