#pragma once

#include <QList>
#include <QString>

/// A file system on a USB stick that the desktop has mounted, as the service udisks2 tells.
struct UsbStick
{
    QString folder; ///< Where it is mounted, without a separator at the end.
    QString object; ///< Its name at the service.
    bool isReadOnly = false;
};

/// Waits for the service as for a statement. Empty without it. Throws PlatformError when the operator gives it up.
QList<UsbStick> MountedSticks();

/// Any thread. Unmounts the file system, which can take as long as a slow stick takes to be written. Gives why that
/// has failed, for the operator; empty when it has not.
QString UnmountStick(const UsbStick& stick);
