#include "platform/dicom/picture_elements.h"

#include "contracts/dicom_uids.h"
#include "platform/dicom/Dataset.h"
#include "platform/dicom/jpeg_frame.h"

using namespace Qt::StringLiterals;

namespace {

constexpr char16_t EndoscopicImage[] = u"1.2.840.10008.5.1.4.1.1.77.1.1";

void AddVisit(Dataset& data, const DicomPicture& picture)
{
    const DicomIdentity& identity = picture.identity;
    data.Short(0x0008'0050, {});
    data.Plain(0x0008'0060, "CS", u"ES"_s);
    data.Long(0x0008'0070, {});
    data.Long(0x0008'0080, picture.institution);
    data.Plain(0x0008'0090, "PN", {});
    data.Long(0x0008'1030, picture.section);
    data.Name(0x0008'1050, picture.doctor, picture.hasNameParts);
    data.Name(0x0010'0010, picture.patientName, picture.hasNameParts);
    data.Long(0x0010'0020, identity.patientId.isEmpty() ? picture.chart : identity.patientId);
    if (!identity.issuer.isEmpty())
        data.Long(0x0010'0021, identity.issuer);
    data.Plain(0x0010'0030, "DA", Dataset::Date(picture.birthDate));
    data.Plain(0x0010'0040, "CS", picture.sex == u"M" || picture.sex == u"F" ? picture.sex : QString());
    data.Plain(0x0020'000d, "UI", StudyUid(picture));
    data.Plain(0x0020'000e, "UI", SeriesUid(picture));
    // A directory needs one that isn't empty.
    data.Short(0x0020'0010, picture.ymd);
    data.Plain(0x0020'0011, "IS", u"1"_s);
    data.Plain(0x0020'0013, "IS", QString::number(picture.number));
    data.Plain(0x0020'0020, "CS", {});
    data.Plain(0x0020'0060, "CS", {});
}

void AddFrame(Dataset& data, const JpegFrame& frame)
{
    const bool isGrey = frame.components == 1;
    data.Number(0x0028'0002, frame.components);
    // Whatever the file's sampling is: the standard knows no other word for coded luminance and chrominance here.
    data.Plain(0x0028'0004, "CS", isGrey ? u"MONOCHROME2"_s : frame.isRgb ? u"RGB"_s : u"YBR_FULL_422"_s);
    if (!isGrey)
        data.Number(0x0028'0006, 0);
    data.Number(0x0028'0010, frame.rows);
    data.Number(0x0028'0011, frame.columns);
    data.Number(0x0028'0100, 8);
    data.Number(0x0028'0101, 8);
    data.Number(0x0028'0102, 7);
    data.Number(0x0028'0103, 0);
    data.Plain(0x0028'2110, "CS", u"01"_s);
    const double ratio = double(frame.rows) * frame.columns * frame.components / double(frame.coded.size());
    data.Plain(0x0028'2112, "DS", QString::number(ratio, 'f', 2));
    data.Plain(0x0028'2114, "CS", u"ISO_10918_1"_s);
    data.Sequence(0x0040'0555, {});
}

Dataset DatasetIn(DicomCharacters characters, const DicomPicture& picture, const QString& instanceUid,
                  const JpegFrame& frame)
{
    Dataset data(characters);
    data.Plain(0x0008'0005, "CS", characters == DicomCharacters::Korean ? uR"(\ISO 2022 IR 149)"_s : u"ISO_IR 192"_s);
    data.Plain(0x0008'0008, "CS", uR"(ORIGINAL\PRIMARY)"_s);
    data.Plain(0x0008'0016, "UI", QString::fromUtf16(EndoscopicImage));
    data.Plain(0x0008'0018, "UI", instanceUid);
    data.Plain(0x0008'0020, "DA", Dataset::Date(picture.ymd));
    data.Plain(0x0008'0023, "DA", picture.takenAt.toString(u"yyyyMMdd"_s));
    // The visit has a date, but no time: its pictures must agree in what they say of it.
    data.Plain(0x0008'0030, "TM", {});
    data.Plain(0x0008'0033, "TM", picture.takenAt.toString(u"HHmmss"_s));
    AddVisit(data, picture);
    AddFrame(data, frame);
    return data;
}

} // namespace

PictureElements ElementsOf(const DicomPicture& picture, const QString& instanceUid, const JpegFrame& frame)
{
    if (picture.characters == DicomCharacters::Korean) {
        const Dataset korean = DatasetIn(DicomCharacters::Korean, picture, instanceUid, frame);
        if (korean.IsWhole())
            return {korean.Elements()};
    }
    return {DatasetIn(DicomCharacters::Unicode, picture, instanceUid, frame).Elements(),
            picture.characters != DicomCharacters::Unicode};
}
