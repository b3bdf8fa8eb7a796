#include "sender/services/step_objects.h"

#include "contracts/dicom_uids.h"
#include "sender/pacs_contents.h"

#include <map>

using namespace Qt::StringLiterals;

namespace {

DicomSeries SeriesKindOf(const PacsEntry& entry)
{
    if (entry.part.startsWith(u"report"_s))
        return DicomSeries::Reports;
    return entry.part.startsWith(u"movie"_s) ? DicomSeries::Movies : DicomSeries::Pictures;
}

bool IsThere(const PacsEntry& entry)
{
    return entry.state == PacsState::Sent || entry.state == PacsState::Committed;
}

} // namespace

QList<DicomPerformedSeries> SeriesOf(const QList<PacsEntry>& entries, DicomPicture facts, const QString& captureRoot,
                                     const std::stop_token& stop)
{
    std::map<DicomSeries, DicomPerformedSeries> series;
    const auto add = [&](const PacsEntry& entry, const DicomReference& object) {
        const DicomSeries kind = SeriesKindOf(entry);
        DicomPerformedSeries& target = series[kind];
        target.uid = SeriesUid(facts, kind);
        target.arePictures = kind == DicomSeries::Pictures || kind == DicomSeries::Movies;
        if (!target.objects.contains(object))
            target.objects.append(object);
    };
    const QString ownClass = ClassUidOf(facts.study.kind.modality);
    for (const PacsEntry& entry : entries) {
        if (stop.stop_requested())
            break;
        if (entry.part.startsWith(u"rejection"_s))
            continue;
        if (IsThere(entry) && !entry.uid.isEmpty()) {
            // An earlier release has told no class: it knew but one.
            add(entry, {entry.classUid.isEmpty() ? ClassUidOf(DicomModality::Endoscopy) : entry.classUid, entry.uid});
            continue;
        }
        if (!entry.part.isEmpty() || IsThere(entry))
            continue;
        const PacsContent content = ReadPacsContent(entry.VisitBelow(captureRoot), entry.number);
        facts.number = entry.number;
        facts.restorings = entry.restorings;
        if (content.kind == PacsContent::Read)
            add(entry, {ownClass, InstanceUid(facts, content.bytes)});
    }
    QList<DicomPerformedSeries> list;
    for (const auto& [kind, each] : series)
        list.append(each);
    return list;
}
