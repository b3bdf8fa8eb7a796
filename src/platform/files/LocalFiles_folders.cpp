#include "contracts/PlatformError.h"
#include "frame/services.h"
#include "platform/files/LocalFiles.h"
#include "platform/files/posix_files.h"

#include <QDir>
#include <QFile>
#include <QScopeGuard>

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <mntent.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>
#include <vector>

using namespace Qt::StringLiterals;
using namespace posix_files;

namespace {

constexpr size_t ChunkBytes = 1024 * 1024;
/// What the machine mounts at its start.
constexpr char MountList[] = "/etc/fstab";

/// Copies all bytes and the time of change. False, with errno, on a fault; `stopped` when the progress said so.
bool CopyBytes(const Descriptor& from, const Descriptor& to, const CopyProgress& progress, bool& stopped)
{
    struct stat facts = {};
    if (fstat(from.Handle(), &facts) != 0)
        return false;
    std::vector<char> chunk(ChunkBytes);
    qint64 done = 0;
    for (;;) {
        stopped = progress && !progress(done, facts.st_size);
        if (stopped)
            return false;
        const ssize_t got = from.Read(chunk.data(), chunk.size());
        if (got < 0)
            return false;
        if (got == 0)
            break;
        if (!to.Write(chunk.data(), static_cast<size_t>(got)))
            return false;
        done += got;
    }
    const timespec times[2] = {facts.st_atim, facts.st_mtim};
    return futimens(to.Handle(), times) == 0 && to.Sync();
}

} // namespace

void LocalFiles::MakePrivateFolder(const QString& path)
{
    const QString fault = u"폴더를 만들 수 없습니다.!!"_s;
    const QByteArray native = WithoutSlash(Native(path));
    MakeFolder(QFile::decodeName(FolderOf(native)));
    if (mkdir(native.constData(), 0700) != 0 && errno != EEXIST)
        ThrowFault(fault, path, errno);
    struct stat facts = {};
    if (lstat(native.constData(), &facts) != 0)
        ThrowFault(fault, path, errno);
    if (!S_ISDIR(facts.st_mode))
        ThrowFault(fault, path, ENOTDIR);
    if (facts.st_uid != geteuid())
        ThrowFault(fault, path, EPERM);
    if ((facts.st_mode & 0777) != 0700 && chmod(native.constData(), 0700) != 0)
        ThrowFault(fault, path, errno);
}

CopyOutcome LocalFiles::CopyToNewFile(const QString& from, const QString& to, const CopyProgress& progress)
{
    const QString fault = u"파일을 복사할 수 없습니다.!!"_s;
    const QByteArray target = Native(to);
    const Descriptor source(Native(from), O_RDONLY | O_NOFOLLOW | O_NONBLOCK);
    struct stat facts = {};
    if (!source.IsOpen() || fstat(source.Handle(), &facts) != 0)
        ThrowFault(fault, from, errno);
    if (!S_ISREG(facts.st_mode))
        ThrowFault(fault, from, EINVAL);
    const QByteArray partial = BesideName(FolderOf(target), ".part");
    Descriptor copy(partial, O_WRONLY | O_CREAT | O_EXCL);
    if (!copy.IsOpen())
        ThrowFault(fault, to, errno);
    const auto remove = qScopeGuard([&] { calls.unlink(partial.constData()); });
    ShareFile(copy.Handle(), FolderOf(target));

    bool stopped = false;
    if (!CopyBytes(source, copy, progress, stopped) || !copy.Close()) {
        if (stopped)
            return CopyOutcome::Stopped;
        ThrowFault(fault, to, errno);
    }
    int later = 0;
    const Placed placed = PlaceNew(partial, target, later);
    if (placed == Placed::NameTaken)
        return CopyOutcome::NameTaken;
    if (placed == Placed::No || !SyncFolder(FolderOf(target)))
        ThrowFault(fault, to, errno);
    return CopyOutcome::Copied;
}

bool LocalFiles::SameContent(const QString& one, const QString& other) const
{
    const Descriptor first(Native(one), O_RDONLY | O_NONBLOCK);
    const Descriptor second(Native(other), O_RDONLY | O_NONBLOCK);
    struct stat firstFacts = {};
    struct stat secondFacts = {};
    if (!first.IsOpen() || !second.IsOpen() || fstat(first.Handle(), &firstFacts) != 0 ||
        fstat(second.Handle(), &secondFacts) != 0 || !S_ISREG(firstFacts.st_mode) || !S_ISREG(secondFacts.st_mode) ||
        firstFacts.st_size != secondFacts.st_size)
        return false;
    QFile left;
    QFile right;
    if (!left.open(first.Handle(), QIODevice::ReadOnly) || !right.open(second.Handle(), QIODevice::ReadOnly))
        return false;
    while (!left.atEnd()) {
        const QByteArray bytes = left.read(ChunkBytes);
        if (bytes.isEmpty() || bytes != right.read(ChunkBytes))
            return false;
    }
    return left.error() == QFileDevice::NoError && right.error() == QFileDevice::NoError;
}

bool LocalFiles::IsMissingMount(const QString& folder) const
{
    const QString place = QDir::cleanPath(NativePath(folder));
    const auto mountPoints = [](const char* list) {
        QStringList points;
        if (FILE* table = setmntent(list, "re")) {
            while (const mntent* entry = getmntent(table))
                points << QDir::cleanPath(QFile::decodeName(entry->mnt_dir));
            endmntent(table);
        }
        return points;
    };
    QStringList missing = mountPoints(MountList);
    const QStringList mounted = mountPoints("/proc/self/mounts");
    missing.removeIf([&](const QString& point) {
        return !point.startsWith(u'/') || mounted.contains(point) ||
               (place != point && !place.startsWith(point + u'/'));
    });
    return !missing.isEmpty();
}

qint64 LocalFiles::FreeBytes(const QString& folder) const
{
    struct statvfs facts = {};
    if (statvfs(Native(folder).constData(), &facts) != 0)
        return -1;
    return static_cast<qint64>(facts.f_bavail) * static_cast<qint64>(facts.f_frsize);
}
