#pragma once

#include <QImage>

#include <optional>

/// For tests and measurements: what can happen to a device, done to the test device; and the number that its frames
/// carry.

/// A frozen device stays connected and delivers no frames.
void FreezeTestPicture(bool frozen);
/// An unplugged device ends its stream with an error, and comes back when it is plugged in again.
void UnplugTestPicture(bool unplugged);

/// The frame number at the bottom of a still, a movie frame or a painted picture; none when a cell is neither clearly
/// black nor clearly white.
std::optional<quint32> ReadFrameNumber(const QImage& picture);
