#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QString>
#include <QStringList>

#include <functional>
#include <memory>

/// The one place where a path of the station, joined with backslashes, becomes a native one. Every file operation of
/// the station goes through here.

/// A path of the station as the platform writes it: each backslash becomes the platform's separator, and doubled ones
/// lead to the same place.
QString NativePath(const QString& stationPath);

/// File systems take 255 bytes a name; the rest is for endings such as "Log".
inline constexpr qsizetype LongestPathPartBytes = 240;

/// True when a text may stand as one part of a path: not empty, not `.` or `..`, not too long for a name, and without a
/// separator or a NUL. A drive letter's colon is no separator here.
bool IsPathPart(const QString& part);

/// One entry of a folder, as a list of it shows.
struct FolderEntry
{
    QString Name;
    QString Type;               ///< What kind of file it is, in words.
    qint64 Size = 0;            ///< Bytes; 0 for a folder.
    QDateTime DateLastModified; ///< Local time.
    bool IsFolder = false;
    bool IsLink = false; ///< A link, or anything else that is neither file nor folder; never followed.
    /// The name is no text in the platform's encoding; `Name` has marks in the place of what can't be read.
    bool IsNameBroken = false;
};

/// The names in a folder by what stands under them, each list sorted.
struct FolderNames
{
    QStringList files; ///< Regular files, those too that are being written.
    QStringList folders;
    QStringList others; ///< Links, pipes and the like.
    /// No texts in the platform's encoding, with marks in the place of what can't be read: no path leads there.
    QStringList broken;
};

/// What stands under a name, links not followed.
enum class FileKind {
    None,
    File,  ///< A regular file.
    Other, ///< A folder, a link, a pipe or the like.
};

enum class CopyOutcome { Copied, NameTaken, Stopped };

/// Hears how many bytes of how many are done; false stops the work. May be called on a thread of its own.
using CopyProgress = std::function<bool(qint64 doneBytes, qint64 totalBytes)>;

/// What is known of the process whose mark stands on a file.
enum class Holder {
    Self,
    Living,    ///< Another process of this machine.
    Dead,      ///< A process of this machine that has ended.
    Elsewhere, ///< Of another machine, or perhaps of one, or no mark at all.
};

/// What another machine's process left goes after a day: until then it may be in the middle of its work.
inline constexpr qint64 AbandonedMs = 24LL * 60 * 60 * 1000;

/// Begins the names of the small files in the capture root by which living stations tell of themselves; the process's
/// mark follows.
inline constexpr char16_t LeasePrefix[] = u".lease-";

/// A file held by this process alone; let go with the object, and by the system when the process dies.
class FileLock
{
public:
    virtual ~FileLock() = default;
};

class FileStore
{
public:
    virtual ~FileStore() = default;

    virtual bool FolderExists(const QString& path) const = 0;
    /// Makes the folder, and those above it that are missing. A new folder takes over the group of the one above, and
    /// what that one lets its group do; others may do no more in it than in that one. Throws PlatformError.
    virtual void MakeFolder(const QString& path) = 0;
    /// The same for a folder whose upper one must be there: a share that is gone gets none on the disk under it.
    virtual void MakeOneFolder(const QString& path) = 0;
    /// True for a file that isn't a folder. A failing question (a share that went away) counts as no.
    virtual bool FileExists(const QString& path) const = 0;
    /// In the archive a picture is a regular file: what `Other` says is left alone. A failing question counts as
    /// `None`.
    virtual FileKind KindOf(const QString& path) const = 0;
    /// Names (not paths) of the files in a folder that begin with `prefix`, taken literally, sorted. Empty for a
    /// folder that isn't there.
    virtual QStringList FilesStartingWith(const QString& folder, const QString& prefix) const = 0;

    /// All names in a folder; for a long list quicker than `Entries`. Throws PlatformError.
    virtual FolderNames Names(const QString& folder) const = 0;

    /// Throws PlatformError.
    virtual QByteArray ReadFile(const QString& path) const = 0;
    /// The same for a file of the archive: opened without following a link and without waiting for a pipe's other end.
    /// Anything but a regular file is a PlatformError.
    virtual QByteArray ReadArchivedFile(const QString& path) const = 0;
    /// A piece of such a file; shorter where the file ends first. Throws PlatformError.
    virtual QByteArray ReadArchivedPiece(const QString& path, qint64 at, qint64 bytes) const = 0;

    /// Puts a whole file under its final name, replacing what is there: written under another name beside it, every
    /// write checked, synced, renamed, folder synced. Throws PlatformError, and then nothing has changed;
    /// StoredWithFault when the new content stands, but a fault came behind it.
    virtual void WriteWholeFile(const QString& path, const QByteArray& content) = 0;
    /// The same for a file that only this user can read.
    virtual void WritePrivateFile(const QString& path, const QByteArray& content) = 0;

    /// The same for a name that must not exist yet: whole or not at all, and never over another file. False when one of
    /// that name exists. Throws PlatformError; StoredWithFault as above.
    virtual bool WriteNewFile(const QString& path, const QByteArray& content) = 0;

    /// Makes a small file, with its content in it from the first moment on, only if none of that name exists; not
    /// synced. False when there is one. Throws PlatformError for any other reason.
    virtual bool CreateExclusively(const QString& path, const QByteArray& content) = 0;
    /// Age of a file by the clock of the file system that holds it, in milliseconds; negative when there is none.
    virtual qint64 AgeMs(const QString& path) const = 0;
    /// When a file was last changed, by the clock of the file system that holds it; invalid when there is none. Unlike
    /// `AgeMs` it leaves the folder untouched.
    virtual QDateTime LastModified(const QString& path) const = 0;
    /// Tells one content of a file from another that took its place or was written into it: size and time of change, as
    /// finely as the file system keeps it. Empty when there is none.
    virtual QByteArray VersionOf(const QString& path) const = 0;
    /// Renames within one folder, replacing what is there. Throws PlatformError.
    virtual void RenameFile(const QString& from, const QString& to) = 0;

    /// Deletes a file; one that isn't there is no fault. Throws PlatformError.
    virtual void DeleteFile(const QString& path) = 0;

    /// What a folder holds: folders first, then files, each by name. Files that this station is just writing are left
    /// out. Throws PlatformError.
    virtual QList<FolderEntry> Entries(const QString& folder) const = 0;
    /// Makes a folder that only this user can enter, and takes the rights of others away from one that is there.
    /// Throws PlatformError, also for a folder that belongs to another user, or a link.
    virtual void MakePrivateFolder(const QString& path) = 0;
    /// Deletes what the folder lists under that name, a folder with all that it holds; links go, what they lead to
    /// stays. The name is taken as it is listed, also one that no path leads to. One that isn't there is no fault.
    /// Throws PlatformError.
    virtual void DeleteEntry(const QString& folder, const QString& name) = 0;

    /// A path in the folder for a file that another program writes for this one, hidden from lists until it is renamed.
    virtual QString PartialPath(const QString& folder) const = 0;
    /// Brings a file that another program has written in the folder under a name that must not exist yet. False when
    /// one of that name exists; it then stays where it is. Throws PlatformError; StoredWithFault as above.
    virtual bool PlaceNewFile(const QString& partial, const QString& path) = 0;
    /// Copies a regular file, no link, onto a name that must not exist yet, whole or not at all, with the file's time
    /// of change. Throws PlatformError.
    virtual CopyOutcome CopyToNewFile(const QString& from, const QString& to, const CopyProgress& progress) = 0;
    /// Leaves a note of its own with a file, which no list and no reader sees. It goes with the file, not with what is
    /// copied from it or replaces it. A file system that keeps no notes has none.
    virtual void SetFileNote(const QString& path, const QByteArray& name, const QByteArray& text) = 0;
    /// Its text, as far as 64 bytes; empty without one.
    virtual QByteArray FileNote(const QString& path, const QByteArray& name) const = 0;
    /// True when both can be read and hold the same bytes.
    virtual bool SameContent(const QString& one, const QString& other) const = 0;
    /// The machine's own list of mounts says that one belongs there or above it, and nothing is mounted there.
    virtual bool IsMissingMount(const QString& folder) const = 0;
    /// Room in the file system that holds the folder, in bytes; negative when there is no telling.
    virtual qint64 FreeBytes(const QString& folder) const = 0;

    /// How this process signs what it leaves in folders that it shares: unlike any other process of any machine. May
    /// stand in a file's name; has no hyphen.
    virtual QString ProcessMark() const = 0;
    /// A process of an earlier boot has ended, but only of a boot that this machine remembers: a copied disk has the
    /// same identity.
    virtual Holder HolderOf(const QString& mark) const = 0;
    /// The mark bears this machine's identity, which another machine with a copy of its disk has as well.
    virtual bool IsOfThisMachine(const QString& mark) const = 0;
    /// Mark in the name of a file that a process is still writing, or was when it died; empty for any other name.
    virtual QString MarkOfPartial(const QString& name) const = 0;
    /// Holds the file, made for this user alone when it isn't there. Null when another process holds it. Throws
    /// PlatformError.
    virtual std::unique_ptr<FileLock> Lock(const QString& path) = 0;
    /// Name of the user whom the file belongs to; empty when that is the user of this process, and for no file.
    virtual QString ForeignOwner(const QString& path) const = 0;
    /// Deletes what dead processes of this machine left half-written in the folder, and what other machines left so
    /// more than a day ago. What can't be judged or deleted stays.
    virtual void RemoveLeftovers(const QString& folder) = 0;
};
