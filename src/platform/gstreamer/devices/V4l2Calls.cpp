#include "platform/gstreamer/devices/V4l2Calls.h"

#include <QDir>
#include <QFile>

#include <cerrno>
#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

QList<V4l2Node> KernelV4l2Calls::Nodes() const
{
    QList<std::pair<int, V4l2Node>> numbered;
    const QStringList names = QDir(u"/dev"_s).entryList({u"video*"_s}, QDir::System | QDir::Files);
    for (const QString& name : names) {
        bool isNumber = false;
        const int number = name.mid(5).toInt(&isNumber);
        const QString path = u"/dev/"_s + name;
        struct stat status = {};
        if (!isNumber || ::stat(QFile::encodeName(path).constData(), &status) != 0 || !S_ISCHR(status.st_mode))
            continue;
        const qint64 stamp = (qint64(status.st_ctim.tv_sec) * 1'000'000'000 + status.st_ctim.tv_nsec) ^
                             (qint64(status.st_rdev) << 40) ^ qint64(status.st_ino);
        numbered.append({number, {path, stamp}});
    }
    std::sort(numbered.begin(), numbered.end(), [](const auto& a, const auto& b) { return a.first < b.first; });
    QList<V4l2Node> nodes;
    for (const auto& [number, node] : numbered)
        nodes.append(node);
    return nodes;
}

int KernelV4l2Calls::Open(const QString& path)
{
    const int descriptor = ::open(QFile::encodeName(path).constData(), O_RDWR | O_NONBLOCK | O_CLOEXEC);
    return descriptor >= 0 ? descriptor : -errno;
}

void KernelV4l2Calls::Close(int descriptor)
{
    ::close(descriptor);
}

int KernelV4l2Calls::Request(int descriptor, unsigned long request, void* argument)
{
    int result = 0;
    do
        result = ::ioctl(descriptor, request, argument);
    while (result < 0 && errno == EINTR);
    return result < 0 ? -errno : 0;
}
