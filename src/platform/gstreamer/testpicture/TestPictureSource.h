#pragma once

#include <gst/gst.h>

/// The source element of the test device: live, paced by the pipeline's clock, 4:2:0 of full range.
///
/// The bottom sixteenth of each frame carries the frame's number, counted from 1 at each start of the element: 32
/// cells across the width, black 0 and white 1, highest bit left. Frames that nobody fetched in time are counted, as
/// a camera counts those that it drops.
///
/// A floating reference.
GstElement* NewTestPictureSource();
