#include "platform/dicom/picture_elements.h"

#include "platform/dicom/jpeg_frame.h"

using namespace Qt::StringLiterals;

namespace {

QString ColoursOf(const JpegFrame& frame, DicomKit::Coding coding)
{
    if (frame.components == 1)
        return u"MONOCHROME2"_s;
    if (frame.isRgb || coding == DicomKit::Coding::Uncompressed)
        return u"RGB"_s;
    // Of what is coded, 4:2:0 too.
    return frame.isSubsampled ? u"YBR_FULL_422"_s : u"YBR_FULL"_s;
}

void AddFrame(Dataset& data, const JpegFrame& frame, DicomKit::Coding coding)
{
    data.Number(0x0028'0002, frame.components);
    data.Plain(0x0028'0004, "CS", ColoursOf(frame, coding));
    if (frame.components > 1)
        data.Number(0x0028'0006, 0);
    data.Number(0x0028'0010, frame.rows);
    data.Number(0x0028'0011, frame.columns);
    data.Number(0x0028'0100, 8);
    data.Number(0x0028'0101, 8);
    data.Number(0x0028'0102, 7);
    data.Number(0x0028'0103, 0);
    if (!frame.profile.isEmpty())
        data.Bytes(0x0028'2000, "OB", frame.profile);
    // Also of a picture that has been decoded since.
    data.Plain(0x0028'2110, "CS", u"01"_s);
    const double ratio = double(frame.rows) * frame.columns * frame.components / double(frame.coded.size());
    data.Plain(0x0028'2112, "DS", QString::number(ratio, 'f', 2));
    data.Plain(0x0028'2114, "CS", u"ISO_10918_1"_s);
}

void AddSource(Dataset& data, const DicomPicture& picture)
{
    const bool isMarked = !picture.original.uid.isEmpty();
    data.Plain(0x0008'0008, "CS", isMarked ? uR"(DERIVED\SECONDARY)"_s : uR"(ORIGINAL\PRIMARY)"_s);
    const QString burnedIn = isMarked ? u"YES"_s : picture.burnedIn;
    if (!burnedIn.isEmpty())
        data.Code(0x0028'0301, burnedIn);
    if (!isMarked)
        return;
    constexpr qsizetype Longest = 1024;
    data.Prose(0x0008'2111, "ST", u"Annotations drawn on the image"_s, Longest);
    Dataset source = data.Reference(picture.original);
    source.Coded(0x0040'a170, u"121322"_s, u"DCM"_s, u"Source image for image processing operation"_s);
    data.Sequence(0x0008'2112, {source});
}

void Fill(Dataset& data, const DicomPicture& picture, const DicomReference& self, const JpegFrame& frame,
          DicomKit::Coding coding)
{
    const DicomPictureKind& kind = picture.study.kind;
    AddVisit(data, picture,
             {self, DicomSeries::Images, WordOf(kind.modality), picture.takenAt,
              picture.instance > 0 ? picture.instance : picture.number});
    AddRequest(data, picture);
    AddAcquisition(data, picture.takenAt);
    AddSource(data, picture);
    AddBodyPart(data, picture, false);
    AddFrame(data, frame, coding);
    if (kind.modality != DicomModality::Ultrasound)
        data.Sequence(0x0040'0555, {});
}

} // namespace

ObjectElements ElementsOf(const DicomPicture& picture, const DicomReference& self, const JpegFrame& frame,
                          DicomKit::Coding coding)
{
    return InWantedSet(picture.characters, [&](Dataset& data) { Fill(data, picture, self, frame, coding); });
}
