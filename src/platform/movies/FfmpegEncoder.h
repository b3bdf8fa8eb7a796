#pragma once

#include "contracts/MovieEncoder.h"

/// The program ffmpeg as a child process.
class FfmpegEncoder final : public MovieEncoder
{
public:
    EncodedMovie Encode(const QString& source, const QString& target, bool hasSound,
                        const std::stop_token& stop) override;
};
