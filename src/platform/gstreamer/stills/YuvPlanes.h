#pragma once

#include "platform/gstreamer/GstPointers.h"

#include <cstdint>
#include <memory>

/// A frame as a JPEG file stores it: planes of full-range BT.601. Points into the frame where that is so already;
/// otherwise holds planes of its own.
class YuvPlanes
{
public:
    /// The frame must stay mapped while this object lives. Throws PlatformError for a frame that can't be converted.
    explicit YuvPlanes(GstVideoFrame* frame);
    ~YuvPlanes();
    YuvPlanes(const YuvPlanes&) = delete;
    YuvPlanes& operator=(const YuvPlanes&) = delete;

    int Width() const { return m_width; }
    int Height() const { return m_height; }
    /// Sizes of the chroma planes against the luma plane: 1 or 2; both 0 for a grey picture.
    int ChromaAcross() const { return m_across; }
    int ChromaDown() const { return m_down; }
    const std::uint8_t* Plane(int plane) const { return m_planes[plane]; }
    int Stride(int plane) const { return m_strides[plane]; }

private:
    void Use(GstVideoFrame* frame);
    void Convert(GstVideoFrame* frame, GstVideoFormat format, bool keepColours);
    void ExpandRange();

    int m_width = 0;
    int m_height = 0;
    int m_across = 0;
    int m_down = 0;
    const std::uint8_t* m_planes[3] = {};
    int m_strides[3] = {};
    std::unique_ptr<std::uint8_t[]> m_expanded;
    GstPointer<GstBuffer> m_buffer;
    std::unique_ptr<MappedFrame> m_mapped;
};
