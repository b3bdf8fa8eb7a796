#pragma once

#include "platform/imaging/picture_content.h"

/// Loads what reads the formats that Qt knows; decoding then opens no further file.
void LoadKnownFormats();

struct KnownPicture
{
    picturecontent::Header header;
    picturecontent::Decoded decoded; ///< Without a picture when it is too large or can't be read.
};

/// The picture file behind an open descriptor; nothing for what is no picture.
std::optional<KnownPicture> DecodeKnown(int descriptor, const picturecontent::Wish& wish);
