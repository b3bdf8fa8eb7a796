#pragma once

#include "contracts/RoomAwake.h"
#include "frame/WorkThread.h"

#include <memory>

/// The room is kept awake by the desktop's screen saver, on the session's bus, and by logind, on the system's. Either
/// may be missing or not answer: that is noted in the journal, once, and nothing else.
class BusRoomAwake final : public RoomAwake
{
    Q_OBJECT

public:
    /// `patienceMs`: for each answer.
    explicit BusRoomAwake(int patienceMs = 2000);
    ~BusRoomAwake() override;

    void Keep() override;
    void Release() override;

private Q_SLOTS:
    /// Of logind: the machine goes to sleep, or has come back from it.
    void OnPrepareForSleep(bool begins);

private:
    struct Buses;

    bool m_isKept = false;
    const std::shared_ptr<Buses> m_buses; ///< The worker's.
    WorkThread m_worker;
};
