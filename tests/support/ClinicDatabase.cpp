#include "support/ClinicDatabase.h"

#include <QFile>
#include <QProcess>

using namespace Qt::StringLiterals;

ClinicDatabase::ClinicDatabase(const QString& driver, PrivateMariaDb* server)
    : m_server(driver == u"QSQLITE" ? nullptr : server)
{
    static int databases = 0;
    m_settings.driver = driver;
    if (IsServer()) {
        m_settings.name = u"clinic%1"_s.arg(++databases);
        m_settings.socket = m_server->Socket();
        m_settings.user = u"root"_s;
    } else {
        m_settings.name = m_folder.filePath(u"의원 자료#%1.sqlite"_s.arg(++databases));
    }
}

bool ClinicDatabase::Make(const QStringList& tables, const QString& rows)
{
    QString statements;
    for (const QString& table : tables) {
        QFile script(u"" STATION_SOURCE_FOLDER "/sql/%1/%2.sql"_s.arg(IsServer() ? u"mariadb"_s : u"sqlite"_s, table));
        if (!script.open(QIODevice::ReadOnly)) {
            m_fault = script.errorString();
            return false;
        }
        statements += QString::fromUtf8(script.readAll()) + u'\n';
    }
    statements += rows;
    if (IsServer()) {
        const QString name = m_settings.name;
        const QString made = u"CREATE DATABASE %1 CHARACTER SET utf8mb4 COLLATE utf8mb4_bin;\nUSE %1;\n"_s.arg(name);
        if (m_server->Run(made + statements))
            return true;
        m_fault = m_server->Fault();
        return false;
    }
    // Another one of the same is a copy.
    static QHash<QString, QByteArray> files;
    QFile file(m_settings.name);
    if (const auto made = files.constFind(statements); made != files.cend())
        return file.open(QIODevice::WriteOnly) && file.write(*made) == made->size();
    if (!Run(statements))
        return false;
    if (file.open(QIODevice::ReadOnly))
        files.insert(statements, file.readAll());
    return true;
}

bool ClinicDatabase::Run(const QString& statements)
{
    if (IsServer()) {
        if (m_server->Run(statements, m_settings.name))
            return true;
        m_fault = m_server->Fault();
        return false;
    }
    QProcess client;
    client.setProcessChannelMode(QProcess::MergedChannels);
    client.start(u"sqlite3"_s, {u"-bail"_s, m_settings.name});
    client.write(statements.toUtf8());
    client.closeWriteChannel();
    if (client.waitForFinished() && client.exitStatus() == QProcess::NormalExit && client.exitCode() == 0)
        return true;
    m_fault = u"sqlite3: %1 %2"_s.arg(client.errorString(), QString::fromUtf8(client.readAll()));
    return false;
}
