#include "platform/files/WaitingFiles.h"

#include "frame/file_calls.h"

template <class Member, class... Arguments>
auto WaitingFiles::Ask(Member member, Arguments... arguments) const
{
    return filecalls::Ask([store = m_store, member, arguments...] { return ((*store).*member)(arguments...); });
}

bool WaitingFiles::FolderExists(const QString& path) const
{
    return Ask(&FileStore::FolderExists, path);
}

void WaitingFiles::MakeFolder(const QString& path)
{
    Ask(&FileStore::MakeFolder, path);
}

void WaitingFiles::MakeOneFolder(const QString& path)
{
    Ask(&FileStore::MakeOneFolder, path);
}

bool WaitingFiles::FileExists(const QString& path) const
{
    return Ask(&FileStore::FileExists, path);
}

FileKind WaitingFiles::KindOf(const QString& path) const
{
    return Ask(&FileStore::KindOf, path);
}

QStringList WaitingFiles::FilesStartingWith(const QString& folder, const QString& prefix) const
{
    return Ask(&FileStore::FilesStartingWith, folder, prefix);
}

FolderNames WaitingFiles::Names(const QString& folder) const
{
    return Ask(&FileStore::Names, folder);
}

QByteArray WaitingFiles::ReadFile(const QString& path) const
{
    return Ask(&FileStore::ReadFile, path);
}

QByteArray WaitingFiles::ReadArchivedFile(const QString& path) const
{
    return Ask(&FileStore::ReadArchivedFile, path);
}

QByteArray WaitingFiles::ReadArchivedPiece(const QString& path, qint64 at, qint64 bytes) const
{
    return Ask(&FileStore::ReadArchivedPiece, path, at, bytes);
}

void WaitingFiles::WriteWholeFile(const QString& path, const QByteArray& content)
{
    Ask(&FileStore::WriteWholeFile, path, content);
}

void WaitingFiles::WritePrivateFile(const QString& path, const QByteArray& content)
{
    Ask(&FileStore::WritePrivateFile, path, content);
}

bool WaitingFiles::WriteNewFile(const QString& path, const QByteArray& content)
{
    return Ask(&FileStore::WriteNewFile, path, content);
}

bool WaitingFiles::CreateExclusively(const QString& path, const QByteArray& content)
{
    return Ask(&FileStore::CreateExclusively, path, content);
}

qint64 WaitingFiles::AgeMs(const QString& path) const
{
    return Ask(&FileStore::AgeMs, path);
}

QDateTime WaitingFiles::LastModified(const QString& path) const
{
    return Ask(&FileStore::LastModified, path);
}

QByteArray WaitingFiles::VersionOf(const QString& path) const
{
    return Ask(&FileStore::VersionOf, path);
}

void WaitingFiles::RenameFile(const QString& from, const QString& to)
{
    Ask(&FileStore::RenameFile, from, to);
}

void WaitingFiles::DeleteFile(const QString& path)
{
    Ask(&FileStore::DeleteFile, path);
}

QList<FolderEntry> WaitingFiles::Entries(const QString& folder) const
{
    return Ask(&FileStore::Entries, folder);
}

void WaitingFiles::MakePrivateFolder(const QString& path)
{
    Ask(&FileStore::MakePrivateFolder, path);
}

void WaitingFiles::DeleteEntry(const QString& folder, const QString& name)
{
    Ask(&FileStore::DeleteEntry, folder, name);
}

QString WaitingFiles::PartialPath(const QString& folder) const
{
    return Ask(&FileStore::PartialPath, folder);
}

bool WaitingFiles::PlaceNewFile(const QString& partial, const QString& path)
{
    return Ask(&FileStore::PlaceNewFile, partial, path);
}

CopyOutcome WaitingFiles::CopyToNewFile(const QString& from, const QString& to, const CopyProgress& progress)
{
    return Ask(&FileStore::CopyToNewFile, from, to, progress);
}

void WaitingFiles::SetFileNote(const QString& path, const QByteArray& name, const QByteArray& text)
{
    Ask(&FileStore::SetFileNote, path, name, text);
}

QByteArray WaitingFiles::FileNote(const QString& path, const QByteArray& name) const
{
    return Ask(&FileStore::FileNote, path, name);
}

bool WaitingFiles::SameContent(const QString& one, const QString& other) const
{
    return Ask(&FileStore::SameContent, one, other);
}

bool WaitingFiles::IsMissingMount(const QString& folder) const
{
    return Ask(&FileStore::IsMissingMount, folder);
}

qint64 WaitingFiles::FreeBytes(const QString& folder) const
{
    return Ask(&FileStore::FreeBytes, folder);
}

std::unique_ptr<FileLock> WaitingFiles::Lock(const QString& path)
{
    return Ask(&FileStore::Lock, path);
}

QString WaitingFiles::ForeignOwner(const QString& path) const
{
    return Ask(&FileStore::ForeignOwner, path);
}

void WaitingFiles::RemoveLeftovers(const QString& folder)
{
    Ask(&FileStore::RemoveLeftovers, folder);
}
