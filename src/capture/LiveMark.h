#pragma once

#include "contracts/files.h"

#include <QTimer>

#include <memory>

/// Tells the sender whether a device's picture is shown by this user: movies aren't made ready meanwhile. A service,
/// which is there only where movies go to a server.
class LiveMark
{
public:
    LiveMark();

    void setLive(bool isLive);

private:
    void Take();

    QTimer m_again;
    std::unique_ptr<FileLock> m_lock;
};
