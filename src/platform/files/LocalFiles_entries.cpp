#include "contracts/PlatformError.h"
#include "platform/files/LocalFiles.h"
#include "platform/files/posix_files.h"

#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <array>
#include <cerrno>
#include <dirent.h>
#include <fcntl.h>
#include <filesystem>
#include <memory>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

using namespace Qt::StringLiterals;
using namespace posix_files;

namespace {

constexpr char NotePrefix[] = "user.capture-station.";
constexpr size_t LongestNoteBytes = 64;

/// Hands out each name in a folder, as the system has it, with its kind as the list tells it and the list's handle.
template <class Visit>
void ForEachName(const QString& folder, Visit visit)
{
    const QString fault = u"폴더를 읽을 수 없습니다.!!"_s;
    const std::unique_ptr<DIR, int (*)(DIR*)> handle(opendir(Native(folder).constData()), closedir);
    if (handle == nullptr)
        ThrowFault(fault, folder, errno);
    for (;;) {
        errno = 0;
        const dirent* entry = readdir(handle.get());
        if (entry == nullptr)
            break;
        const QByteArray name(entry->d_name);
        if (name != "." && name != "..")
            visit(name, entry->d_type, dirfd(handle.get()));
    }
    if (errno != 0)
        ThrowFault(fault, folder, errno);
}

QList<QByteArray> NativeNames(const QString& folder)
{
    QList<QByteArray> names;
    ForEachName(folder, [&names](const QByteArray& name, uchar /*kind*/, int /*list*/) { names << name; });
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

FolderNames LocalFiles::Names(const QString& folder) const
{
    FolderNames names;
    ForEachName(folder, [&names](const QByteArray& native, uchar kind, int list) {
        // A year's folder holds a hundred thousand names: no question is asked about one whose kind the list tells.
        struct stat facts = {};
        if (kind == DT_UNKNOWN) {
            if (fstatat(list, native.constData(), &facts, AT_SYMLINK_NOFOLLOW) != 0)
                return; // It has gone.
            kind = S_ISREG(facts.st_mode) ? DT_REG : S_ISDIR(facts.st_mode) ? DT_DIR : DT_LNK;
        }
        const QString name = QFile::decodeName(native);
        (QFile::encodeName(name) != native ? names.broken
         : kind == DT_REG                  ? names.files
         : kind == DT_DIR                  ? names.folders
                                           : names.others)
            .append(name);
    });
    for (QStringList* list : {&names.files, &names.folders, &names.others, &names.broken})
        list->sort();
    return names;
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

void LocalFiles::SetFileNote(const QString& path, const QByteArray& name, const QByteArray& text)
{
    setxattr(Native(path).constData(), (NotePrefix + name).constData(), text.constData(),
             static_cast<size_t>(text.size()), 0);
}

QByteArray LocalFiles::FileNote(const QString& path, const QByteArray& name) const
{
    std::array<char, LongestNoteBytes> text = {};
    const ssize_t size = lgetxattr(Native(path).constData(), (NotePrefix + name).constData(), text.data(), text.size());
    return size > 0 ? QByteArray(text.data(), size) : QByteArray();
}
