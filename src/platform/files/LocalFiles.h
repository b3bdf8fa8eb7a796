#pragma once

#include "contracts/files.h"

/// Files of this machine and of the shares mounted on it, by POSIX calls: each of them is looked at, which the
/// toolkit's own classes don't do for a full disk or a failing sync.
class LocalFiles : public FileStore
{
public:
    bool FolderExists(const QString& path) const override;
    void MakeFolder(const QString& path) override;
    void MakeOneFolder(const QString& path) override;
    bool FileExists(const QString& path) const override;
    FileKind KindOf(const QString& path) const override;
    QStringList FilesStartingWith(const QString& folder, const QString& prefix) const override;
    FolderNames Names(const QString& folder) const override;
    QByteArray ReadFile(const QString& path) const override;
    QByteArray ReadArchivedFile(const QString& path) const override;
    QByteArray ReadArchivedPiece(const QString& path, qint64 at, qint64 bytes) const override;
    void WriteWholeFile(const QString& path, const QByteArray& content) override;
    void WritePrivateFile(const QString& path, const QByteArray& content) override;
    bool WriteNewFile(const QString& path, const QByteArray& content) override;
    bool CreateExclusively(const QString& path, const QByteArray& content) override;
    qint64 AgeMs(const QString& path) const override;
    QDateTime LastModified(const QString& path) const override;
    QByteArray VersionOf(const QString& path) const override;
    void RenameFile(const QString& from, const QString& to) override;
    void DeleteFile(const QString& path) override;
    QList<FolderEntry> Entries(const QString& folder) const override;
    void MakePrivateFolder(const QString& path) override;
    void DeleteEntry(const QString& folder, const QString& name) override;
    QString PartialPath(const QString& folder) const override;
    bool PlaceNewFile(const QString& partial, const QString& path) override;
    CopyOutcome CopyToNewFile(const QString& from, const QString& to, const CopyProgress& progress) override;
    void SetFileNote(const QString& path, const QByteArray& name, const QByteArray& text) override;
    QByteArray FileNote(const QString& path, const QByteArray& name) const override;
    bool SameContent(const QString& one, const QString& other) const override;
    bool IsMissingMount(const QString& folder) const override;
    qint64 FreeBytes(const QString& folder) const override;
    QString ProcessMark() const override;
    Holder HolderOf(const QString& mark) const override;
    bool IsOfThisMachine(const QString& mark) const override;
    QString MarkOfPartial(const QString& name) const override;
    std::unique_ptr<FileLock> Lock(const QString& path) override;
    QString ForeignOwner(const QString& path) const override;
    void RemoveLeftovers(const QString& folder) override;
};

/// Installs the file service: local files, waited for off the user-interface thread.
void RegisterFiles();
