#pragma once

#include "contracts/dicom.h"

struct Visit;

/// The DICOM objects of a disc's pictures: each in the staging folder's folder `DICOM`, under a name that its picture's
/// name there gives. They come and go with their pictures.
namespace disc_objects {

/// What a disc tells other systems of the visit's pictures, `first` being the one that is staged first: its time is the
/// study's when the visit has none. From now on they are known by it everywhere. Throws PlatformError.
DicomPicture FactsOf(const Visit& visit, const QString& first);

/// Makes the object of a picture of the visit that has just been staged. Gives what the operator is to know when there
/// is none: the picture stays all the same.
QString Stage(const QString& area, const QString& picture, const Visit& visit, const DicomPicture& facts);

/// Takes away the objects whose pictures aren't staged any more.
void RemoveLone(const QString& area);

/// Name of the clinic, as its letters are; may be empty.
QString ClinicText();

/// Brings objects and their directory in step with what is staged, before it is written. Gives what the operator is to
/// know when that has failed.
QString WriteDirectory(const QString& area);

} // namespace disc_objects
