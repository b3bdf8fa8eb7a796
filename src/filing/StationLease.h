#pragma once

#include "contracts/files.h"
#include "frame/WorkThread.h"

#include <QObject>
#include <QTimer>

/// Tells other machines that this process lives: a small file in the capture root, renewed again and again, that bears
/// its mark. A process of this machine's identity that ran under a boot of which this machine knows nothing may be
/// another machine's, whose disk is a copy; it counts as dead only when its lease has grown old.
class StationLease : public QObject
{
    Q_OBJECT

public:
    /// Stands in that capture root.
    explicit StationLease(const QString& root);
    /// The file goes, unless the share doesn't answer.
    ~StationLease() override;

    /// Of the process whose mark stands on a file in the root. For a thread that may wait for the share.
    static Holder HolderOf(const QString& root, const QString& mark);
    /// Behind the last renewal of one that counts as living.
    static constexpr qint64 OldMs = 60LL * 60 * 1000;

private:
    void Renew();

    const QString m_root;
    QTimer m_timer;
    WorkThread m_share;
};
