#pragma once

class QPoint;

/// Brings up the screen of the CD writer, at that place when it isn't open yet. Without a CD drive it tells so and
/// stays away.
void OpenCdWriting(const QPoint& place);
