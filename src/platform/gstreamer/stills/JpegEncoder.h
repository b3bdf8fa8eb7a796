#pragma once

#include "platform/gstreamer/stills/YuvPlanes.h"

#include <QByteArray>

/// A JPEG file of the planes. The picture is cut into stripes that are encoded at the same time, one for each
/// processor, and joined by restart markers. `quality` is brought between 1 and 100. Throws PlatformError.
QByteArray EncodeJpeg(const YuvPlanes& planes, int quality);
