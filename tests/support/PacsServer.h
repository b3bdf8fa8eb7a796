#pragma once

#include "support/testing.h"

#include <arpa/inet.h>
#include <csignal>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <unistd.h>

/// A server for pictures: dcmtk's storescp, or dcmqrscp, on a port of its own of this machine.
class PacsServer
{
public:
    PacsServer()
    {
        const int probe = socket(AF_INET, SOCK_STREAM, 0);
        sockaddr_in place = Place(0);
        socklen_t length = sizeof place;
        if (bind(probe, reinterpret_cast<sockaddr*>(&place), length) != 0 ||
            getsockname(probe, reinterpret_cast<sockaddr*>(&place), &length) != 0)
            qFatal("no free port");
        m_port = ntohs(place.sin_port);
        close(probe);
        m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        m_process.setChildProcessModifier([] { prctl(PR_SET_PDEATHSIG, SIGKILL); });
    }
    ~PacsServer() { Stop(); }
    PacsServer(const PacsServer&) = delete;
    PacsServer& operator=(const PacsServer&) = delete;

    int Port() const { return m_port; }

    /// Takes every compressed picture, and what `options` of storescp say.
    void Start(const QStringList& options = {})
    {
        StartProgram(QStringLiteral("storescp"),
                     QStringList{QStringLiteral("-ll"), QStringLiteral("fatal"), QStringLiteral("-od"), m_folder.path(),
                                 QStringLiteral("-fe"), QStringLiteral(".dcm")} +
                         (options.isEmpty() ? QStringList{QStringLiteral("+xa")} : options) +
                         QStringList{QString::number(m_port)});
    }
    /// Refuses what is larger than so many bytes: dcmqrscp with a quota.
    void StartWithQuota(int bytes)
    {
        const QString configuration = m_folder.filePath(QStringLiteral("dcmqrscp.cfg"));
        QFile file(configuration);
        if (!file.open(QIODevice::WriteOnly))
            qFatal("no configuration");
        file.write("NetworkTCPPort = " + QByteArray::number(m_port) +
                   "\nMaxPDUSize = 16384\nMaxAssociations = 4\nHostTable BEGIN\nHostTable END\nVendorTable BEGIN\n"
                   "VendorTable END\nAETable BEGIN\nANY-SCP " +
                   m_folder.path().toUtf8() + " RW (9, " + QByteArray::number(bytes) + "b) ANY\nAETable END\n");
        file.close();
        StartProgram(QStringLiteral("dcmqrscp"), {QStringLiteral("-ll"), QStringLiteral("off"), QStringLiteral("+xy"),
                                                  QStringLiteral("-c"), configuration});
    }
    /// Offers a worklist for the title "WL": wlmscpfs with entries as dump2dcm reads them.
    void StartWorklist(const QStringList& dumps)
    {
        const QString folder = m_folder.filePath(QStringLiteral("WL"));
        QDir().mkpath(folder);
        QFile lock(folder + QStringLiteral("/lockfile"));
        if (!lock.open(QIODevice::WriteOnly))
            qFatal("no lock");
        for (qsizetype at = 0; at < dumps.size(); ++at) {
            QFile dump(m_folder.filePath(QStringLiteral("dump")));
            if (!dump.open(QIODevice::WriteOnly))
                qFatal("no entry");
            dump.write(dumps[at].toUtf8());
            dump.close();
            Run(QStringLiteral("dump2dcm"),
                {QStringLiteral("-g"), dump.fileName(), QStringLiteral("%1/%2.wl").arg(folder).arg(at)});
        }
        StartProgram(QStringLiteral("wlmscpfs"), {QStringLiteral("-ll"), QStringLiteral("off"), QStringLiteral("-dfp"),
                                                  m_folder.path(), QStringLiteral("-dfr"), QString::number(m_port)});
    }
    void Stop()
    {
        m_process.kill();
        m_process.waitForFinished();
    }

    /// Paths of the objects that it has taken, in the order of their instance numbers.
    QStringList Objects() const
    {
        QStringList paths;
        for (const QString& name : QDir(m_folder.path()).entryList({QStringLiteral("*.dcm")}, QDir::Files))
            paths << m_folder.filePath(name);
        std::ranges::sort(paths, {}, [](const QString& path) { return Element(path, "0020,0013").toInt(); });
        return paths;
    }
    /// Instance numbers of the objects, in the order in which they came.
    QList<int> NumbersAsTheyCame() const
    {
        QList<int> numbers;
        for (const QString& name :
             QDir(m_folder.path()).entryList({QStringLiteral("*.dcm")}, QDir::Files, QDir::Time | QDir::Reversed))
            numbers << Element(m_folder.filePath(name), "0020,0013").toInt();
        return numbers;
    }

    /// What a program says of a file, both channels.
    static QString Run(const QString& program, const QStringList& arguments)
    {
        QProcess process;
        process.setProcessChannelMode(QProcess::MergedChannels);
        process.start(program, arguments);
        process.waitForFinished();
        return QString::fromUtf8(process.readAll());
    }
    /// An object's element without its brackets; empty when it has none. What was told of a file is remembered: who
    /// waits for an object asks for all of them each time, and would take the machine from the one that sends it.
    static QString Element(const QString& path, const char* tag)
    {
        static QHash<QString, QString> told;
        const QFileInfo file(path);
        const QString question = QStringLiteral("%1 %2 %3 %4")
                                     .arg(path, QLatin1String(tag))
                                     .arg(file.size())
                                     .arg(file.lastModified().toMSecsSinceEpoch());
        if (const auto answer = told.constFind(question); answer != told.cend())
            return *answer;
        const QString dump =
            Run(QStringLiteral("dcmdump"), {QStringLiteral("-q"), QStringLiteral("+L"), QStringLiteral("-Un"),
                                            QStringLiteral("+P"), QString::fromLatin1(tag), path});
        static const QRegularExpression value(QStringLiteral(R"(^\(.{9}\) \w\w (\[(.*)\]|(\S+)) +#)"));
        const QRegularExpressionMatch match = value.match(dump);
        if (!match.hasMatch())
            return {};
        return *told.insert(question, match.captured(2) + match.captured(3));
    }

private:
    static sockaddr_in Place(int port)
    {
        sockaddr_in place = {};
        place.sin_family = AF_INET;
        place.sin_port = htons(quint16(port));
        place.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        return place;
    }

    void StartProgram(const QString& program, const QStringList& arguments)
    {
        m_process.start(program, arguments);
        const auto isThere = [this] {
            const int knock = socket(AF_INET, SOCK_STREAM, 0);
            const sockaddr_in place = Place(m_port);
            const bool answered = ::connect(knock, reinterpret_cast<const sockaddr*>(&place), sizeof place) == 0;
            close(knock);
            return answered;
        };
        if (!QTest::qWaitFor(isThere, 10000))
            qFatal("%s didn't start", qPrintable(program));
    }

    QTemporaryDir m_folder;
    QProcess m_process;
    int m_port = 0;
};
