#include "platform/imaging/register_imaging.h"

#include "contracts/components.h"
#include "platform/imaging/ImagePictureReader.h"
#include "platform/imaging/picture_file.h"

#include <QImageReader>

void RegisterImaging()
{
    QImageReader::setAllocationLimit(picturefile::LimitMegabytes);
    InstallService<PictureReader>(std::make_unique<ImagePictureReader>());
}
