#pragma once

#include "contracts/files.h"

#include <QTimer>

#include <memory>

/// Tells the sender that a picture from a device is shown on this machine, for as long as it is there: movies aren't
/// made ready meanwhile.
class LiveMark
{
public:
    LiveMark();

private:
    void Take();

    QTimer m_again;
    std::unique_ptr<FileLock> m_lock;
};
