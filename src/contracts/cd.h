#pragma once

#include <QList>
#include <QString>

/// A drive, as the platform lists it.
struct DriveEntry
{
    int DriveType = 0; ///< 4 is a CD drive.
    QString Path;
};

inline constexpr int DriveTypeCd = 4;

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

    /// The writer and its medium are ready for use.
    virtual bool Equipped() = 0;
    /// The staging folder, ending in a separator, the same at every reading. Made when it isn't there, for this user
    /// alone. Throws PlatformError when it can't be.
    virtual QString burnArea() = 0;
    /// True while what was staged is being written or checked; falls to false however that ends.
    virtual bool isburning() const = 0;
    /// Begins to write what lies in the staging folder, and returns. The component tells the operator by itself how it
    /// goes and how it ended.
    virtual void Startburn() = 0;
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
};
