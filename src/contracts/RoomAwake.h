#pragma once

#include <QObject>

/// Keeps the examination room awake while the live picture runs: the screen isn't locked for want of a hand at the
/// mouse, and the machine doesn't go to sleep by itself.
class RoomAwake : public QObject
{
    Q_OBJECT

public:
    /// From now on. Returns at once; a system that offers nothing of the kind goes on as it was.
    virtual void Keep() = 0;
    /// No longer. Can be called when nothing is kept.
    virtual void Release() = 0;

Q_SIGNALS:
    /// The machine has slept all the same, and is awake again.
    void HasSlept();
};
