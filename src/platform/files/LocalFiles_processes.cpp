#include "contracts/PlatformError.h"
#include "frame/services.h"
#include "platform/files/LocalFiles.h"
#include "platform/files/posix_files.h"
#include "platform/files/process_mark.h"

#include <QFileInfo>
#include <QRegularExpression>

#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;
using namespace posix_files;

namespace {

class HeldFile final : public FileLock
{
public:
    explicit HeldFile(const QByteArray& native) : m_file(native, O_RDWR | O_CREAT | O_NOFOLLOW, 0600) {}

    const Descriptor& File() const { return m_file; }

private:
    Descriptor m_file;
};

} // namespace

QString LocalFiles::ProcessMark() const
{
    return process_mark::Own();
}

Holder LocalFiles::HolderOf(const QString& mark) const
{
    return process_mark::HolderOf(mark);
}

bool LocalFiles::IsOfThisMachine(const QString& mark) const
{
    return process_mark::IsOfThisMachine(mark);
}

QString LocalFiles::MarkOfPartial(const QString& name) const
{
    // A movie's has the name that it is to get before the mark.
    static const QRegularExpression movie(uR"(^\..+\.([^.]+\.[^.]+\.[^.]+\.[^.]+)\.(?:part|recording)$)"_s);
    const QString mark = MarkInName(name);
    return mark.isEmpty() ? movie.match(name).captured(1) : mark;
}

std::unique_ptr<FileLock> LocalFiles::Lock(const QString& path)
{
    const QByteArray native = Native(path);
    auto held = std::make_unique<HeldFile>(native);
    if (!held->File().IsOpen())
        ThrowFault(u"파일을 만들 수 없습니다.!!"_s, path, errno);
    if (flock(held->File().Handle(), LOCK_EX | LOCK_NB) != 0) {
        if (errno == EWOULDBLOCK)
            return nullptr;
        ThrowFault(u"파일을 만들 수 없습니다.!!"_s, path, errno);
    }
    // Whoever held it before may have deleted it meanwhile: this one is then no longer the file of that name.
    struct stat there = {};
    struct stat here = {};
    if (fstat(held->File().Handle(), &here) != 0 || stat(native.constData(), &there) != 0 ||
        here.st_ino != there.st_ino)
        return nullptr;
    return held;
}

QString LocalFiles::ForeignOwner(const QString& path) const
{
    // Of a link its own: who has put it there.
    struct stat facts = {};
    if (lstat(Native(path).constData(), &facts) != 0 || facts.st_uid == geteuid())
        return {};
    const QString name = S_ISLNK(facts.st_mode) ? QString() : QFileInfo(NativePath(path)).owner();
    return name.isEmpty() ? QString::number(facts.st_uid) : name;
}

void LocalFiles::RemoveLeftovers(const QString& folder)
{
    for (const QString& name : FilesStartingWith(folder, QString::fromLatin1(PartialPrefix))) {
        const QString mark = MarkInName(name);
        const QString path = folder + name;
        try {
            const Holder holder = mark.isEmpty() ? Holder::Elsewhere : HolderOf(mark);
            if (holder == Holder::Dead || (holder == Holder::Elsewhere && AgeMs(path) > AbandonedMs))
                DeleteFile(path);
        } catch (const PlatformError&) {
            // Somebody else's, or a share that has just gone away.
        }
    }
}
