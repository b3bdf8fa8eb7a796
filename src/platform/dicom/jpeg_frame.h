#pragma once

#include <QByteArray>
#include <QString>

/// A JPEG file as a DICOM object can hold it: what was coded stays as it is, byte for byte.
struct JpegFrame
{
    int columns = 0;
    int rows = 0;
    int components = 0;
    bool isRgb = false; ///< Three components that are red, green and blue as they stand.
    /// The file without the segments of cameras and programs, which may tell of places and people. Those that tell how
    /// the colours are meant stay.
    QByteArray coded;
    /// Of the file's colours (ICC); empty where it has none, or none that is whole, or is grey.
    QByteArray profile;
    QString problem; ///< Why it can't be one, for the operator; empty when it can.
};

/// Looks at a picture file by its content. Only baseline JPEG of eight bits becomes a frame: it is what every viewer
/// has to understand. A file without the mark of its end is none; whether the data before it are whole, isn't looked
/// at. What lies behind that mark, such as a camera's preview, is left away.
JpegFrame ReadJpegFrame(const QByteArray& content);
