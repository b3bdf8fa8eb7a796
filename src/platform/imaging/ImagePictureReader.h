#pragma once

#include "contracts/pictures.h"

class QThreadPool;

/// Picture files through Qt's image readers and the JPEG library; large ones and those from outside through a process
/// of their own.
class ImagePictureReader final : public PictureReader
{
public:
    ImagePictureReader();

    QImage Load(const QString& path) override;
    QImage LoadToEdit(const QString& path) override;
    LargeImage LoadToLook(const QString& path) override;
    ForeignPicture LoadForeign(const QString& path) override;
    QImage LoadWithin(const QString& path, QSize room) override;
    QImage LoadToPrint(const QString& path, QSize room) override;
    std::unique_ptr<PictureBatch> LoadAll(const QStringList& paths, QSize room) override;
    std::unique_ptr<PictureBatch> LoadAllToPrint(const QStringList& paths, QSize room) override;
    std::unique_ptr<PictureBatch> LoadContent(const QByteArray& content, QSize room) override;

private:
    std::shared_ptr<QThreadPool> m_filePool;
    /// A share that hangs keeps no picture waiting that is in memory.
    std::shared_ptr<QThreadPool> m_contentPool;
};
