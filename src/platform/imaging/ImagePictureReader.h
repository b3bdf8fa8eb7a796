#pragma once

#include "contracts/pictures.h"

class QThreadPool;

/// Picture files through Qt's image readers, foreign ones also through a process of their own.
class ImagePictureReader final : public PictureReader
{
public:
    ImagePictureReader();

    QImage Load(const QString& path) override;
    QImage LoadForeign(const QString& path) override;
    QImage LoadWithin(const QString& path, QSize room) override;
    std::unique_ptr<PictureBatch> LoadAll(const QStringList& paths, QSize room) override;
    std::unique_ptr<PictureBatch> LoadContent(const QByteArray& content, QSize room) override;

private:
    std::shared_ptr<QThreadPool> m_pool;
};
