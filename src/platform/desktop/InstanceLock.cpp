#include "platform/desktop/InstanceLock.h"

#include <QFileInfo>
#include <QSysInfo>

#include <unistd.h>

using namespace Qt::StringLiterals;

InstanceLock::InstanceLock(const QString& runtimeFolder, const QString& programFolder)
{
    const QFileInfo runtime(runtimeFolder);
    QString path = runtimeFolder + u"/capture-station.lock"_s;
    // The program's folder may be shared by several machines and users.
    if (runtimeFolder.isEmpty() || !runtime.isDir() || !runtime.isWritable())
        path = u"%1/capture-station-%2-%3.lock"_s.arg(programFolder, QSysInfo::machineHostName()).arg(getuid());
    m_file = std::make_unique<QLockFile>(path);
    // A station runs for days; only a dead process makes its lock stale.
    m_file->setStaleLockTime(0);
}

bool InstanceLock::HeldByAnother()
{
    if (m_file->isLocked() || m_file->tryLock(0))
        return false;
    // A folder in which no lock can be made says nothing about another instance.
    return m_file->error() == QLockFile::LockFailedError;
}
