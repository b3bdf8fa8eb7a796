#include "platform/imagecontrol/register_image_control.h"

#include "frame/components.h"
#include "platform/imagecontrol/ImageControl.h"

using namespace Qt::StringLiterals;

void RegisterImageControl()
{
    RegisterComponent<ImagXpress>(u"IMAGXPR6LibCtl.ImagXpress"_s, [] { return std::make_unique<ImageControl>(); });
}
