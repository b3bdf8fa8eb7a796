#include "platform/files/LocalFiles.h"

#include "contracts/components.h"
#include "contracts/PlatformError.h"
#include "platform/files/posix_files.h"

#include <QDir>
#include <QFile>

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;
using namespace posix_files;

namespace {

/// Writes a partial file beside the target, whole and synced, and lets `place` bring it under its name. On a fault
/// nothing is left of it.
template <class Place>
void PutInPlace(const QString& path, const QByteArray& content, Place place)
{
    const QString fault = u"파일을 저장할 수 없습니다.!!"_s;
    const QByteArray target = Native(path);
    const QByteArray folder = FolderOf(target);
    const QByteArray partial = BesideName(folder, ".part");

    Descriptor file(partial, O_WRONLY | O_CREAT | O_EXCL);
    if (!file.IsOpen())
        ThrowFault(fault, path, errno);
    const bool whole = file.Write(content) && fsync(file.Handle()) == 0 && file.Close() &&
                       place(partial.constData(), target.constData());
    if (!whole) {
        const int error = errno;
        unlink(partial.constData());
        ThrowFault(fault, path, error);
    }
    if (!SyncFolder(folder))
        ThrowFault(fault, path, errno);
}

} // namespace

bool LocalFiles::FolderExists(const QString& path) const
{
    struct stat facts = {};
    return stat(Native(path).constData(), &facts) == 0 && S_ISDIR(facts.st_mode);
}

void LocalFiles::MakeFolder(const QString& path)
{
    const QByteArray native = Native(path);
    if (FolderExists(path))
        return;
    if (!QDir().mkpath(QFile::decodeName(native)) && !FolderExists(path))
        ThrowFault(u"폴더를 만들 수 없습니다.!!"_s, path, errno);
}

bool LocalFiles::FileExists(const QString& path) const
{
    struct stat facts = {};
    return stat(Native(path).constData(), &facts) == 0 && !S_ISDIR(facts.st_mode);
}

QStringList LocalFiles::FilesStartingWith(const QString& folder, const QString& prefix) const
{
    QStringList names;
    const QStringList all = QDir(NativePath(folder)).entryList(QDir::Files | QDir::Hidden, QDir::Name);
    for (const QString& name : all) {
        if (name.startsWith(prefix))
            names.append(name);
    }
    return names;
}

QByteArray LocalFiles::ReadFile(const QString& path) const
{
    QFile file(NativePath(path));
    if (!file.open(QIODevice::ReadOnly))
        throw PlatformError(u"파일을 읽을 수 없습니다.!! (%1: %2)"_s.arg(NativePath(path), file.errorString()));
    QByteArray content = file.readAll();
    if (file.error() != QFileDevice::NoError)
        throw PlatformError(u"파일을 읽을 수 없습니다.!! (%1: %2)"_s.arg(NativePath(path), file.errorString()));
    return content;
}

void LocalFiles::WriteWholeFile(const QString& path, const QByteArray& content)
{
    PutInPlace(path, content,
               [](const char* partial, const char* target) { return std::rename(partial, target) == 0; });
}

bool LocalFiles::WriteNewFile(const QString& path, const QByteArray& content)
{
    bool there = false;
    PutInPlace(path, content, [&there](const char* partial, const char* target) {
        // A link is the one step that every station's file server refuses when the name is taken.
        if (link(partial, target) == 0)
            return unlink(partial) == 0;
        if (errno == EEXIST) {
            there = true;
            return unlink(partial) == 0;
        }
        if (errno != EPERM && errno != ENOTSUP && errno != EOPNOTSUPP && errno != ENOSYS && errno != EMLINK)
            return false;
        // No links on this share: the claim of the number is then what keeps others away.
        struct stat facts = {};
        if (stat(target, &facts) == 0) {
            there = true;
            return unlink(partial) == 0;
        }
        return std::rename(partial, target) == 0;
    });
    return !there;
}

bool LocalFiles::CreateExclusively(const QString& path, const QByteArray& content)
{
    const QByteArray native = Native(path);
    Descriptor file(native, O_WRONLY | O_CREAT | O_EXCL);
    if (!file.IsOpen()) {
        if (errno == EEXIST)
            return false;
        ThrowFault(u"파일을 만들 수 없습니다.!!"_s, path, errno);
    }
    if (!file.Write(content) || !file.Close()) {
        const int error = errno;
        unlink(native.constData());
        ThrowFault(u"파일을 만들 수 없습니다.!!"_s, path, error);
    }
    return true;
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
        const Descriptor handle(probe, O_WRONLY | O_CREAT | O_EXCL);
        if (!handle.IsOpen() || fstat(handle.Handle(), &now) != 0)
            ThrowFault(u"파일을 만들 수 없습니다.!!"_s, path, errno);
    }
    unlink(probe.constData());
    const auto milliseconds = [](const timespec& time) { return qint64(time.tv_sec) * 1000 + time.tv_nsec / 1000000; };
    return qMax<qint64>(0, milliseconds(now.st_mtim) - milliseconds(facts.st_mtim));
}

void LocalFiles::RenameFile(const QString& from, const QString& to)
{
    if (std::rename(Native(from).constData(), Native(to).constData()) != 0)
        ThrowFault(u"파일 이름을 바꿀 수 없습니다.!!"_s, from, errno);
}

void LocalFiles::DeleteFile(const QString& path)
{
    if (unlink(Native(path).constData()) != 0 && errno != ENOENT)
        ThrowFault(u"파일을 지울 수 없습니다.!!"_s, path, errno);
}

void RegisterFiles()
{
    InstallService<FileStore>(std::make_unique<LocalFiles>());
}
