#pragma once

#include "contracts/files.h"

#include <memory>

/// Files that fail when told to, over the real ones.
class FailingFiles : public FileStore
{
public:
    /// Installs one over the file service that stands there.
    static FailingFiles& InstallOver();

    explicit FailingFiles(std::unique_ptr<FileStore> real) : m_real(std::move(real)) {}

    /// The operation that changes something and is the `countdown`th from now fails, and each after it while `lasting`.
    void FailAt(int countdown, bool lasting = false);
    void Recover() { m_countdown = 0; }

    bool FolderExists(const QString& path) const override { return m_real->FolderExists(path); }
    void MakeFolder(const QString& path) override;
    void MakeOneFolder(const QString& path) override;
    bool FileExists(const QString& path) const override { return m_real->FileExists(path); }
    FileKind KindOf(const QString& path) const override { return m_real->KindOf(path); }
    QStringList FilesStartingWith(const QString& folder, const QString& prefix) const override
    {
        return m_real->FilesStartingWith(folder, prefix);
    }
    QByteArray ReadFile(const QString& path) const override { return m_real->ReadFile(path); }
    QByteArray ReadArchivedFile(const QString& path) const override { return m_real->ReadArchivedFile(path); }
    void WriteWholeFile(const QString& path, const QByteArray& content) override;
    void WritePrivateFile(const QString& path, const QByteArray& content) override;
    bool WriteNewFile(const QString& path, const QByteArray& content) override;
    bool CreateExclusively(const QString& path, const QByteArray& content) override;
    qint64 AgeMs(const QString& path) const override { return m_real->AgeMs(path); }
    void RenameFile(const QString& from, const QString& to) override;
    void DeleteFile(const QString& path) override;
    QList<FolderEntry> Entries(const QString& folder) const override { return m_real->Entries(folder); }
    void MakePrivateFolder(const QString& path) override;
    void DeleteEntry(const QString& folder, const QString& name) override { m_real->DeleteEntry(folder, name); }
    QString PartialPath(const QString& folder) const override { return m_real->PartialPath(folder); }
    bool PlaceNewFile(const QString& partial, const QString& path) override
    {
        return m_real->PlaceNewFile(partial, path);
    }
    CopyOutcome CopyToNewFile(const QString& from, const QString& to, const CopyProgress& progress) override;
    bool SameContent(const QString& one, const QString& other) const override
    {
        return m_real->SameContent(one, other);
    }
    qint64 FreeBytes(const QString& folder) const override { return m_real->FreeBytes(folder); }
    QString ProcessMark() const override { return m_real->ProcessMark(); }
    Holder HolderOf(const QString& mark) const override { return m_real->HolderOf(mark); }
    std::unique_ptr<FileLock> Lock(const QString& path) override { return m_real->Lock(path); }
    QString ForeignOwner(const QString& path) const override { return m_real->ForeignOwner(path); }
    void RemoveLeftovers(const QString& folder) override { m_real->RemoveLeftovers(folder); }

private:
    void Step();

    std::unique_ptr<FileStore> m_real;
    int m_countdown = 0;
    bool m_lasting = false;
};
