#pragma once

#include "frame/WorkThread.h"

#include <QHash>
#include <QImage>
#include <QObject>
#include <QSet>
#include <QSize>
#include <QStringList>

#include <memory>

/// Pictures decoded at full size, on threads of their own: three at most, of at most 48 megapixels each. A share that
/// hangs keeps nothing waiting but the pictures on it.
class LargeImages : public QObject
{
    Q_OBJECT

public:
    LargeImages();
    /// Doesn't wait for a call that the share holds.
    ~LargeImages() override;

    static constexpr int Most = 3;
    static constexpr qint64 LargestPixels = 48'000'000;

    struct Source
    {
        QString path;         ///< Empty for none.
        bool isLocal = false; ///< On this machine's own disk.
    };
    struct Picture
    {
        QImage image;          ///< Null when there is a fault.
        QSize fileSize;        ///< Of the file, where the picture is shown at a lower scale; else empty.
        QString fault;         ///< For the operator.
        QList<QImage> reduced; ///< At a half, a quarter and so on, once `Refine` has made them.
        QByteArray version;    ///< Of the file, before it was read.
    };

    /// The pictures that are wanted, the most urgent first; those beyond `Most` count as not wanted. Others go.
    void Want(const QList<Source>& sources);
    /// Null until it has been read.
    const Picture* Find(const QString& path) const;
    /// It isn't wanted as it is: the next `Want` reads it again.
    void Forget(const QString& path) { m_pictures.remove(path); }
    /// Makes its reduced forms, which `Refined` tells of.
    void Refine(const Source& source);
    /// Looks whether the file is another one by now: then it is read anew, or `Gone` is told.
    void Check(const Source& source);

Q_SIGNALS:
    /// It has been read, perhaps once more, or can't be.
    void Ready(const QString& path);
    /// Its reduced forms are there.
    void Refined(const QString& path);
    /// Its folder is there, and the file is not.
    void Gone(const QString& path);

private:
    struct Wanted;
    void Read(const Source& source);
    void TakeRead(const QString& path, const Picture& picture);
    WorkThread& Thread(const Source& source) { return source.isLocal ? m_localFiles : m_files; }

    QHash<QString, Picture> m_pictures;
    QSet<QString> m_underWay;
    const std::shared_ptr<Wanted> m_wanted;
    WorkThread m_files;
    WorkThread m_localFiles;
};
