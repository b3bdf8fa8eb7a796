#include "platform/imaging/ImagePictureReader.h"

#include "platform/imaging/DecodingBatch.h"
#include "platform/imaging/picture_file.h"

#include <QThreadPool>

ImagePictureReader::ImagePictureReader() : m_pool(std::make_shared<QThreadPool>())
{
    m_pool->setMaxThreadCount(2);
}

QImage ImagePictureReader::Load(const QString& path)
{
    return picturefile::Read(path);
}

QImage ImagePictureReader::LoadForeign(const QString& path)
{
    return picturefile::ReadForeign(path);
}

QImage ImagePictureReader::LoadWithin(const QString& path, QSize room)
{
    return room.isEmpty() ? QImage() : picturefile::Read(path, room);
}

std::unique_ptr<PictureBatch> ImagePictureReader::LoadAll(const QStringList& paths, QSize room)
{
    QList<PictureSource> sources;
    for (const QString& path : paths)
        sources.append({path, {}});
    return std::make_unique<DecodingBatch>(sources, room, m_pool);
}

std::unique_ptr<PictureBatch> ImagePictureReader::LoadContent(const QByteArray& content, QSize room)
{
    return std::make_unique<DecodingBatch>(QList<PictureSource>{{{}, content}}, room, m_pool);
}
