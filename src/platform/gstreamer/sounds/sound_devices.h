#pragma once

/// How many sound devices the machine has, a sound server's own included.
struct SoundDevices
{
    int inputs = 0;
    int outputs = 0;
};

/// May take as long as a sound server does; any thread.
SoundDevices FindSoundDevices();
