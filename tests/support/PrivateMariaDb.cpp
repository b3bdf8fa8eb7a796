#include "support/PrivateMariaDb.h"

#include <QDateTime>
#include <QDeadlineTimer>
#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>

#include <csignal>
#include <sys/prctl.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {
constexpr int StartLimitMs = 60000;
constexpr int StopLimitMs = 30000;

/// Debian keeps the server outside of an ordinary user's search path.
QString Program(const QString& name)
{
    const QString found = QStandardPaths::findExecutable(name);
    return found.isEmpty() ? QStandardPaths::findExecutable(name, {u"/usr/sbin"_s, u"/usr/local/sbin"_s}) : found;
}

bool Copy(const QString& from, const QString& to)
{
    return QProcess::execute(u"cp"_s, {u"-r"_s, u"--sparse=always"_s, from, to}) == 0;
}

QStringList AsRoot()
{
    return geteuid() == 0 ? QStringList{u"--user=root"_s} : QStringList{};
}
} // namespace

PrivateMariaDb::~PrivateMariaDb()
{
    Kill();
}

QString PrivateMariaDb::Socket() const
{
    return m_folder.filePath(u"mariadb.sock"_s);
}

bool PrivateMariaDb::Start(const QString& address, const QString& certificate)
{
    if (!QDir(m_folder.filePath(u"data/mysql"_s)).exists() && !TakeData())
        return false;
    const QString program = Program(u"mariadbd"_s);
    if (program.isEmpty()) {
        m_fault = u"mariadbd is not installed"_s;
        return false;
    }
    m_server.setProcessChannelMode(QProcess::MergedChannels);
    m_server.setChildProcessModifier([] { prctl(PR_SET_PDEATHSIG, SIGKILL); });
    const QStringList encryption{u"--ssl-cert=%1"_s.arg(certificate), u"--ssl-key=%1"_s.arg(certificate)};
    m_server.start(
        program, QStringList{u"--no-defaults"_s} + AsRoot() +
                     QStringList{u"--datadir=%1"_s.arg(m_folder.filePath(u"data"_s)), u"--socket=%1"_s.arg(Socket()),
                                 u"--pid-file=%1"_s.arg(m_folder.filePath(u"mariadb.pid"_s)),
                                 u"--tmpdir=%1"_s.arg(m_folder.path()),
                                 u"--skip-networking=%1"_s.arg(address.isEmpty()), u"--bind-address=%1"_s.arg(address),
                                 u"--port=%1"_s.arg(Port), u"--innodb-buffer-pool-size=32M"_s,
                                 u"--key-buffer-size=1M"_s, u"--aria-pagecache-buffer-size=1M"_s,
                                 u"--performance-schema=OFF"_s, u"--innodb-flush-log-at-trx-commit=1"_s} +
                     qEnvironmentVariable("STATION_SERVER_OPTIONS").split(u' ', Qt::SkipEmptyParts) +
                     (certificate.isEmpty() ? QStringList() : encryption));
    return WaitUntilReady();
}

bool PrivateMariaDb::TakeData()
{
    const QString data = m_folder.filePath(u"data"_s);
    // Another release of the server, or another user, makes its own.
    const QString kept =
        QStringLiteral(STATION_MARIADB_DATA) +
        u".%1.%2"_s.arg(geteuid()).arg(QFileInfo(Program(u"mariadbd"_s)).lastModified().toSecsSinceEpoch());
    if (QDir(kept).exists() && Copy(kept, data))
        return true;
    QDir(data).removeRecursively();
    if (!MakeData())
        return false;
    // Whole or not at all: others may make theirs at the same time.
    const QString own = u"%1.%2"_s.arg(kept).arg(getpid());
    if (!Copy(data, own) || !QDir().rename(own, kept))
        QDir(own).removeRecursively();
    return true;
}

bool PrivateMariaDb::MakeData()
{
    QProcess install;
    install.setProcessChannelMode(QProcess::MergedChannels);
    // A server that starts clears away the temporary tables of all that share a folder for them.
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(u"TMPDIR"_s, m_folder.path());
    install.setProcessEnvironment(environment);
    install.start(Program(u"mariadb-install-db"_s),
                  QStringList{u"--no-defaults"_s} + AsRoot() +
                      QStringList{u"--datadir=%1"_s.arg(m_folder.filePath(u"data"_s)),
                                  u"--auth-root-authentication-method=normal"_s, u"--skip-test-db"_s,
                                  // A machine whose own name nobody resolves has a server all the same.
                                  u"--force"_s, u"--innodb-log-file-size=8M"_s});
    if (install.waitForFinished(StartLimitMs) && install.exitStatus() == QProcess::NormalExit &&
        install.exitCode() == 0)
        return true;
    m_fault = u"mariadb-install-db: %1 %2"_s.arg(install.errorString(), QString::fromUtf8(install.readAll()));
    return false;
}

bool PrivateMariaDb::WaitUntilReady()
{
    QByteArray said;
    const QDeadlineTimer limit(StartLimitMs);
    while (!limit.hasExpired() && m_server.waitForReadyRead(static_cast<int>(limit.remainingTime()))) {
        said += m_server.readAll();
        if (said.contains("ready for connections"))
            return true;
    }
    m_fault = u"mariadbd: %1 %2"_s.arg(m_server.errorString(), QString::fromUtf8(said + m_server.readAll()));
    Kill();
    return false;
}

void PrivateMariaDb::Stop()
{
    m_server.terminate();
    if (!m_server.waitForFinished(StopLimitMs))
        Kill();
}

void PrivateMariaDb::Kill()
{
    m_server.kill();
    m_server.waitForFinished(StopLimitMs);
}

void PrivateMariaDb::Freeze()
{
    kill(static_cast<pid_t>(m_server.processId()), SIGSTOP);
}

void PrivateMariaDb::Thaw()
{
    kill(static_cast<pid_t>(m_server.processId()), SIGCONT);
}

bool PrivateMariaDb::Run(const QString& statements, const QString& database)
{
    QProcess client;
    client.setProcessChannelMode(QProcess::MergedChannels);
    client.start(Program(u"mariadb"_s), {u"--no-defaults"_s, u"--user=root"_s, u"--socket=%1"_s.arg(Socket()),
                                         u"--default-character-set=utf8mb4"_s, u"--database=%1"_s.arg(database)});
    client.write(statements.toUtf8());
    client.closeWriteChannel();
    if (client.waitForFinished(StopLimitMs) && client.exitStatus() == QProcess::NormalExit && client.exitCode() == 0)
        return true;
    m_fault = u"mariadb: %1 %2"_s.arg(client.errorString(), QString::fromUtf8(client.readAll()));
    return false;
}
