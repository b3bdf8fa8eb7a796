#pragma once

#include "contracts/VideoCap.h"

/// A frame as a camera compressed it.
class JpegStillFrame final : public StillFrame
{
public:
    explicit JpegStillFrame(const QByteArray& bytes) : m_bytes(bytes) {}

    /// The camera's own bytes where they are a whole file, whatever the quality. Cameras leave out the tables that
    /// every reader of streams knows, and those of files needn't: such a frame is encoded anew.
    QByteArray EncodeJPEG(int quality) const override;

private:
    QByteArray m_bytes;
};
