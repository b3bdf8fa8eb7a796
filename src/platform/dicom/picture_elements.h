#pragma once

#include "platform/dicom/Dataset.h"

struct JpegFrame;

struct PictureElements
{
    QList<DicomElement> elements;
    /// In Unicode, as some letter isn't in the character set that was wanted.
    bool isOtherSet = false;
};

/// What a VL Endoscopic Image of the picture consists of, but for the coded data and the file's meta information.
PictureElements ElementsOf(const DicomPicture& picture, const QString& instanceUid, const JpegFrame& frame);
