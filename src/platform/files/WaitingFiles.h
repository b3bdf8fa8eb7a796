#pragma once

#include "contracts/files.h"

/// The files of another store, for a program that has one thread and mustn't stand still: each call on them is made as
/// `filecalls::Await` tells.
class WaitingFiles final : public FileStore
{
public:
    explicit WaitingFiles(std::shared_ptr<FileStore> store) : m_store(std::move(store)) {}

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
    QString ProcessMark() const override { return m_store->ProcessMark(); }
    Holder HolderOf(const QString& mark) const override { return m_store->HolderOf(mark); }
    bool IsOfThisMachine(const QString& mark) const override { return m_store->IsOfThisMachine(mark); }
    QString MarkOfPartial(const QString& name) const override { return m_store->MarkOfPartial(name); }
    std::unique_ptr<FileLock> Lock(const QString& path) override;
    QString ForeignOwner(const QString& path) const override;
    void RemoveLeftovers(const QString& folder) override;

private:
    /// The arguments are copied: the call may outlive the one who made it.
    template <class Member, class... Arguments>
    auto Ask(Member member, Arguments... arguments) const;

    std::shared_ptr<FileStore> m_store;
};
