#pragma once

#include "frame/WorkThread.h"
#include "platform/disc/usb_sticks.h"

#include <QObject>
#include <QTimer>

#include <memory>

struct StickFile
{
    QString from; ///< Path of the file.
    QString to;   ///< Below the folder on the stick, with slashes.
    qint64 bytes = 0;
};

/// Brings files into a new folder on a stick, on a thread of its own. Each file is whole or not there, and is read back
/// from the stick and compared; the folder has its name only when all are right, and before that one that tells so.
/// Then the stick is unmounted.
class StickRun : public QObject
{
    Q_OBJECT

public:
    struct Result
    {
        enum Kind { Succeeded, Stopped, Failed };
        Kind kind = Failed;
        QString text; ///< For the operator; of a success as well.
    };

    /// `name` is the folder's; one that is there already gives it a number.
    StickRun(UsbStick stick, const QString& name, const QList<StickFile>& files);
    /// Stops it, and waits a moment.
    ~StickRun() override;

    void Start();
    /// What is written goes away again.
    void Stop();
    bool HasEnded() const;
    /// Once it has ended.
    Result Told() const;

Q_SIGNALS:
    /// Bytes that are done, and their share from 0 to 1, of the step that runs.
    void Written(qint64 bytes, double share);
    void Checking();
    void Unmounting();
    void Ended();

private:
    struct State;
    void Look();

    std::shared_ptr<State> m_state;
    int m_step = 0;
    bool m_hasEnded = false;
    QTimer m_look;
    WorkThread m_thread;
};
