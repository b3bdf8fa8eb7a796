#pragma once

#include <QObject>
#include <QTimer>

class StillFiles;

/// Looks now and then how much room the disk of the pictures has left.
class RoomWatch : public QObject
{
    Q_OBJECT

public:
    /// Asks on the thread of `files`, so that a share that hangs isn't asked twice.
    RoomWatch(StillFiles& files, QObject* parent);

Q_SIGNALS:
    /// For the operator; empty while there is enough.
    void Changed(const QString& text);

private:
    void Look();
    void Answer(qint64 freeBytes);

    StillFiles& m_files;
    QTimer m_timer;
    bool m_isAsking = false;
};
