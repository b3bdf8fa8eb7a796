#pragma once

#include "contracts/SenderProcess.h"
#include "frame/own_program.h"
#include "platform/setup/SetupFile.h"
#include "support/StationInABox.h"

#include <csignal>
#include <mutex>

/// The real sender beside a station in a box, with a setup of its own, and nobody but the test that ends it.
class SenderInABox
{
public:
    /// `pacs` are lines of the setup's section beside the server's port.
    SenderInABox(StationInABox& box, int port, const QByteArray& pacs = "Institution=31100001\n") : m_box(box)
    {
        WriteSetup(port, pacs);
        InstallService<SenderProcess>(std::make_unique<Starter>(*this));
    }
    ~SenderInABox()
    {
        InstallService<SenderProcess>(nullptr);
        Kill();
    }
    SenderInABox(const SenderInABox&) = delete;
    SenderInABox& operator=(const SenderInABox&) = delete;

    /// Writes the setup, which the station's own becomes.
    void WriteSetup(int port, const QByteArray& pacs)
    {
        const QByteArray content = "[Database]\nDriver=QSQLITE\nName=" + m_box.Database().Settings().name.toUtf8() +
                                   "\n[Client]\nCaptureRoot=" + m_box.Root().toUtf8() +
                                   "\nEtcList=위내시경,대장내시경\n[Saup.1]\nHospital=한국의원\n"
                                   "[Pacs]\nHost=127.0.0.1\nCallingAet=TEST\nPort=" +
                                   QByteArray::number(port) + '\n' + pacs;
        QFile file(SetupPath());
        if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
            qFatal("no setup");
        file.close();
        const SetupFile setup = ReadSetupFile(content, m_box.Desk().ProgramFolder());
        if (!setup.problems.isEmpty())
            qFatal("setup: %s", qPrintable(setup.problems.join(u'\n')));
        ClientSetup = setup.client;
        SaupTable = setup.places;
    }

    /// Ends all that have been started, at once. Gives how many there were.
    int Kill()
    {
        const std::lock_guard lock(m_mutex);
        int killed = 0;
        for (const qint64 pid : std::as_const(m_pids))
            killed += Lives(pid) && kill(pid_t(pid), SIGKILL) == 0 ? 1 : 0;
        for (const qint64 pid : std::as_const(m_pids)) {
            if (!QTest::qWaitFor([pid] { return !Lives(pid); }, 5000))
                qFatal("a sender doesn't end");
        }
        m_pids.clear();
        return killed;
    }
    /// None runs any more.
    bool HasEnded() const
    {
        const std::lock_guard lock(m_mutex);
        return std::ranges::none_of(m_pids, Lives);
    }
    /// The most resident memory that those that live have had, with the programs that they have started, in megabytes.
    double PeakMb() const
    {
        double kilobytes = 0;
        const std::lock_guard lock(m_mutex);
        for (const QString& name : QDir(QStringLiteral("/proc")).entryList(QDir::Dirs)) {
            QFile status(QStringLiteral("/proc/%1/status").arg(name));
            if (name.toLongLong() == 0 || !status.open(QIODevice::ReadOnly))
                continue;
            const QByteArray text = status.readAll();
            const auto field = [&text](const QByteArray& key) {
                const qsizetype at = text.indexOf('\n' + key + ':');
                return at < 0 ? 0 : text.mid(at + key.size() + 2).simplified().split(' ').first().toLongLong();
            };
            if (m_pids.contains(name.toLongLong()) || m_pids.contains(field("PPid")))
                kilobytes += double(field("VmHWM"));
        }
        return kilobytes / 1024;
    }
    /// Started ones don't come up.
    void setBroken(bool isBroken) { m_isBroken = isBroken; }

    void Start()
    {
        if (m_isBroken)
            return;
        QProcess sender;
        sender.setProgram(OwnProgram(QStringLiteral("capture-station-sender")));
        sender.setArguments({QStringLiteral("--pauses"), QString::number(PausePercent)});
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("CAPTURE_STATION_FOLDER"), m_box.Desk().ProgramFolder());
        environment.insert(QStringLiteral("CAPTURE_STATION_SETUP"), SetupPath());
        sender.setProcessEnvironment(environment);
        qint64 pid = 0;
        if (!sender.startDetached(&pid))
            qFatal("no sender");
        const std::lock_guard lock(m_mutex);
        m_pids.append(pid);
    }

private:
    /// The order of the pauses is theirs, not their length.
    static constexpr int PausePercent = 20;

    class Starter final : public SenderProcess
    {
    public:
        explicit Starter(SenderInABox& box) : m_senders(box) {}
        void Start(bool) override { m_senders.Start(); }

    private:
        SenderInABox& m_senders;
    };

    QString SetupPath() const { return m_box.Desk().ProgramFolder() + QStringLiteral("/Setup.ini"); }

    /// One that has ended may stand there until somebody asks for it.
    static bool Lives(qint64 pid)
    {
        QFile file(QStringLiteral("/proc/%1/stat").arg(pid));
        if (!file.open(QIODevice::ReadOnly))
            return false;
        const QByteArray line = file.readAll();
        return !line.isEmpty() && line.mid(line.lastIndexOf(')') + 2, 1) != "Z";
    }

    StationInABox& m_box;
    std::atomic<bool> m_isBroken = false;
    mutable std::mutex m_mutex;
    QList<qint64> m_pids;
};
