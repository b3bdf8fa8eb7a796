#include "platform/gstreamer/GstPointers.h"

bool VideoInfoOf(GstSample* sample, GstVideoInfo& info)
{
    GstCaps* caps = gst_sample_get_caps(sample);
    if (caps == nullptr || !gst_video_info_from_caps(&info, caps))
        return false;
    info.fps_n = 0;
    info.fps_d = 1;
    info.interlace_mode = GST_VIDEO_INTERLACE_MODE_PROGRESSIVE;
    return true;
}
