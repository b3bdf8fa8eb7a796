#include "contracts/PlatformError.h"
#include "platform/files/LocalFiles.h"
#include "platform/files/posix_files.h"

#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <cerrno>
#include <dirent.h>
#include <filesystem>
#include <memory>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

using namespace Qt::StringLiterals;
using namespace posix_files;

namespace {

constexpr char NotePrefix[] = "user.capture-station.";

/// Names in a folder, as the system has them.
QList<QByteArray> NativeNames(const QString& folder)
{
    const QString fault = u"폴더를 읽을 수 없습니다.!!"_s;
    const std::unique_ptr<DIR, int (*)(DIR*)> handle(opendir(Native(folder).constData()), closedir);
    if (handle == nullptr)
        ThrowFault(fault, folder, errno);
    QList<QByteArray> names;
    for (;;) {
        errno = 0;
        const dirent* entry = readdir(handle.get());
        if (entry == nullptr)
            break;
        const QByteArray name(entry->d_name);
        if (name != "." && name != "..")
            names << name;
    }
    if (errno != 0)
        ThrowFault(fault, folder, errno);
    return names;
}

FolderEntry EntryOf(const QByteArray& native, const struct stat& facts)
{
    FolderEntry entry;
    entry.Name = QFile::decodeName(native);
    entry.IsNameBroken = QFile::encodeName(entry.Name) != native;
    entry.IsFolder = S_ISDIR(facts.st_mode);
    entry.IsLink = !entry.IsFolder && !S_ISREG(facts.st_mode);
    if (!entry.IsFolder && !entry.IsLink)
        entry.Size = facts.st_size;
    if (!entry.IsLink)
        entry.DateLastModified =
            QDateTime::fromMSecsSinceEpoch(qint64(facts.st_mtim.tv_sec) * 1000 + facts.st_mtim.tv_nsec / 1000000);
    const QString suffix = QFileInfo(entry.Name).suffix();
    if (entry.IsFolder)
        entry.Type = u"파일 폴더"_s;
    else if (entry.IsLink)
        entry.Type = u"바로 가기"_s;
    else
        entry.Type = suffix.isEmpty() ? u"파일"_s : suffix.toUpper() + u" 파일"_s;
    return entry;
}

} // namespace

QList<FolderEntry> LocalFiles::Entries(const QString& folder) const
{
    const QByteArray native = Native(folder) + '/';
    QList<FolderEntry> entries;
    for (const QByteArray& name : NativeNames(folder)) {
        struct stat facts = {};
        if (!name.startsWith(PartialPrefix) && lstat((native + name).constData(), &facts) == 0)
            entries << EntryOf(name, facts);
    }
    std::ranges::sort(entries, [](const FolderEntry& one, const FolderEntry& other) {
        return one.IsFolder != other.IsFolder ? one.IsFolder : one.Name < other.Name;
    });
    return entries;
}

void LocalFiles::DeleteEntry(const QString& folder, const QString& name)
{
    const QString fault = u"파일을 지울 수 없습니다.!!"_s;
    if (name == u"." || name == u".." || name.contains(u'/') || name.contains(QChar(u'\0')))
        ThrowFault(fault, folder, EINVAL);
    for (const QByteArray& native : NativeNames(folder)) {
        if (QFile::decodeName(native) != name)
            continue;
        std::error_code error;
        std::filesystem::remove_all((Native(folder) + '/' + native).toStdString(), error);
        if (error)
            ThrowFault(fault, folder + name, error.value());
        return;
    }
}

QString LocalFiles::PartialPath(const QString& folder) const
{
    return QFile::decodeName(BesideName(FolderOf(Native(folder + u'/')), ".part"));
}

void LocalFiles::SetFileNote(const QString& path, const QByteArray& name)
{
    setxattr(Native(path).constData(), (NotePrefix + name).constData(), "1", 1, 0);
}

bool LocalFiles::HasFileNote(const QString& path, const QByteArray& name) const
{
    return lgetxattr(Native(path).constData(), (NotePrefix + name).constData(), nullptr, 0) >= 0;
}
