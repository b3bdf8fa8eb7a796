#include "platform/imaging/ImagePictureReader.h"

#include "contracts/PlatformError.h"
#include "frame/components.h"
#include "frame/file_calls.h"
#include "platform/imaging/DecodingBatch.h"
#include "platform/imaging/picture_file.h"
#include "platform/imaging/picture_limits.h"
#include "platform/imaging/register_imaging.h"
#include <QImageReader>

#include <QThreadPool>

using namespace Qt::StringLiterals;
using picturefile::Fit;
using picturefile::Wish;

namespace {
/// Pictures that may lie decoded and not yet taken: enough to keep two threads busy.
constexpr int LookAhead = 12;
/// Those to be printed are larger: enough for the time in which a page is written.
constexpr int PrintedLookAhead = 4;

QList<PictureSource> SourcesOf(const QStringList& paths)
{
    QList<PictureSource> sources;
    for (const QString& path : paths)
        sources.append({path, {}});
    return sources;
}

picturefile::Result ReadOffScreen(const QString& path, const Wish& wish = {})
{
    return filecalls::Ask([path, wish] { return picturefile::Read(path, wish); });
}
} // namespace

ImagePictureReader::ImagePictureReader()
    : m_filePool(std::make_shared<QThreadPool>()), m_contentPool(std::make_shared<QThreadPool>())
{
    m_filePool->setMaxThreadCount(2);
    m_contentPool->setMaxThreadCount(1);
}

QImage ImagePictureReader::Load(const QString& path)
{
    return ReadOffScreen(path).picture;
}

QImage ImagePictureReader::LoadToEdit(const QString& path)
{
    const picturefile::Result result = ReadOffScreen(path);
    if (result.fault == picturefile::UnreadableText())
        throw PlatformError(u"그림을 읽을 수 없습니다.!!"_s);
    if (!result.fault.isEmpty())
        throw PlatformError(result.fault);
    if (!result.size.isEmpty()) {
        throw PlatformError(
            u"큰 그림은 줄어들게 되므로 편집할 수 없습니다.!! (%1 x %2, 한도 %3메가픽셀)"_s.arg(result.size.width())
                .arg(result.size.height())
                .arg(picturelimits::LargestMegapixels));
    }
    return result.picture;
}

LargeImage ImagePictureReader::LoadToLook(const QString& path)
{
    const picturefile::Result result = ReadOffScreen(path);
    if (!result.fault.isEmpty())
        throw PlatformError(result.fault);
    return {result.picture, result.size};
}

ForeignPicture ImagePictureReader::LoadForeign(const QString& path)
{
    const picturefile::Result result = filecalls::Ask([path] { return picturefile::ReadForeign(path); });
    if (!result.fault.isEmpty())
        throw PlatformError(result.fault);
    return {result.picture, result.content};
}

QImage ImagePictureReader::LoadWithin(const QString& path, QSize room)
{
    return ReadOffScreen(path, {Fit::Within, room}).picture;
}

QImage ImagePictureReader::LoadToPrint(const QString& path, QSize room)
{
    return ReadOffScreen(path, {Fit::AtLeast, room}).picture;
}

std::unique_ptr<PictureBatch> ImagePictureReader::LoadAll(const QStringList& paths, QSize room)
{
    return std::make_unique<DecodingBatch>(SourcesOf(paths), Wish{Fit::Within, room}, LookAhead, m_filePool);
}

std::unique_ptr<PictureBatch> ImagePictureReader::LoadAllToPrint(const QStringList& paths, QSize room)
{
    return std::make_unique<DecodingBatch>(SourcesOf(paths), Wish{Fit::AtLeast, room}, PrintedLookAhead, m_filePool);
}

std::unique_ptr<PictureBatch> ImagePictureReader::LoadContent(const QByteArray& content, QSize room)
{
    return std::make_unique<DecodingBatch>(QList<PictureSource>{{{}, content}}, Wish{Fit::Within, room}, LookAhead,
                                           m_contentPool);
}

void RegisterImaging()
{
    QImageReader::setAllocationLimit(static_cast<int>(picturelimits::LargestInStation / 1'048'576) + 1);
    InstallService<PictureReader>(std::make_unique<ImagePictureReader>());
}
