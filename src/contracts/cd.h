#pragma once

#include <QList>
#include <QString>

class QWidget;

/// A drive, as the platform lists it.
struct DriveEntry
{
    int DriveType = 0; ///< 4 is a CD drive.
    QString Path;
};

inline constexpr int DriveTypeRemovable = 1;
inline constexpr int DriveTypeCd = 4;

/// A staged file, and what it is called where it goes to. Both paths have slashes and begin with a name.
struct DiscFile
{
    QString staged; ///< Below the staging folder.
    QString onDisc;
};

/// What is staged, as it will stand on the disc.
struct DiscContent
{
    QList<DiscFile> files;
    qint64 bytes = 0; ///< That it takes there, tables included.
};

/// `Scripting.FileSystemObject`, as far as drives go; folders and files are in contracts/files.h.
class FileSystemObject
{
public:
    virtual ~FileSystemObject() = default;
    virtual QList<DriveEntry> Drives() const = 0;
};

/// `BaydenBurn.XPBurn`: the CD writer with its staging folder. One object per operation; what they tell is the state of
/// the one writer of the process.
class XPBurn
{
public:
    virtual ~XPBurn() = default;

    /// The writer and its medium are ready for use. A drive can take long to tell, which is waited for as for a
    /// statement. Throws PlatformError when the operator gives that up.
    virtual bool Equipped() = 0;
    /// The staging folder, ending in a separator, the same at every reading. Made when it isn't there, for this user
    /// alone. Throws PlatformError when it can't be.
    virtual QString burnArea() = 0;
    /// True while what was staged is being written or checked, and while the drive is asked; falls to false however
    /// that ends.
    virtual bool isburning() const = 0;
    /// Begins to write what lies in the staging folder, and returns. The component tells the operator by itself how it
    /// goes and how it ended.
    virtual void Startburn() = 0;

    // Beyond what any writer has:

    /// The drive that is written to from here on, by its path; one that isn't there stands for the first.
    virtual void UseDrive(const QString& /*path*/) {}
    /// Throws PlatformError.
    virtual DiscContent Content() { return {}; }
    /// Bytes that the medium takes, as far as they are known without asking a drive; negative when they aren't.
    virtual qint64 KnownRoom() { return -1; }
    /// The next start also writes what lies in this folder; the staged files stay as they are.
    virtual void AddFolder(const QString& /*folder*/) {}
    /// The component's window stands over that screen.
    virtual void ShowOver(QWidget& /*screen*/) {}
    /// The program is about to end: waits until what is written is whole or given up by the operator, and tells him.
    /// When the system ends it, what can be written again is given up instead.
    virtual void Finish() {}
    /// What the operator is to know of a disc that an earlier process of his couldn't finish; empty, and told once.
    virtual QString Interrupted() { return {}; }
};

/// `prjDeskKit.clsDeskKit`: helpers of the desktop.
class clsDeskKit
{
public:
    virtual ~clsDeskKit() = default;

    /// Copies a file, whole or not at all, with its time of change, and returns when that is over. A target of the same
    /// content stays as it is; beside one of other content the copy gets a number before its extension. A copy that
    /// fails is told to the operator by name. When the operator cancels, this object copies nothing more.
    virtual void FileCopyDialog(const QString& source, const QString& target) = 0;
};

/// What the clinic's setup decides about the CD writer.
class BurnerOptions
{
public:
    virtual ~BurnerOptions() = default;
    /// Image file that stands in for a CD drive; empty: the drives of the machine.
    virtual void UseImage(const QString& path) = 0;
    /// Mounted USB sticks are drives, too.
    virtual void UseSticks(bool use) = 0;
};
