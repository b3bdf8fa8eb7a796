#pragma once

#include "platform/gstreamer/GstPointers.h"

#include <QImage>
#include <QSize>

#include <vector>

/// Makes the picture for the screen from a full frame. Used on one thread.
class DisplayScaler
{
public:
    /// The frame at the size that fits into `area` (device pixels) with its shape kept. `canvas` is an image to draw
    /// into when it has the right size and nobody else holds it. Null when the frame can't be read.
    QImage Scale(GstSample* sample, QSize area, QImage canvas);

private:
    bool Prepare(GstSample* sample, QSize area);

    GstPointer<GstCaps> m_caps;
    QSize m_area;
    QSize m_size;
    GstVideoInfo m_frameInfo = {};
    GstVideoInfo m_halfInfo = {};
    GstVideoInfo m_smallInfo = {};
    GstVideoInfo m_imageInfo = {};
    GstPointer<GstVideoConverter> m_shrink; ///< Null when the frame has the right size already.
    GstPointer<GstVideoConverter> m_colour;
    GstPointer<GstBuffer> m_half; ///< Null where the frame isn't halved first.
    GstPointer<GstBuffer> m_small;
};

/// The size that a frame has on a screen of square pixels.
QSize ShapeOf(const GstVideoInfo& info);
