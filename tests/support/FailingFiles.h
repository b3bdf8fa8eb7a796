#pragma once

#include "contracts/PlatformError.h"
#include "frame/components.h"
#include "platform/files/LocalFiles.h"
#include "platform/files/WaitingFiles.h"

/// The real files, which fail when told to.
class FailingFiles final : public LocalFiles
{
public:
    enum Kind { Writes, Deletes, Reads, Lists }; ///< `Writes` are also new folders, claims, renames and copies.

    /// Installs one as the station's files.
    static FailingFiles& Install()
    {
        auto files = std::make_shared<FailingFiles>();
        InstallService<FileStore>(std::make_unique<WaitingFiles>(files));
        return *files;
    }

    /// The operation of that kind that is the `countdown`th from now fails, and each after it while `lasting`.
    void FailAt(int countdown, bool lasting = false, Kind kind = Writes)
    {
        m_countdown = 0;
        m_lasting = lasting;
        m_kind = kind;
        m_countdown = countdown;
    }
    void Recover() { m_countdown = 0; }
    std::atomic<qint64> freeBytes = -1; ///< What is told of the disk's room, unless it is below 0.
    bool spoilsWrites = false;          ///< What stands after a write differs from what was to be written.
    /// Comes just before the next file is written, however that is done: somebody else's doing.
    std::function<void(const QString& path)> beforeWrite;

    void MakeFolder(const QString& path) override { Step(Writes), LocalFiles::MakeFolder(path); }
    void MakeOneFolder(const QString& path) override { Step(Writes), LocalFiles::MakeOneFolder(path); }
    void MakePrivateFolder(const QString& path) override { Step(Writes), LocalFiles::MakePrivateFolder(path); }
    void WriteWholeFile(const QString& path, const QByteArray& content) override
    {
        Write(path), LocalFiles::WriteWholeFile(path, Spoilt(content));
    }
    bool WriteNewFile(const QString& path, const QByteArray& content) override
    {
        return Write(path), LocalFiles::WriteNewFile(path, Spoilt(content));
    }
    bool CreateExclusively(const QString& path, const QByteArray& content) override
    {
        return Step(Writes), LocalFiles::CreateExclusively(path, content);
    }
    void RenameFile(const QString& from, const QString& to) override { Step(Writes), LocalFiles::RenameFile(from, to); }
    CopyOutcome CopyToNewFile(const QString& from, const QString& to, const CopyProgress& progress) override
    {
        return Step(Writes), LocalFiles::CopyToNewFile(from, to, progress);
    }
    void DeleteFile(const QString& path) override { Step(Deletes), LocalFiles::DeleteFile(path); }
    void DeleteEntry(const QString& folder, const QString& name) override
    {
        Step(Deletes), LocalFiles::DeleteEntry(folder, name);
    }
    qint64 FreeBytes(const QString& folder) const override
    {
        return freeBytes < 0 ? LocalFiles::FreeBytes(folder) : qint64(freeBytes);
    }
    QByteArray ReadFile(const QString& path) const override { return Step(Reads), LocalFiles::ReadFile(path); }
    QByteArray ReadArchivedFile(const QString& path) const override
    {
        return Step(Reads), LocalFiles::ReadArchivedFile(path);
    }
    QStringList FilesStartingWith(const QString& folder, const QString& prefix) const override
    {
        return Step(Lists), LocalFiles::FilesStartingWith(folder, prefix);
    }
    FolderNames Names(const QString& folder) const override { return Step(Lists), LocalFiles::Names(folder); }
    QList<FolderEntry> Entries(const QString& folder) const override
    {
        return Step(Lists), LocalFiles::Entries(folder);
    }

private:
    QByteArray Spoilt(const QByteArray& content) const { return spoilsWrites ? content.chopped(1) + '?' : content; }
    void Write(const QString& path)
    {
        if (const auto before = std::exchange(beforeWrite, nullptr))
            before(path);
        Step(Writes);
    }
    void Step(Kind kind) const
    {
        if (kind != m_kind || m_countdown == 0 || --m_countdown > 0)
            return;
        if (m_lasting)
            m_countdown = 1;
        throw PlatformError(QStringLiteral("디스크가 가득 찼습니다.!!"));
    }

    mutable std::atomic<int> m_countdown = 0;
    std::atomic<bool> m_lasting = false;
    std::atomic<Kind> m_kind = Writes;
};
