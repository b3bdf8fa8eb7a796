#pragma once

#include <QImage>
#include <QObject>
#include <QSize>
#include <QStringList>

#include <memory>

/// Pictures on their way from a file to a cell, decoded on threads of the adapter's own, in the order of the list.
/// Deleting the object ends the work that is left.
class PictureBatch : public QObject
{
    Q_OBJECT

public:
    /// True when the picture of that place in the list is there, be it as a failure.
    virtual bool IsReady(int index) const = 0;
    /// Waits for the picture of that place and hands it over; null when it can't be read. Each can be taken once.
    virtual QImage Take(int index) = 0;

Q_SIGNALS:
    /// A further picture is ready; arrives on the thread that owns the batch.
    void Ready();
};

/// Name of the file that a picture comes from, when that file's data end early: the picture shows what there was. Empty
/// for a whole picture. It goes along with every copy.
QString CutFileName(const QImage& picture);
/// With an empty name the picture counts as whole.
void MarkCut(QImage& picture, const QString& fileName);

/// What a file from anywhere gave.
struct ForeignPicture
{
    QImage picture;
    /// The file itself, when it is a JPEG so large that the picture is shown at a lower scale; else empty.
    QByteArray original;
};

/// A picture to be looked at closely.
struct LargeImage
{
    QImage picture;
    QSize fileSize; ///< Of the file, where the picture comes at a lower scale; else empty.
};

/// Reads picture files by their content, whatever their name says.
class PictureReader
{
public:
    virtual ~PictureReader() = default;

    /// The archive's picture at full size, turned as its orientation tag says; null when it can't be read, or is no
    /// regular file. A link is not followed. A JPEG of more than 64 megapixels comes at half or a quarter of its size.
    virtual QImage Load(const QString& path) = 0;
    /// The same for one whose file will be replaced by what becomes of it: never at a lower scale. Throws PlatformError
    /// with the reason.
    virtual QImage LoadToEdit(const QString& path) = 0;
    /// The same as `Load` gives, but throws PlatformError with the reason.
    virtual LargeImage LoadToLook(const QString& path) = 0;
    /// A file from anywhere, in any format that the station knows at all; of several pages the first. Throws
    /// PlatformError with the reason. Blocks for two seconds or so before it gives up; what a hostile file does to its
    /// decoder stays outside this program.
    virtual ForeignPicture LoadForeign(const QString& path) = 0;
    /// The picture scaled to fit into `room` with its shape kept, never enlarged; null when it can't be read. Much
    /// faster than the full one.
    virtual QImage LoadWithin(const QString& path, QSize room) = 0;
    /// The picture at the smallest scale of its decoder at which it still fills `room`, so less than twice as large;
    /// never enlarged.
    virtual QImage LoadToPrint(const QString& path, QSize room) = 0;
    /// Several pictures, each to fit into `room`.
    virtual std::unique_ptr<PictureBatch> LoadAll(const QStringList& paths, QSize room) = 0;
    /// Several pictures, each as `LoadToPrint` gives it; a few lie decoded before they are taken.
    virtual std::unique_ptr<PictureBatch> LoadAllToPrint(const QStringList& paths, QSize room) = 0;
    /// The picture of a file that is still in memory, decoded like one of a list while the caller goes on.
    virtual std::unique_ptr<PictureBatch> LoadContent(const QByteArray& content, QSize room) = 0;
};
