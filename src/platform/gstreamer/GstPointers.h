#pragma once

#include <gst/gst.h>
#include <gst/video/video.h>

#include <QSize>

#include <memory>

struct GstReleaser
{
    void operator()(GstCaps* caps) const { gst_caps_unref(caps); }
    void operator()(GstSample* sample) const { gst_sample_unref(sample); }
    void operator()(GstBuffer* buffer) const { gst_buffer_unref(buffer); }
    void operator()(GstVideoConverter* converter) const { gst_video_converter_free(converter); }
    void operator()(GstObject* object) const { gst_object_unref(object); }
    void operator()(GstElement* element) const { gst_object_unref(element); }
    void operator()(GError* error) const { g_error_free(error); }
    void operator()(gchar* text) const { g_free(text); }
};

/// An owned reference.
template <class T>
using GstPointer = std::unique_ptr<T, GstReleaser>;

/// A mapped video frame.
class MappedFrame
{
public:
    MappedFrame(const GstVideoInfo& info, GstBuffer* buffer, GstMapFlags flags)
        : m_isMapped(gst_video_frame_map(&m_frame, &info, buffer, flags) != FALSE)
    {
    }
    ~MappedFrame()
    {
        if (m_isMapped)
            gst_video_frame_unmap(&m_frame);
    }
    MappedFrame(const MappedFrame&) = delete;
    MappedFrame& operator=(const MappedFrame&) = delete;

    bool IsMapped() const { return m_isMapped; }
    GstVideoFrame* Frame() { return &m_frame; }

private:
    GstVideoFrame m_frame = {};
    bool m_isMapped;
};

/// What the caps of a sample say, without rate and interlacing: the converters refuse frames that differ in these,
/// and every frame is taken as a whole here. False for caps that aren't raw video.
bool VideoInfoOf(GstSample* sample, GstVideoInfo& info);
/// Such an info for frames that are made here.
GstVideoInfo VideoInfoOf(GstVideoFormat format, QSize size);
/// Of the same content at another size.
GstVideoInfo VideoInfoAt(const GstVideoInfo& info, QSize size);
