#include "platform/dicom/visit_elements.h"

#include <QCryptographicHash>
#include <QSysInfo>
#include <QTime>

using namespace Qt::StringLiterals;

namespace {

/// Tells the studies of a day apart, in characters that everyone reads. Those that were sent without a time by an
/// earlier release have the date alone, and keep it.
QString StudyId(const DicomPicture& facts)
{
    if (facts.study.time.isEmpty())
        return facts.ymd;
    constexpr qsizetype Digits = 6;
    const QByteArray hash =
        QCryptographicHash::hash(facts.section.trimmed().toUtf8(), QCryptographicHash::Sha256).toHex();
    return facts.ymd.trimmed() + u'-' + QString::fromLatin1(hash.first(Digits)).toUpper();
}

void AddStudy(Dataset& data, const DicomPicture& facts)
{
    const DicomOrder& order = facts.study.order;
    data.Plain(0x0008'0020, "DA", Dataset::Date(facts.ymd));
    data.Plain(0x0008'0030, "TM", DicomTime(facts.study.time));
    data.Short(0x0008'0050, order.accession);
    data.PartedName(0x0008'0090, order.referring);
    data.Long(0x0008'1030, facts.section);
    if (!order.procedureCode.isEmpty() && !order.procedureScheme.isEmpty())
        data.Coded(0x0008'1032, order.procedureCode, order.procedureScheme, order.procedureName);
    data.Plain(0x0020'000d, "UI", StudyUid(facts));
    // A directory needs one that isn't empty.
    data.Short(0x0020'0010, StudyId(facts));
    if (!order.procedureText.isEmpty())
        data.Long(0x0032'1060, order.procedureText);
}

void AddStation(Dataset& data, const DicomPicture& facts)
{
    data.Long(0x0008'0070, u"Capture Station"_s);
    data.Long(0x0008'0080, facts.institution);
    data.Short(0x0008'1010, QSysInfo::machineHostName());
    data.Long(0x0008'1090, u"capture-station"_s);
    data.Long(0x0018'1020, QStringLiteral(STATION_VERSION));
}

/// As an object writes it: "+0900".
QString OffsetOf(const QDateTime& at)
{
    const int minutes = at.offsetFromUtc() / 60;
    return u"%1%2%3"_s.arg(QChar(minutes < 0 ? u'-' : u'+'))
        .arg(qAbs(minutes) / 60, 2, 10, QChar(u'0'))
        .arg(qAbs(minutes) % 60, 2, 10, QChar(u'0'));
}

} // namespace

void AddPatient(Dataset& data, const DicomPicture& facts)
{
    const DicomIdentity& identity = facts.identity;
    data.Name(0x0010'0010, facts.patientName, facts.hasNameParts);
    data.Long(0x0010'0020, identity.patientId.isEmpty() ? facts.chart : identity.patientId);
    if (!identity.issuer.isEmpty())
        data.Long(0x0010'0021, identity.issuer);
    data.Plain(0x0010'0030, "DA", Dataset::Date(facts.birthDate));
    data.Plain(0x0010'0040, "CS", facts.sex == u"M" || facts.sex == u"F" ? facts.sex : QString());
}

QString DateOf(const QDateTime& at)
{
    return at.toString(u"yyyyMMdd"_s);
}

QString TimeOf(const QDateTime& at)
{
    return at.toString(u"HHmmss"_s);
}

QString DicomTime(const QString& time)
{
    constexpr qsizetype Digits = 6;
    const QString begin = time.left(Digits);
    return QTime::fromString(begin, u"HHmmss"_s).isValid() ? begin : QString();
}

ObjectElements InWantedSet(DicomCharacters wanted, const std::function<void(Dataset&)>& fill)
{
    if (wanted == DicomCharacters::Korean) {
        Dataset korean(DicomCharacters::Korean);
        korean.Plain(0x0008'0005, "CS", uR"(\ISO 2022 IR 149)"_s);
        fill(korean);
        if (korean.IsWhole())
            return {korean.Elements()};
    }
    Dataset data(DicomCharacters::Unicode);
    data.Plain(0x0008'0005, "CS", u"ISO_IR 192"_s);
    fill(data);
    return {data.Elements(), wanted != DicomCharacters::Unicode};
}

void AddVisit(Dataset& data, const DicomPicture& facts, const ObjectHead& head)
{
    data.Plain(0x0008'0016, "UI", head.self.classUid);
    data.Plain(0x0008'0018, "UI", head.self.uid);
    data.Plain(0x0008'0023, "DA", DateOf(head.at));
    data.Plain(0x0008'0033, "TM", TimeOf(head.at));
    data.Plain(0x0008'0060, "CS", head.modality);
    if (head.at.isValid())
        data.Plain(0x0008'0201, "SH", OffsetOf(head.at));
    AddPatient(data, facts);
    AddStudy(data, facts);
    AddStation(data, facts);
    // Of who examined: a document was written by somebody.
    if (head.series == DicomSeries::Images || head.series == DicomSeries::Movies)
        data.Name(0x0008'1050, facts.doctor, facts.hasNameParts);
    data.Plain(0x0020'000e, "UI", SeriesUid(facts, head.series));
    data.Number(0x0020'0011, static_cast<int>(head.series) + 1, "IS");
    data.Number(0x0020'0013, head.instance, "IS");
}

void AddRequest(Dataset& data, const DicomPicture& facts)
{
    const DicomOrder& order = facts.study.order;
    Dataset request = data.Item();
    const auto add = [&request](quint32 tag, const QString& text, bool isLong) {
        if (text.isEmpty())
            return;
        if (isLong)
            request.Long(tag, text);
        else
            request.Short(tag, text);
    };
    add(0x0008'0050, order.accession, false);
    add(0x0032'1060, order.procedureText, true);
    add(0x0040'0007, order.stepText, true);
    add(0x0040'0009, order.stepId, false);
    add(0x0040'1001, order.procedureId, false);
    if (!order.procedureCode.isEmpty() && !order.procedureScheme.isEmpty())
        request.Coded(0x0032'1064, order.procedureCode, order.procedureScheme, order.procedureName);
    if (request.Elements().isEmpty())
        return;
    request.Plain(0x0020'000d, "UI", StudyUid(facts));
    data.Sequence(0x0040'0275, {request});
}

void AddBodyPart(Dataset& data, const DicomPicture& facts, bool isToldElsewhere)
{
    const DicomPictureKind& kind = facts.study.kind;
    if (!kind.bodyPart.isEmpty())
        data.Code(0x0018'0015, kind.bodyPart);
    data.Plain(0x0020'0020, "CS", {});
    // Without a value where nobody knows whether the part is one of a pair.
    if (!kind.laterality.isEmpty() || (kind.bodyPart.isEmpty() && !isToldElsewhere))
        data.Code(0x0020'0060, kind.laterality);
}

void AddAcquisition(Dataset& data, const QDateTime& at)
{
    if (!at.isValid())
        return;
    data.Plain(0x0008'0022, "DA", DateOf(at));
    data.Plain(0x0008'002a, "DT", DateOf(at) + TimeOf(at));
    data.Plain(0x0008'0032, "TM", TimeOf(at));
}
