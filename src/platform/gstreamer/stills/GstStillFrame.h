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

private:
    GstPointer<GstSample> m_sample;
};
