#pragma once

#include "platform/dicom/jpeg_frame.h"

#include <stop_token>

/// A picture file's frame as it may leave: upright, and looked through to its end by the picture reader's process.
struct WholePicture
{
    JpegFrame frame; ///< Without a problem when `problem` is empty.
    /// Decoded: rows from the top, red, green and blue of each pixel, or its grey alone. Empty unless it is asked for.
    QByteArray pixels;
    QString problem;        ///< Why it may not, for the operator; empty when it may.
    bool isPassing = false; ///< The problem is this machine's, not the file's.
};

/// `frame` is that of `content`.
WholePicture ReadWholePicture(const QByteArray& content, const JpegFrame& frame, bool isDecoded,
                              const std::stop_token& stop);
