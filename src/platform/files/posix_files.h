#pragma once

#include <QByteArray>
#include <QString>

#include <sys/types.h>

/// The system's calls on files, as the file service uses them. Every one of them is looked at.
namespace posix_files {

/// Begins the names of files that are still being written. No pattern of the station's pictures and movies matches it.
inline constexpr char PartialPrefix[] = ".station-";

/// The calls that a share may refuse, or that tell of a disk's fault; a test puts others in their place.
struct SystemCalls
{
    int (*link)(const char* from, const char* to);
    int (*unlink)(const char* path);
    /// Refuses a name that is taken.
    int (*renameToNew)(const char* from, const char* to);
    int (*fsync)(int handle);
    int (*close)(int handle);
};
extern SystemCalls calls;

/// An error of `errno` in Korean; one that is rare as the system calls it.
QString ErrorText(int error);
[[noreturn]] void ThrowFault(const QString& what, const QString& path, int error);

/// Throws PlatformError for a path with a NUL.
QByteArray Native(const QString& path);
QByteArray FolderOf(const QByteArray& native);
/// The path without the slashes at its end; the root stays.
QByteArray WithoutSlash(QByteArray native);
/// A name for a file that is still being written: signed by this process, unique on every machine that shares the
/// folder.
QByteArray BesideName(const QByteArray& folder, const char* ending);
/// Mark in a name that `BesideName` has made; empty for any other.
QString MarkInName(const QString& name);
/// A new file can be read by the group, and written by it where the folder can; a new folder takes over group, setgid
/// and the group's right to write from the one above. So stations of several users can share a root. Others get no
/// right that the folder doesn't give them: into a closed root nobody puts an open picture, whatever his umask. A share
/// that has no such rights, or refuses them, keeps what it gave; what stands already is left as it is.
void ShareFile(int handle, const QByteArray& folder);
void ShareFolder(const QByteArray& native);
/// False, with errno, when the folder's entries can't be made durable; a share that has no such thing passes.
bool SyncFolder(const QByteArray& folder);

enum class Placed { Yes, NameTaken, No };
/// Brings a whole file under a name that must not exist yet. With `No`, errno tells why. The partial name may be left
/// with `Yes`; `fault` is then the error of its removal.
Placed PlaceNew(const QByteArray& partial, const QByteArray& target, int& fault);

class Descriptor
{
public:
    Descriptor(const QByteArray& native, int flags, mode_t mode = 0666);
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
    bool Sync() const { return calls.fsync(m_fd) == 0; }
    /// Bytes read, 0 at the end of the file, negative on a fault.
    ssize_t Read(char* bytes, size_t count) const;
    /// Closing can be the moment at which a share reports that a write has failed.
    bool Close();

private:
    int m_fd = -1;
};

} // namespace posix_files
