#pragma once

#include "contracts/dicom.h"

struct JpegFrame;

/// An element of a data set.
struct DicomElement
{
    quint32 tag = 0;  ///< Group in the upper half.
    QByteArray type;  ///< Value representation, two letters. A sequence is an empty one.
    QByteArray value; ///< As it stands in an object but for padding; a number in decimal digits.
};

struct PictureElements
{
    QList<DicomElement> elements;
    /// In Unicode, as some letter isn't in the character set that was wanted.
    bool isOtherSet = false;
};

/// What a VL Endoscopic Image of the picture consists of, but for the coded data and the file's meta information.
PictureElements ElementsOf(const DicomPicture& picture, const QString& instanceUid, const JpegFrame& frame);
