#include "platform/files/LocalFiles.h"

#include "contracts/PlatformError.h"
#include "frame/components.h"
#include "frame/services.h"
#include "platform/files/posix_files.h"
#include "platform/files/WaitingFiles.h"

#include <QDir>
#include <QFile>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <limits>
#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;
using namespace posix_files;

namespace {

constexpr mode_t SharedMode = 0666;
constexpr mode_t PrivateMode = 0600;

/// The file stands under its name, whatever comes: makes that durable, and tells of a fault on the way.
void Settle(const QString& path, int later)
{
    if (!SyncFolder(FolderOf(Native(path))))
        later = errno;
    if (later != 0) {
        throw StoredWithFault(
            u"파일은 저장하였으나 저장장치에서 오류가 발생하였습니다.!! 관리자에게 알리세요.!! (%1: %2)"_s.arg(
                NativePath(path), ErrorText(later)));
    }
}

/// Lets `place` bring a whole, synced file under its name. On a fault nothing is left of it. False when the name is
/// taken.
template <class PlaceCall>
bool Place(const QString& path, const QByteArray& partial, bool whole, PlaceCall place)
{
    const QByteArray target = Native(path);
    int later = 0;
    const Placed placed = whole ? place(partial, target, later) : Placed::No;
    if (placed != Placed::Yes) {
        const int error = errno;
        calls.unlink(partial.constData());
        if (placed == Placed::No)
            ThrowFault(u"파일을 저장할 수 없습니다.!!"_s, path, error);
        return false;
    }
    Settle(path, later);
    return true;
}

/// The same for content that has to be written first.
template <class PlaceCall>
bool PutInPlace(const QString& path, const QByteArray& content, mode_t mode, PlaceCall place)
{
    const QByteArray folder = FolderOf(Native(path));
    const QByteArray partial = BesideName(folder, ".part");

    Descriptor file(partial, O_WRONLY | O_CREAT | O_EXCL, mode);
    if (!file.IsOpen())
        ThrowFault(u"파일을 저장할 수 없습니다.!!"_s, path, errno);
    if (mode != PrivateMode)
        ShareFile(file.Handle(), folder);
    const bool whole = file.Write(content) && file.Sync() && file.Close();
    return Place(path, partial, whole, place);
}

Placed Replace(const QByteArray& partial, const QByteArray& target, int& /*later*/)
{
    return std::rename(partial.constData(), target.constData()) == 0 ? Placed::Yes : Placed::No;
}

} // namespace

bool LocalFiles::FolderExists(const QString& path) const
{
    struct stat facts = {};
    return stat(Native(path).constData(), &facts) == 0 && S_ISDIR(facts.st_mode);
}

void LocalFiles::MakeFolder(const QString& path)
{
    if (FolderExists(path))
        return;
    const QByteArray native = WithoutSlash(Native(path));
    const QByteArray above = FolderOf(native);
    if (above != native && !FolderExists(QFile::decodeName(above)))
        MakeFolder(QFile::decodeName(above));
    MakeOneFolder(path);
}

void LocalFiles::MakeOneFolder(const QString& path)
{
    const QByteArray native = WithoutSlash(Native(path));
    const QString fault = u"폴더를 만들 수 없습니다.!!"_s;
    if (mkdir(native.constData(), 0777) != 0) {
        const int error = errno;
        // Another station was quicker.
        if (error == EEXIST && FolderExists(path))
            return;
        ThrowFault(fault, path, error);
    }
    ShareFolder(native);
    if (!SyncFolder(FolderOf(native)))
        ThrowFault(fault, path, errno);
}

bool LocalFiles::FileExists(const QString& path) const
{
    struct stat facts = {};
    return stat(Native(path).constData(), &facts) == 0 && !S_ISDIR(facts.st_mode);
}

FileKind LocalFiles::KindOf(const QString& path) const
{
    struct stat facts = {};
    if (lstat(Native(path).constData(), &facts) != 0)
        return FileKind::None;
    return S_ISREG(facts.st_mode) ? FileKind::File : FileKind::Other;
}

QStringList LocalFiles::FilesStartingWith(const QString& folder, const QString& prefix) const
{
    const QByteArray native = Native(folder);
    const std::unique_ptr<DIR, int (*)(DIR*)> list(opendir(native.constData()), closedir);
    if (list == nullptr)
        return {};
    // A year's folder holds a hundred thousand names: no question is asked about one whose kind the list tells.
    QStringList names;
    const QByteArray beginning = QFile::encodeName(prefix);
    while (const dirent* entry = readdir(list.get())) {
        if (std::strncmp(entry->d_name, beginning.constData(), static_cast<size_t>(beginning.size())) != 0)
            continue;
        struct stat facts = {};
        const bool isFile = entry->d_type == DT_REG ||
                            ((entry->d_type == DT_UNKNOWN || entry->d_type == DT_LNK) &&
                             fstatat(dirfd(list.get()), entry->d_name, &facts, 0) == 0 && S_ISREG(facts.st_mode));
        if (isFile)
            names.append(QFile::decodeName(entry->d_name));
    }
    names.sort();
    return names;
}

QByteArray LocalFiles::ReadFile(const QString& path) const
{
    errno = 0;
    QFile file(NativePath(path));
    const auto require = [&](bool isRead) {
        if (!isRead)
            ThrowFault(u"파일을 읽을 수 없습니다.!!"_s, path, errno != 0 ? errno : EISDIR);
    };
    require(file.open(QIODevice::ReadOnly));
    QByteArray content = file.readAll();
    require(file.error() == QFileDevice::NoError);
    return content;
}

QByteArray LocalFiles::ReadArchivedFile(const QString& path) const
{
    return ReadArchivedPiece(path, 0, std::numeric_limits<qint64>::max());
}

QByteArray LocalFiles::ReadArchivedPiece(const QString& path, qint64 at, qint64 bytes) const
{
    const QString fault = u"파일을 읽을 수 없습니다.!!"_s;
    const Descriptor handle(Native(path), O_RDONLY | O_NOFOLLOW | O_NONBLOCK);
    if (!handle.IsOpen())
        ThrowFault(fault, path, errno);
    struct stat facts = {};
    if (fstat(handle.Handle(), &facts) != 0 || !S_ISREG(facts.st_mode))
        ThrowFault(fault, path, EINVAL);
    if (at > 0 && lseek(handle.Handle(), at, SEEK_SET) < 0)
        ThrowFault(fault, path, errno);
    QByteArray content(qBound<qint64>(0, facts.st_size - at, bytes), Qt::Uninitialized);
    qsizetype done = 0;
    while (done < content.size()) {
        const ssize_t got = handle.Read(content.data() + done, static_cast<size_t>(content.size() - done));
        if (got < 0)
            ThrowFault(fault, path, errno);
        if (got == 0)
            break;
        done += got;
    }
    content.truncate(done);
    return content;
}

void LocalFiles::WriteWholeFile(const QString& path, const QByteArray& content)
{
    PutInPlace(path, content, SharedMode, Replace);
}

void LocalFiles::WritePrivateFile(const QString& path, const QByteArray& content)
{
    PutInPlace(path, content, PrivateMode, Replace);
}

bool LocalFiles::WriteNewFile(const QString& path, const QByteArray& content)
{
    return PutInPlace(path, content, SharedMode, PlaceNew);
}

bool LocalFiles::PlaceNewFile(const QString& partial, const QString& path)
{
    const QByteArray native = Native(partial);
    const Descriptor file(native, O_RDONLY | O_NOFOLLOW);
    int later = 0;
    const Placed placed = file.IsOpen() && file.Sync() ? PlaceNew(native, Native(path), later) : Placed::No;
    if (placed == Placed::No)
        ThrowFault(u"파일을 저장할 수 없습니다.!!"_s, path, errno);
    if (placed == Placed::Yes)
        Settle(path, later);
    return placed == Placed::Yes;
}

bool LocalFiles::CreateExclusively(const QString& path, const QByteArray& content)
{
    const QString fault = u"파일을 만들 수 없습니다.!!"_s;
    const QByteArray target = Native(path);
    const QByteArray folder = FolderOf(target);
    // Whoever finds the file finds its content in it, even if this process dies here: it gets its name last.
    {
        Descriptor file(folder, O_WRONLY | O_TMPFILE);
        if (file.IsOpen()) {
            ShareFile(file.Handle(), folder);
            if (!file.Write(content))
                ThrowFault(fault, path, errno);
            const QByteArray nameless = "/proc/self/fd/" + QByteArray::number(file.Handle());
            if (linkat(AT_FDCWD, nameless.constData(), AT_FDCWD, target.constData(), AT_SYMLINK_FOLLOW) == 0)
                return true;
            if (errno == EEXIST)
                return false;
        }
    }
    const QByteArray partial = BesideName(folder, ".part");
    Descriptor file(partial, O_WRONLY | O_CREAT | O_EXCL);
    if (!file.IsOpen())
        ThrowFault(fault, path, errno);
    ShareFile(file.Handle(), folder);
    int later = 0;
    const bool whole = file.Write(content) && file.Close();
    const Placed placed = whole ? PlaceNew(partial, target, later) : Placed::No;
    if (placed == Placed::Yes)
        return true;
    const int error = errno;
    calls.unlink(partial.constData());
    if (placed == Placed::No)
        ThrowFault(fault, path, error);
    return false;
}

qint64 LocalFiles::AgeMs(const QString& path) const
{
    const QByteArray native = Native(path);
    struct stat facts = {};
    if (stat(native.constData(), &facts) != 0)
        return -1;
    // The clock of a share is its server's: a file made there now tells what time it is.
    const QByteArray probe = BesideName(FolderOf(native), ".probe");
    struct stat now = {};
    {
        const Descriptor handle(probe, O_WRONLY | O_CREAT | O_EXCL, PrivateMode);
        if (!handle.IsOpen() || fstat(handle.Handle(), &now) != 0)
            ThrowFault(u"파일을 만들 수 없습니다.!!"_s, path, errno);
    }
    calls.unlink(probe.constData());
    const auto milliseconds = [](const timespec& time) { return qint64(time.tv_sec) * 1000 + time.tv_nsec / 1000000; };
    return qMax<qint64>(0, milliseconds(now.st_mtim) - milliseconds(facts.st_mtim));
}

QDateTime LocalFiles::LastModified(const QString& path) const
{
    struct stat facts = {};
    if (lstat(Native(path).constData(), &facts) != 0)
        return {};
    return QDateTime::fromSecsSinceEpoch(facts.st_mtim.tv_sec);
}

QByteArray LocalFiles::VersionOf(const QString& path) const
{
    struct stat facts = {};
    if (lstat(Native(path).constData(), &facts) != 0)
        return {};
    return QByteArray::number(qlonglong{facts.st_size}) + ' ' + QByteArray::number(qlonglong{facts.st_mtim.tv_sec}) +
           '.' + QByteArray::number(qlonglong{facts.st_mtim.tv_nsec});
}

void LocalFiles::RenameFile(const QString& from, const QString& to)
{
    if (std::rename(Native(from).constData(), Native(to).constData()) != 0)
        ThrowFault(u"파일 이름을 바꿀 수 없습니다.!!"_s, from, errno);
}

void LocalFiles::DeleteFile(const QString& path)
{
    if (calls.unlink(Native(path).constData()) != 0 && errno != ENOENT)
        ThrowFault(u"파일을 지울 수 없습니다.!!"_s, path, errno);
}

void RegisterFiles()
{
    InstallService<FileStore>(std::make_unique<WaitingFiles>(std::make_shared<LocalFiles>()));
}
