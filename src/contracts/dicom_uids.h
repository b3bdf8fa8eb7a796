#pragma once

#include "contracts/dicom.h"

/// Identifiers of a picture in other systems, of at most 64 characters, derived from what it is: a repeat has the same.

/// One study for institution, chart, date and section.
QString StudyUid(const DicomPicture& picture);
/// The study's one series.
QString SeriesUid(const DicomPicture& picture);
/// The picture by its number and its file's content: a marked-up picture is another one.
QString InstanceUid(const DicomPicture& picture, const QByteArray& content);

/// True for a root that leaves room behind it: digits and points, at most 24 characters, no component that begins with
/// a needless 0.
bool IsUidRoot(const QString& root);
