#pragma once

#include "platform/imaging/picture_content.h"

/// Loads what reads the formats that Qt knows; decoding then opens no further file.
void LoadKnownFormats();

/// The picture file behind an open descriptor.
picturecontent::Decoded DecodeKnown(int descriptor, const picturecontent::Wish& wish);
