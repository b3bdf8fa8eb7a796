#pragma once

#include <QByteArray>
#include <QSize>

/// A JPEG with as much detail as an endoscope's picture: soft shapes under a fine noise.
QByteArray ScenePicture(int seed, QSize size);
