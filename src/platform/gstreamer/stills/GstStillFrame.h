#pragma once

#include "contracts/VideoCap.h"
#include "platform/gstreamer/GstPointers.h"

/// A full frame, held by a reference to the memory in which the device delivered it.
class GstStillFrame final : public StillFrame
{
public:
    /// Takes a reference of its own.
    explicit GstStillFrame(GstSample* sample) : m_sample(gst_sample_ref(sample)) {}

    QByteArray EncodeJPEG(int quality) const override;
    /// Its time in the stream.
    GstClockTime Time() const { return GST_BUFFER_PTS(gst_sample_get_buffer(m_sample.get())); }

private:
    GstPointer<GstSample> m_sample;
};
