#pragma once

#include "contracts/ShutterSound.h"
#include "frame/WorkThread.h"

/// The shutter's sounds, made here and played on the machine's usual output.
class ShutterSounds final : public ShutterSound
{
public:
    void Play(Kind kind) override;

private:
    /// Sound hardware may take its time, and may never answer.
    WorkThread m_thread;
};
