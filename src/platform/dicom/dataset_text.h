#pragma once

#include "contracts/dicom.h"

struct JpegFrame;

/// A text for an element of at most `longest` characters: what separates values or lines becomes a blank.
QString HarmlessText(const QString& text, qsizetype longest);
/// A name that is one component: what separates the parts of a name becomes a blank too.
QString HarmlessName(const QString& name);

/// The data set of a VL Endoscopic Image with its meta information, in the words that dump2dcm reads, in UTF-8. The
/// frame's coded data come from a file beside it.
QByteArray DatasetText(const DicomPicture& picture, const QString& instanceUid, const JpegFrame& frame,
                       const QString& frameFile);
