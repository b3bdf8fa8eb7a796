#pragma once

#include "platform/gstreamer/GstPointers.h"

#include <QByteArray>
#include <QSize>

/// Makes movie frames of full frames: the shape kept, over black where it differs. The two steps may run on two
/// threads.
class MovieFrameMaker
{
public:
    explicit MovieFrameMaker(QSize size);
    ~MovieFrameMaker();
    MovieFrameMaker(const MovieFrameMaker&) = delete;
    MovieFrameMaker& operator=(const MovieFrameMaker&) = delete;

    /// Planes of the frame at the movie's size; empty for a frame that can't be read.
    QByteArray Shrink(GstSample* sample);
    /// Such planes as a JPEG picture. Throws PlatformError.
    QByteArray Encode(const QByteArray& planes);

private:
    bool Prepare(GstSample* sample);

    const QSize m_size;
    GstVideoInfo m_movieInfo = {};
    GstPointer<GstCaps> m_caps;
    GstVideoInfo m_frameInfo = {};
    GstVideoInfo m_smallInfo = {};
    bool m_isLimited = false;
    GstPointer<GstVideoConverter> m_shrink;
    GstPointer<GstVideoConverter> m_place;
    GstPointer<GstBuffer> m_small;
    void* m_encoder;
};
