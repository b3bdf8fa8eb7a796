#pragma once

#include <QByteArray>

#include <chrono>
#include <memory>

/// Where the sound of a movie comes from: 16-bit samples at 44.1 kHz, one channel.
class MovieSound
{
public:
    virtual ~MovieSound() = default;
    /// Exactly so many samples; silence stands in for those that don't come within `patience`.
    virtual QByteArray Take(int samples, std::chrono::milliseconds patience) = 0;
};

std::unique_ptr<MovieSound> NewSilence();
/// A steady tone of 440 Hz.
std::unique_ptr<MovieSound> NewTone();
/// The machine's default input. Silence as long as there is none.
std::unique_ptr<MovieSound> NewSoundInput();
