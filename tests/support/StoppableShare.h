#pragma once

#include <QDir>
#include <QProcess>
#include <QStorageInfo>
#include <QTest>

#include <algorithm>
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

    void Stop() const { StopServer(m_server.processId()); }
    /// Returns when all of its threads stand: a call that one has taken up meanwhile would hold even a killed process.
    static void StopServer(qint64 process)
    {
        kill(pid_t(process), SIGSTOP);
        const QDir threads(QStringLiteral("/proc/%1/task").arg(process));
        const auto stands = [&threads](const QString& thread) {
            QFile state(threads.filePath(thread + QStringLiteral("/stat")));
            return !state.open(QFile::ReadOnly) || state.readAll().contains(") T ");
        };
        const QStringList all = threads.entryList(QDir::Dirs | QDir::NoDotAndDotDot);
        if (!QTest::qWaitFor([&] { return std::ranges::all_of(all, stands); }))
            qFatal("the share's server doesn't stop");
    }
    qint64 Process() const { return m_server.processId(); }
    void Resume() const { kill(pid_t(m_server.processId()), SIGCONT); }

private:
    QString m_folder;
    QProcess m_server;
};
