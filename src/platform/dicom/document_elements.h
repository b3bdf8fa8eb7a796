#pragma once

#include "platform/dicom/visit_elements.h"

/// Of what a visit has beside its pictures. `self` is the object's class and identifier.

ObjectElements ElementsOf(const DicomReport& report, const QByteArray& pdf, const DicomPicture& facts,
                          const DicomReference& self);
/// `bytes` is the size of the movie's file.
ObjectElements ElementsOf(const DicomMovie& movie, qint64 bytes, const DicomPicture& facts, const DicomReference& self);
ObjectElements ElementsOf(const QList<DicomReference>& rejected, const QDateTime& at, const DicomPicture& facts,
                          const DicomReference& self);
