#include "platform/imaging/register_imaging.h"

#include "frame/components.h"
#include "platform/imaging/ImagePictureReader.h"
#include "platform/imaging/picture_limits.h"

#include <QImageReader>

void RegisterImaging()
{
    QImageReader::setAllocationLimit(static_cast<int>(picturelimits::LargestInStation / 1'048'576) + 1);
    InstallService<PictureReader>(std::make_unique<ImagePictureReader>());
}
