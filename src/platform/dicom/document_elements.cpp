#include "platform/dicom/document_elements.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <map>

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype LongestProse = 1024;

/// The objects under their study and series, as every sequence of the kind has them.
void AddReferenced(Dataset& data, quint32 tag, const QList<DicomReference>& objects, const DicomPicture& facts)
{
    std::map<DicomSeries, QList<Dataset>> series;
    for (const DicomReference& object : objects)
        series[SeriesOfClass(object.classUid)].append(data.Reference(object));
    QList<Dataset> each;
    for (const auto& [name, references] : series) {
        Dataset one = data.Item();
        one.Sequence(0x0008'1199, references);
        one.Plain(0x0020'000e, "UI", SeriesUid(facts, name));
        each.append(one);
    }
    Dataset study = data.Item();
    study.Sequence(0x0008'1115, each);
    study.Plain(0x0020'000d, "UI", StudyUid(facts));
    data.Sequence(tag, {study});
}

/// An order that objects without a picture's series answer to.
void AddReferencedRequest(Dataset& data, const DicomPicture& facts)
{
    const DicomOrder& order = facts.study.order;
    if (order.accession.isEmpty() && order.procedureId.isEmpty())
        return;
    Dataset request = data.Item();
    request.Short(0x0008'0050, order.accession);
    request.Sequence(0x0008'1110, {});
    request.Plain(0x0020'000d, "UI", StudyUid(facts));
    request.Long(0x0032'1060, order.procedureText);
    if (!order.procedureCode.isEmpty() && !order.procedureScheme.isEmpty())
        request.Coded(0x0032'1064, order.procedureCode, order.procedureScheme, order.procedureName);
    else
        request.Sequence(0x0032'1064, {});
    request.Short(0x0040'1001, order.procedureId);
    request.Long(0x0040'2016, {});
    request.Long(0x0040'2017, {});
    data.Sequence(0x0040'a370, {request});
}

/// Which part of the body a movie shows: it must say one.
void AddRegion(Dataset& data, const QString& bodyPart)
{
    struct Region
    {
        QString part;
        QString code;
        QString meaning;
    };
    static const std::array<Region, 14> regions{{{u"STOMACH"_s, u"69695003"_s, u"Stomach"_s},
                                                 {u"COLON"_s, u"71854001"_s, u"Colon"_s},
                                                 {u"ESOPHAGUS"_s, u"32849002"_s, u"Esophagus"_s},
                                                 {u"DUODENUM"_s, u"38848004"_s, u"Duodenum"_s},
                                                 {u"RECTUM"_s, u"34402009"_s, u"Rectum"_s},
                                                 {u"BRONCHUS"_s, u"955009"_s, u"Bronchus"_s},
                                                 {u"LARYNX"_s, u"4596009"_s, u"Larynx"_s},
                                                 {u"PHARYNX"_s, u"54066008"_s, u"Pharynx"_s},
                                                 {u"NOSE"_s, u"45206002"_s, u"Nose"_s},
                                                 {u"EAR"_s, u"117590005"_s, u"Ear"_s},
                                                 {u"BLADDER"_s, u"89837001"_s, u"Bladder"_s},
                                                 {u"UTERUS"_s, u"35039007"_s, u"Uterus"_s},
                                                 {u"SKIN"_s, u"39937001"_s, u"Skin"_s},
                                                 {u""_s, u"38266002"_s, u"Entire body"_s}}};
    auto region = std::ranges::find(regions, bodyPart, &Region::part);
    if (region == regions.end())
        region = std::prev(regions.end());
    data.Coded(0x0008'2218, region->code, u"SCT"_s, region->meaning);
}

/// One channel, of the room.
void AddSound(Dataset& data)
{
    Dataset channel = data.Item();
    channel.Coded(0x003a'0208, u"109112"_s, u"DCM"_s, u"Ambient room environment"_s);
    channel.Number(0x003a'0301, 1, "IS");
    channel.Plain(0x003a'0302, "CS", u"MONO"_s);
    data.Sequence(0x003a'0300, {channel});
}

void AddMovieFrames(Dataset& data, const DicomMovie& movie, qint64 bytes)
{
    data.Plain(0x0018'1063, "DS", QString::number(movie.frameMs, 'f', 6).left(16));
    data.Number(0x0028'0002, 3);
    data.Plain(0x0028'0004, "CS", u"YBR_PARTIAL_420"_s);
    data.Number(0x0028'0006, 0);
    data.Number(0x0028'0008, movie.frames, "IS");
    data.Number(0x0028'0009, 0x0018'1063, "AT");
    data.Number(0x0028'0010, movie.rows);
    data.Number(0x0028'0011, movie.columns);
    data.Number(0x0028'0100, 8);
    data.Number(0x0028'0101, 8);
    data.Number(0x0028'0102, 7);
    data.Number(0x0028'0103, 0);
    data.Plain(0x0028'2110, "CS", u"01"_s);
    const double whole = 3.0 * movie.rows * movie.columns * movie.frames;
    data.Plain(0x0028'2112, "DS", QString::number(whole / double(qMax<qint64>(bytes, 1)), 'f', 2));
    data.Plain(0x0028'2114, "CS", u"ISO_14496_10"_s);
}

} // namespace

ObjectElements ElementsOf(const DicomReport& report, const QByteArray& pdf, const DicomPicture& facts,
                          const DicomReference& self)
{
    return InWantedSet(facts.characters, [&](Dataset& data) {
        AddVisit(data, facts, {self, DicomSeries::Reports, u"DOC"_s, report.writtenAt, report.instance});
        AddRequest(data, facts);
        data.Plain(0x0008'002a, "DT", {});
        // Made by the station itself, from its tables.
        data.Plain(0x0008'0064, "CS", u"WSD"_s);
        data.Plain(0x0028'0301, "CS", u"YES"_s);
        data.Coded(0x0040'a043, u"18748-4"_s, u"LN"_s, u"Diagnostic Imaging Report"_s);
        if (!report.predecessor.uid.isEmpty())
            AddReferenced(data, 0x0040'a360, {report.predecessor}, facts);
        data.Prose(0x0042'0010, "ST", report.title, LongestProse);
        data.Plain(0x0042'0012, "LO", u"application/pdf"_s);
        data.Number(0x0042'0015, pdf.size(), "UL");
    });
}

ObjectElements ElementsOf(const DicomMovie& movie, qint64 bytes, const DicomPicture& facts, const DicomReference& self)
{
    return InWantedSet(facts.characters, [&](Dataset& data) {
        AddVisit(data, facts, {self, DicomSeries::Movies, u"ES"_s, movie.startedAt, movie.instance});
        AddRequest(data, facts);
        AddAcquisition(data, movie.startedAt);
        data.Plain(0x0008'0008, "CS", uR"(ORIGINAL\PRIMARY)"_s);
        if (!facts.burnedIn.isEmpty())
            data.Code(0x0028'0301, facts.burnedIn);
        AddBodyPart(data, facts, true);
        AddRegion(data, facts.study.kind.bodyPart);
        AddMovieFrames(data, movie, bytes);
        if (movie.hasSound)
            AddSound(data);
        data.Sequence(0x0040'0555, {});
    });
}

ObjectElements ElementsOf(const QList<DicomReference>& rejected, const QDateTime& at, const DicomPicture& facts,
                          const DicomReference& self)
{
    return InWantedSet(facts.characters, [&](Dataset& data) {
        AddVisit(data, facts, {self, DicomSeries::Rejections, u"KO"_s, at, 1});
        AddReferencedRequest(data, facts);
        data.Sequence(0x0008'1111, {});
        data.Plain(0x0040'a040, "CS", u"CONTAINER"_s);
        data.Coded(0x0040'a043, u"113001"_s, u"DCM"_s, u"Rejected for Quality Reasons"_s);
        data.Plain(0x0040'a050, "CS", u"SEPARATE"_s);
        AddReferenced(data, 0x0040'a375, rejected, facts);
        Dataset layout = data.Item();
        layout.Plain(0x0008'0105, "CS", u"DCMR"_s);
        layout.Plain(0x0040'db00, "CS", u"2010"_s);
        data.Sequence(0x0040'a504, {layout});
        QList<Dataset> contents;
        for (const DicomReference& object : rejected) {
            Dataset content = data.Item();
            content.Sequence(0x0008'1199, {data.Reference(object)});
            content.Plain(0x0040'a010, "CS", u"CONTAINS"_s);
            const bool isReport = SeriesOfClass(object.classUid) == DicomSeries::Reports;
            content.Plain(0x0040'a040, "CS", isReport ? u"COMPOSITE"_s : u"IMAGE"_s);
            contents.append(content);
        }
        data.Sequence(0x0040'a730, contents);
    });
}
