#include "platform/dicom/service_elements.h"

#include "platform/dicom/link_messages.h"
#include "platform/dicom/visit_elements.h"

#include <QSysInfo>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

/// Elements of a server, by their tags.
class ReadSet
{
public:
    ReadSet(const QCborArray& elements, const QByteArray& characters) : m_elements(elements), m_characters(characters)
    {
        if (const QByteArray own = Value(0x0008'0005); !own.isEmpty())
            m_characters = own;
    }

    QString Text(quint32 tag, qsizetype longest = dicomtext::LongestLong) const
    {
        return dicomtext::TextOf(Value(tag), m_characters, longest);
    }
    QString Person(quint32 tag) const { return dicomtext::PersonOf(Value(tag), m_characters); }
    QString Uid(quint32 tag) const
    {
        const QString uid = QString::fromLatin1(Value(tag)).remove(QChar(u'\0')).trimmed();
        return IsUid(uid) ? uid : QString();
    }
    QList<ReadSet> Items(quint32 tag) const
    {
        QList<ReadSet> items;
        const QCborArray read = Element(tag).at(3).toArray();
        for (const auto& item : read)
            items.append(ReadSet(item.toArray(), m_characters));
        return items;
    }
    /// The first item; an empty one where there is none.
    ReadSet Item(quint32 tag) const { return Items(tag).value(0, ReadSet({}, m_characters)); }

private:
    QCborArray Element(quint32 tag) const
    {
        for (const auto& each : m_elements) {
            const QCborArray element = each.toArray();
            if (dicomlink::IntegerOf(element.at(0), -1) == qint64(tag))
                return element;
        }
        return {};
    }
    QByteArray Value(quint32 tag) const { return Element(tag).at(2).toByteArray(); }

    QCborArray m_elements;
    QByteArray m_characters;
};

Dataset EmptyCode(const Dataset& of)
{
    Dataset code = of.Item();
    code.Short(0x0008'0100, {});
    code.Short(0x0008'0102, {});
    code.Long(0x0008'0104, {});
    return code;
}

Dataset SeriesItem(const Dataset& of, const DicomPerformedSeries& series, const DicomPicture& facts)
{
    Dataset item = of.Item();
    QList<Dataset> references;
    for (const DicomReference& object : series.objects)
        references.append(item.Reference(object));
    item.Long(0x0008'103e, facts.section);
    item.Name(0x0008'1050, facts.doctor, facts.hasNameParts);
    item.Name(0x0008'1070, {}, false);
    item.Plain(0x0008'0054, "AE", {});
    item.Sequence(0x0008'1140, series.arePictures ? references : QList<Dataset>());
    // It may not be empty.
    item.Long(0x0018'1030, facts.section.trimmed().isEmpty() ? facts.ymd : facts.section);
    item.Plain(0x0020'000e, "UI", series.uid);
    item.Sequence(0x0040'0220, series.arePictures ? QList<Dataset>() : references);
    return item;
}

} // namespace

QList<DicomElement> serviceelements::Question(const QString& patientId, const QString& ymd, DicomCharacters characters)
{
    return InWantedSet(characters,
                       [&](Dataset& keys) {
                           keys.Short(0x0008'0050, {});
                           keys.PartedName(0x0008'0090, {});
                           keys.PartedName(0x0010'0010, {});
                           keys.Long(0x0010'0020, patientId);
                           keys.Plain(0x0020'000d, "UI", {});
                           keys.Long(0x0032'1060, {});
                           keys.Sequence(0x0032'1064, {EmptyCode(keys)});
                           Dataset step = keys.Item();
                           step.Plain(0x0008'0060, "CS", {});
                           step.Plain(0x0040'0001, "AE", {});
                           step.Plain(0x0040'0002, "DA", Dataset::Date(ymd));
                           step.Plain(0x0040'0003, "TM", {});
                           step.PartedName(0x0040'0006, {});
                           step.Long(0x0040'0007, {});
                           step.Sequence(0x0040'0008, {EmptyCode(keys)});
                           step.Short(0x0040'0009, {});
                           keys.Sequence(0x0040'0100, {step});
                           keys.Short(0x0040'1001, {});
                       })
        .elements;
}

std::optional<DicomScheduled> serviceelements::ScheduledOf(const QCborArray& entry, const QString& patientId,
                                                           const QString& ymd)
{
    const ReadSet set(entry, {});
    const ReadSet step = set.Item(0x0040'0100);
    const QString day = step.Text(0x0040'0002, 8);
    if (set.Text(0x0010'0020) != patientId.trimmed() || (!day.isEmpty() && day != ymd.trimmed()))
        return std::nullopt;
    DicomScheduled scheduled;
    DicomOrder& order = scheduled.order;
    const ReadSet code = set.Item(0x0032'1064);
    order.accession = set.Text(0x0008'0050, dicomtext::LongestShort);
    order.procedureId = set.Text(0x0040'1001, dicomtext::LongestShort);
    order.procedureText = set.Text(0x0032'1060);
    order.procedureCode = code.Text(0x0008'0100, dicomtext::LongestShort);
    order.procedureScheme = code.Text(0x0008'0102, dicomtext::LongestShort);
    order.procedureName = code.Text(0x0008'0104);
    order.stepId = step.Text(0x0040'0009, dicomtext::LongestShort);
    order.stepText = step.Text(0x0040'0007);
    order.referring = set.Person(0x0008'0090);
    scheduled.study = set.Uid(0x0020'000d);
    scheduled.modality = step.Text(0x0008'0060, dicomtext::LongestShort);
    const QString time = step.Text(0x0040'0003, 4);
    scheduled.startsAt = QTime::fromString(time, u"HHmm"_s).isValid() ? time : QString();
    for (const QList<ReadSet>& codes : {set.Items(0x0032'1064), step.Items(0x0040'0008)}) {
        for (const ReadSet& each : codes) {
            if (const QString value = each.Text(0x0008'0100, dicomtext::LongestShort); !value.isEmpty())
                scheduled.codes.append(value);
        }
    }
    return scheduled;
}

QList<DicomElement> serviceelements::BegunStep(const DicomPerformedStep& step, const DicomPicture& facts,
                                               const QString& station)
{
    return InWantedSet(facts.characters,
                       [&](Dataset& data) {
                           const DicomOrder& order = facts.study.order;
                           AddPatient(data, facts);
                           data.Sequence(0x0008'1120, {});
                           Dataset scheduled = data.Item();
                           scheduled.Short(0x0008'0050, order.accession);
                           scheduled.Sequence(0x0008'1110, {});
                           scheduled.Plain(0x0020'000d, "UI", StudyUid(facts));
                           scheduled.Long(0x0032'1060, order.procedureText);
                           scheduled.Long(0x0040'0007, order.stepText);
                           scheduled.Sequence(0x0040'0008, {});
                           scheduled.Short(0x0040'0009, order.stepId);
                           scheduled.Short(0x0040'1001, order.procedureId);
                           data.Sequence(0x0040'0270, {scheduled});
                           data.Plain(0x0008'0060, "CS", WordOf(facts.study.kind.modality));
                           if (order.procedureCode.isEmpty())
                               data.Sequence(0x0008'1032, {});
                           else
                               data.Coded(0x0008'1032, order.procedureCode, order.procedureScheme, order.procedureName);
                           data.Short(0x0020'0010, facts.ymd);
                           data.Plain(0x0040'0241, "AE", station);
                           data.Short(0x0040'0242, QSysInfo::machineHostName());
                           data.Short(0x0040'0243, {});
                           data.Plain(0x0040'0244, "DA", DateOf(step.beganAt));
                           data.Plain(0x0040'0245, "TM", TimeOf(step.beganAt));
                           data.Plain(0x0040'0250, "DA", {});
                           data.Plain(0x0040'0251, "TM", {});
                           data.Plain(0x0040'0252, "CS", u"IN PROGRESS"_s);
                           data.Short(0x0040'0253, step.beganAt.toString(u"yyyyMMddHHmmss"_s));
                           data.Long(0x0040'0254, order.procedureText.isEmpty() ? facts.section : order.procedureText);
                           data.Long(0x0040'0255, {});
                           data.Sequence(0x0040'0260, {});
                           data.Sequence(0x0040'0340, {});
                       })
        .elements;
}

QList<DicomElement> serviceelements::EndedStep(const DicomPerformedStep& step, const DicomPicture& facts)
{
    return InWantedSet(facts.characters,
                       [&](Dataset& data) {
                           QList<Dataset> series;
                           for (const DicomPerformedSeries& each : step.series)
                               series.append(SeriesItem(data, each, facts));
                           data.Plain(0x0040'0250, "DA", DateOf(step.endedAt));
                           data.Plain(0x0040'0251, "TM", TimeOf(step.endedAt));
                           data.Plain(0x0040'0252, "CS", series.isEmpty() ? u"DISCONTINUED"_s : u"COMPLETED"_s);
                           data.Sequence(0x0040'0340, series);
                       })
        .elements;
}

QList<DicomElement> serviceelements::CommitmentOf(const QString& transaction, const QList<DicomReference>& objects)
{
    Dataset data(DicomCharacters::Unicode);
    data.Plain(0x0008'1195, "UI", transaction);
    QList<Dataset> references;
    for (const DicomReference& object : objects)
        references.append(data.Reference(object));
    data.Sequence(0x0008'1199, references);
    return data.Elements();
}
