#pragma once

#include <QByteArray>
#include <QString>

/// The system's calls on files, as the file service uses them. Every one of them is looked at.
namespace posix_files {

/// Begins the names of files that are still being written. No pattern of the station's pictures and movies matches it.
inline constexpr char PartialPrefix[] = ".station-";

[[noreturn]] void ThrowFault(const QString& what, const QString& path, int error);

/// Throws PlatformError for a path with a NUL.
QByteArray Native(const QString& path);
QByteArray FolderOf(const QByteArray& native);
/// Begins the names of files that this machine is still writing; the number of the process follows.
QByteArray MachinePrefix();
/// A name for a file that is still being written, unique on every machine that shares the folder.
QByteArray BesideName(const QByteArray& folder, const char* ending);
/// False, with errno, when the folder's entries can't be made durable; a share that has no such thing passes.
bool SyncFolder(const QByteArray& folder);

class Descriptor
{
public:
    Descriptor(const QByteArray& native, int flags);
    ~Descriptor();
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    bool IsOpen() const { return m_fd >= 0; }
    int Handle() const { return m_fd; }

    bool Write(const char* bytes, size_t count) const;
    bool Write(const QByteArray& content) const
    {
        return Write(content.constData(), static_cast<size_t>(content.size()));
    }
    /// Bytes read, 0 at the end of the file, negative on a fault.
    ssize_t Read(char* bytes, size_t count) const;
    /// Closing can be the moment at which a share reports that a write has failed.
    bool Close();

private:
    int m_fd = -1;
};

} // namespace posix_files
