#include "sender/services/worklist_choice.h"

#include "identifiers/dicom_uids.h"

#include <QCryptographicHash>
#include <QStringList>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

bool Fits(const DicomScheduled& entry, const QString& section, DicomModality modality, const PacsSetupRecord& setup)
{
    bool hasCode = false;
    for (const QString& code : entry.codes) {
        const auto told = setup.WorklistCodes.find(code);
        if (told == setup.WorklistCodes.end())
            continue;
        hasCode = true;
        if (told->second.trimmed() == section.trimmed())
            return true;
    }
    return !hasCode && entry.modality == WordOf(modality);
}

QString KeyOf(const DicomScheduled& entry)
{
    const DicomOrder& order = entry.order;
    const QString all = QStringList{order.accession, order.procedureId,   order.stepId,  entry.study,
                                    entry.startsAt,  order.procedureText, order.stepText}
                            .join(u'\x1f');
    const QByteArray hash = QCryptographicHash::hash(all.toUtf8(), QCryptographicHash::Sha256);
    return QString::fromLatin1(hash.toHex().left(24));
}

/// What tells it from others: time, procedure and number.
QString TextOf(const DicomScheduled& entry)
{
    const DicomOrder& order = entry.order;
    QStringList parts;
    if (!entry.startsAt.isEmpty())
        parts << entry.startsAt.left(2) + u':' + entry.startsAt.sliced(2);
    for (const QString& text : {order.procedureText, order.procedureName, order.stepText, order.procedureCode}) {
        if (!text.isEmpty()) {
            parts << text;
            break;
        }
    }
    if (!order.accession.isEmpty())
        parts << u"접수 %1"_s.arg(order.accession);
    else if (!order.procedureId.isEmpty())
        parts << u"처방 %1"_s.arg(order.procedureId);
    return parts.isEmpty() ? u"내용이 없는 처방"_s : parts.join(u", "_s);
}

} // namespace

QList<service_rows::Offer> FittingOffers(const QList<DicomScheduled>& entries, const QString& section,
                                         DicomModality modality, const PacsSetupRecord& setup)
{
    QList<DicomScheduled> fitting;
    for (const DicomScheduled& entry : entries) {
        if (Fits(entry, section, modality, setup))
            fitting.append(entry);
    }
    std::ranges::stable_sort(fitting, {}, &DicomScheduled::startsAt);
    QList<service_rows::Offer> offers;
    for (const DicomScheduled& entry : std::as_const(fitting)) {
        const service_rows::Offer offer{KeyOf(entry), TextOf(entry), entry.order, entry.study};
        // A server may tell the same one twice.
        if (std::ranges::find(offers, offer.key, &service_rows::Offer::key) == offers.end())
            offers.append(offer);
    }
    return offers;
}
