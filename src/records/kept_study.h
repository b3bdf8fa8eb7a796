#pragma once

#include "contracts/PacsSetup.h"

struct Visit;

/// What a visit's study is elsewhere, as the station's table `ca_study` keeps it from the first sending on: the kind of
/// its pictures, its time, and what the hospital has ordered. Without that table it follows from the setup each time.
/// All but the first are to be called inside work on the connection's thread; a failing statement is a PlatformError.

/// As the setup has it, else as the section's name tells: "초음파" is an ultrasound, "현미경" a microscope, "피부",
/// "외부" and "사진" a camera, and all else an endoscope.
DicomPictureKind KindOfSection(const QString& section, const PacsSetupRecord& setup);

/// Of a visit that nothing has been sent of, and nobody has ordered: without a time, of the section's kind.
DicomStudy KeptStudy(const Visit& visit, const PacsSetupRecord& setup);
/// Keeps it, and gives what is kept then: what another station kept a moment before stands, but for a time that was
/// still empty.
DicomStudy KeepStudy(const Visit& visit, const DicomStudy& study);
/// What the visit's pictures are about to be sent as: what is kept, else what is kept from now on. `wasSent`: its
/// identity has been kept before; without anything kept beside that an earlier release has sent it, as endoscopy and
/// without a time. `time` is that of its first picture.
DicomStudy StudyToSend(const Visit& visit, bool wasSent, const QString& time, const PacsSetupRecord& setup);
/// The order is now this one; kind and time stay what they are, or become the section's.
void KeepOrder(const Visit& visit, const DicomOrder& order, const PacsSetupRecord& setup);
