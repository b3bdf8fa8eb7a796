#include "platform/files/posix_files.h"

#include "contracts/files.h"
#include "contracts/PlatformError.h"

#include <QDateTime>
#include <QFile>

#include <atomic>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

void posix_files::ThrowFault(const QString& what, const QString& path, int error)
{
    throw PlatformError(u"%1 (%2: %3)"_s.arg(what, NativePath(path), QString::fromLocal8Bit(std::strerror(error))));
}

QByteArray posix_files::Native(const QString& path)
{
    if (path.contains(QChar(u'\0')))
        throw PlatformError(u"경로에 쓸 수 없는 글자가 있습니다.!!"_s);
    return QFile::encodeName(NativePath(path));
}

QByteArray posix_files::FolderOf(const QByteArray& native)
{
    const qsizetype slash = native.lastIndexOf('/');
    if (slash < 0)
        return QByteArray(".");
    return slash == 0 ? QByteArray("/") : native.left(slash);
}

QByteArray posix_files::MachinePrefix()
{
    char host[64] = {};
    if (gethostname(host, sizeof host - 1) != 0)
        host[0] = '\0';
    return PartialPrefix + QByteArray(host) + '-';
}

QByteArray posix_files::BesideName(const QByteArray& folder, const char* ending)
{
    // From the time of the start on: a dead program of the same number may have left its names behind.
    static std::atomic<quint64> counter = static_cast<quint64>(QDateTime::currentMSecsSinceEpoch());
    return folder + '/' + MachinePrefix() + QByteArray::number(getpid()) + '-' + QByteArray::number(++counter) + ending;
}

bool posix_files::SyncFolder(const QByteArray& folder)
{
    const Descriptor handle(folder, O_RDONLY | O_DIRECTORY);
    if (!handle.IsOpen())
        return errno == EACCES || errno == ENOTSUP;
    if (fsync(handle.Handle()) == 0)
        return true;
    // Some shares can't sync a folder and say so; what they store is as safe as it gets.
    return errno == EINVAL || errno == ENOTSUP || errno == EOPNOTSUPP || errno == ENOSYS || errno == EBADF;
}

posix_files::Descriptor::Descriptor(const QByteArray& native, int flags)
{
    do {
        m_fd = open(native.constData(), flags | O_CLOEXEC, 0666);
    } while (m_fd < 0 && errno == EINTR);
}

posix_files::Descriptor::~Descriptor()
{
    if (m_fd >= 0)
        close(m_fd);
}

bool posix_files::Descriptor::Write(const char* bytes, size_t count) const
{
    while (count > 0) {
        const ssize_t written = write(m_fd, bytes, count);
        if (written < 0 && errno == EINTR)
            continue;
        if (written <= 0) {
            if (written == 0)
                errno = EIO;
            return false;
        }
        bytes += written;
        count -= static_cast<size_t>(written);
    }
    return true;
}

ssize_t posix_files::Descriptor::Read(char* bytes, size_t count) const
{
    ssize_t got = 0;
    do {
        got = read(m_fd, bytes, count);
    } while (got < 0 && errno == EINTR);
    return got;
}

bool posix_files::Descriptor::Close()
{
    const int fd = m_fd;
    m_fd = -1;
    return close(fd) == 0 || errno == EINTR;
}
