#include "platform/files/posix_files.h"

#include "contracts/files.h"
#include "contracts/PlatformError.h"
#include "platform/files/process_mark.h"

#include <QFile>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

int RenameToNew(const char* from, const char* to)
{
    return renameat2(AT_FDCWD, from, AT_FDCWD, to, RENAME_NOREPLACE);
}

/// The share has no such operation; any other error is a real one.
bool IsNotOffered(int error)
{
    return error == EPERM || error == EINVAL || error == ENOTSUP || error == EOPNOTSUPP || error == ENOSYS ||
           error == EMLINK;
}

/// Rights of something new: those for others only as far as the folder gives them some.
mode_t WithoutUninvited(mode_t rights, mode_t above)
{
    return rights & ~(static_cast<mode_t>(S_IRWXO) & ~above);
}

struct Reason
{
    int error;
    const char16_t* text;
};

/// The usual reasons, as the operator and whoever helps him on the telephone say them.
constexpr Reason Reasons[] = {
    {EACCES, u"권한 없음"},
    {EPERM, u"권한 없음"},
    {ENOENT, u"파일이나 폴더가 없음"},
    {EEXIST, u"같은 이름이 이미 있음"},
    {ENOSPC, u"남은 공간 없음"},
    {EDQUOT, u"허용된 공간을 모두 사용함"},
    {EFBIG, u"파일이 너무 큼"},
    {EROFS, u"읽기 전용"},
    {EIO, u"저장장치 오류"},
    {ENOTDIR, u"폴더가 아님"},
    {EISDIR, u"파일이 아니라 폴더임"},
    {ENOTEMPTY, u"폴더가 비어 있지 않음"},
    {ENAMETOOLONG, u"이름이 너무 긺"},
    {ELOOP, u"링크를 따라갈 수 없음"},
    {EXDEV, u"서로 다른 디스크"},
    {EBUSY, u"다른 프로그램이 사용 중"},
    {ETXTBSY, u"다른 프로그램이 사용 중"},
    {EMFILE, u"열린 파일이 너무 많음"},
    {ENFILE, u"열린 파일이 너무 많음"},
    {EINVAL, u"사용할 수 없는 파일"},
    {ENOTSUP, u"저장장치가 지원하지 않음"},
    {ENOSYS, u"저장장치가 지원하지 않음"},
    {ENODEV, u"장치가 없음"},
    {ENXIO, u"장치가 없음"},
    {ESTALE, u"공유에서 사라진 파일"},
    {ETIMEDOUT, u"공유가 응답하지 않음"},
    {EHOSTDOWN, u"공유가 응답하지 않음"},
    {EHOSTUNREACH, u"공유가 응답하지 않음"},
    {ENETUNREACH, u"공유가 응답하지 않음"},
    {ENOTCONN, u"공유가 연결되어 있지 않음"},
    {ECONNRESET, u"공유와의 연결이 끊김"},
};

} // namespace

posix_files::SystemCalls posix_files::calls = {::link, ::unlink, RenameToNew, ::fsync, ::close};

QString posix_files::ErrorText(int error)
{
    const auto known = std::ranges::find(Reasons, error, &Reason::error);
    return known != std::end(Reasons) ? QString::fromUtf16(known->text) : QString::fromLocal8Bit(std::strerror(error));
}

void posix_files::ThrowFault(const QString& what, const QString& path, int error)
{
    throw PlatformError(u"%1 (%2: %3)"_s.arg(what, NativePath(path), ErrorText(error)));
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

QByteArray posix_files::WithoutSlash(QByteArray native)
{
    while (native.size() > 1 && native.endsWith('/'))
        native.chop(1);
    return native;
}

QByteArray posix_files::BesideName(const QByteArray& folder, const char* ending)
{
    static std::atomic<unsigned> counter = 0;
    return folder + '/' + PartialPrefix + process_mark::Own().toLatin1() + '-' + QByteArray::number(++counter) + ending;
}

QString posix_files::MarkInName(const QString& name)
{
    const QString prefix = QString::fromLatin1(PartialPrefix);
    if (!name.startsWith(prefix))
        return {};
    return name.mid(prefix.size()).section(u'-', 0, 0);
}

void posix_files::ShareFile(int handle, const QByteArray& folder)
{
    struct stat above = {};
    struct stat facts = {};
    if (stat(folder.constData(), &above) != 0 || fstat(handle, &facts) != 0)
        return;
    const mode_t wanted = WithoutUninvited((facts.st_mode & 07777) | 0640 | (above.st_mode & S_IWGRP), above.st_mode);
    if (wanted != (facts.st_mode & 07777)) [[maybe_unused]]
        const int refused = fchmod(handle, wanted);
}

void posix_files::ShareFolder(const QByteArray& native)
{
    struct stat above = {};
    struct stat facts = {};
    if (stat(FolderOf(native).constData(), &above) != 0 || stat(native.constData(), &facts) != 0)
        return;
    if (above.st_gid != facts.st_gid) [[maybe_unused]]
        const int refused = chown(native.constData(), static_cast<uid_t>(-1), above.st_gid);
    const mode_t wanted =
        WithoutUninvited((facts.st_mode & 07777) | 0750 | (above.st_mode & (S_ISGID | S_IWGRP)), above.st_mode);
    if (wanted != (facts.st_mode & 07777)) [[maybe_unused]]
        const int refused = chmod(native.constData(), wanted);
}

bool posix_files::SyncFolder(const QByteArray& folder)
{
    const Descriptor handle(folder, O_RDONLY | O_DIRECTORY);
    if (!handle.IsOpen())
        return errno == EACCES || errno == ENOTSUP;
    if (handle.Sync())
        return true;
    // Some shares can't sync a folder and say so; what they store is as safe as it gets.
    return errno == EINVAL || errno == ENOTSUP || errno == EOPNOTSUPP || errno == ENOSYS || errno == EBADF;
}

posix_files::Placed posix_files::PlaceNew(const QByteArray& partial, const QByteArray& target, int& fault)
{
    fault = 0;
    // A link is the one step that every station's file server refuses when the name is taken.
    if (calls.link(partial.constData(), target.constData()) == 0) {
        if (calls.unlink(partial.constData()) != 0)
            fault = errno;
        return Placed::Yes;
    }
    if (errno == EEXIST)
        return Placed::NameTaken;
    if (!IsNotOffered(errno))
        return Placed::No;
    if (calls.renameToNew(partial.constData(), target.constData()) == 0)
        return Placed::Yes;
    if (errno == EEXIST)
        return Placed::NameTaken;
    if (!IsNotOffered(errno))
        return Placed::No;

    // Nothing there asks and renames in one step: a claim of the name keeps the other stations away meanwhile.
    const QByteArray claim =
        FolderOf(target) + '/' + PartialPrefix + "claim-" + target.mid(target.lastIndexOf('/') + 1);
    const Descriptor held(claim, O_WRONLY | O_CREAT | O_EXCL, 0600);
    if (!held.IsOpen())
        return errno == EEXIST ? Placed::NameTaken : Placed::No;
    struct stat facts = {};
    Placed placed = Placed::NameTaken;
    int error = 0;
    if (lstat(target.constData(), &facts) != 0) {
        placed =
            errno == ENOENT && std::rename(partial.constData(), target.constData()) == 0 ? Placed::Yes : Placed::No;
        error = errno;
    }
    calls.unlink(claim.constData());
    errno = error;
    return placed;
}

posix_files::Descriptor::Descriptor(const QByteArray& native, int flags, mode_t mode)
{
    do {
        m_fd = open(native.constData(), flags | O_CLOEXEC, mode);
    } while (m_fd < 0 && errno == EINTR);
}

posix_files::Descriptor::~Descriptor()
{
    if (m_fd >= 0)
        calls.close(m_fd);
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
    return calls.close(fd) == 0 || errno == EINTR;
}
