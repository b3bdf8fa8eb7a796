#include "sender/services/step_objects.h"

#include "identifiers/dicom_uids.h"
#include "pacs/parts.h"
#include "sender/pacs_contents.h"

#include <map>

using namespace Qt::StringLiterals;

namespace {

DicomSeries SeriesKindOf(const PacsEntry& entry)
{
    if (parts::IsReport(entry.part))
        return DicomSeries::Reports;
    return parts::IsMovie(entry.part) ? DicomSeries::Movies : DicomSeries::Images;
}

} // namespace

bool IsAtServer(const PacsEntry& entry)
{
    return entry.state == PacsState::Sent || entry.state == PacsState::Committed;
}

QList<DicomPerformedSeries> SeriesOf(const QList<PacsEntry>& entries, DicomPicture facts, const QString& captureRoot,
                                     const QHash<int, QStringList>& identities, const std::stop_token& stop)
{
    std::map<DicomSeries, DicomPerformedSeries> series;
    const auto add = [&](const PacsEntry& entry, const DicomReference& object) {
        const DicomSeries kind = SeriesKindOf(entry);
        DicomPerformedSeries& target = series[kind];
        target.uid = SeriesUid(facts, kind);
        target.arePictures = kind == DicomSeries::Images || kind == DicomSeries::Movies;
        if (!target.objects.contains(object))
            target.objects.append(object);
    };
    const QString ownClass = ClassUidOf(facts.study.kind.modality);
    for (const PacsEntry& entry : entries) {
        if (stop.stop_requested())
            break;
        if (parts::IsRejection(entry.part) || parts::IsSearch(entry.part))
            continue;
        for (const DicomReference& object : parts::StoredOf(entry))
            add(entry, object);
        if (IsAtServer(entry) || !parts::IsOfPicture(entry.part))
            continue;
        const PacsContent content =
            ReadPacsContent(entry, entry.VisitBelow(captureRoot), identities.value(entry.number));
        facts.number = entry.number;
        facts.restorings = entry.restorings;
        if (content.kind != PacsContent::Read)
            continue;
        add(entry, {ownClass, InstanceUid(facts, content.bytes)});
        if (!content.original.isEmpty())
            add(entry, {ownClass, InstanceUid(facts, content.original)});
    }
    QList<DicomPerformedSeries> list;
    for (const auto& [kind, each] : series)
        list.append(each);
    return list;
}
