#pragma once

#include "contracts/dicom.h"
#include "platform/dicom/visit_elements.h"

struct JpegFrame;

/// Of a picture. `self` is its class and identifier.
ObjectElements ElementsOf(const DicomPicture& picture, const DicomReference& self, const JpegFrame& frame,
                          DicomKit::Coding coding);
