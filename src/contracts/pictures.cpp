#include "contracts/pictures.h"

#include "contracts/components.h"

PictureReader& Pictures()
{
    return UseService<PictureReader>();
}
