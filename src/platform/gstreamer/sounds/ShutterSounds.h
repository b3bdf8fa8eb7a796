#pragma once

#include "contracts/ShutterSound.h"
#include "frame/WorkThread.h"

#include <chrono>
#include <memory>

/// The shutter's sounds, made here and played on the machine's usual output.
class ShutterSounds final : public ShutterSound
{
public:
    void Play(Kind kind) override;

private:
    using Clock = std::chrono::steady_clock;

    const std::shared_ptr<Clock::time_point> m_silentUntil = std::make_shared<Clock::time_point>(); ///< The thread's.
    /// Sound hardware may take its time, and may never answer.
    WorkThread m_thread;
};
