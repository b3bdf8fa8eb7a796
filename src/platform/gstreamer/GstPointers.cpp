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

GstVideoInfo VideoInfoOf(GstVideoFormat format, QSize size)
{
    GstVideoInfo info;
    gst_video_info_set_format(&info, format, guint(size.width()), guint(size.height()));
    info.fps_n = 0;
    info.fps_d = 1;
    return info;
}

GstVideoInfo VideoInfoAt(const GstVideoInfo& info, QSize size)
{
    GstVideoInfo other = VideoInfoOf(GST_VIDEO_INFO_FORMAT(&info), size);
    other.colorimetry = info.colorimetry;
    other.chroma_site = info.chroma_site;
    return other;
}
