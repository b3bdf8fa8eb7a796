#include "contracts/pictures.h"

#include "contracts/components.h"

PictureReader& Pictures()
{
    return UseService<PictureReader>();
}

QImage LoadPicture(const QString& path)
{
    return path.isEmpty() ? QImage() : Pictures().Load(path);
}
