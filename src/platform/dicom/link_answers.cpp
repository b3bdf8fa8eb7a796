#include "platform/dicom/link_answers.h"

#include "platform/dicom/dicom_text.h"
#include "platform/dicom/link_messages.h"
#include "platform/dicom/service_elements.h"

#include <QCborArray>
#include <QCborValue>

using namespace dicomlink;

namespace {

DicomReference ReferenceOf(const QCborArray& told)
{
    return {QString::fromLatin1(told.at(0).toByteArray()), QString::fromLatin1(told.at(1).toByteArray())};
}

} // namespace

bool linkanswers::Read(const QByteArray& message, QCborMap& answer)
{
    // Of a broken map the toolkit gives a part in which nothing can be looked up.
    QCborParserError error;
    const QCborValue value = QCborValue::fromCbor(message, &error);
    if (error.error != QCborError::NoError || !value.isMap())
        return false;
    answer = value.toMap();
    return true;
}

linkanswers::Taken linkanswers::TakenOf(const QCborMap& answer)
{
    Taken taken;
    const QCborArray pairs = answer.value(TakenKey).toArray();
    for (const auto& each : pairs) {
        const QCborArray pair = each.toArray();
        taken.append({QString::fromLatin1(pair.at(0).toByteArray()), QString::fromLatin1(pair.at(1).toByteArray())});
    }
    return taken;
}

QList<DicomFoundStudy> linkanswers::StudiesOf(const QCborMap& answer, const QString& uid)
{
    QList<DicomFoundStudy> found;
    const QCborArray matches = answer.value(MatchesKey).toArray();
    for (const auto& each : matches) {
        const QCborArray match = each.toArray();
        const QString name = dicomtext::NameOf(match.at(2).toByteArray(), match.at(3).toByteArray());
        if (match.at(0).toByteArray() == uid.toLatin1())
            found.append({uid, QString::fromUtf8(match.at(1).toByteArray()).trimmed(), name});
    }
    return found;
}

QList<DicomFound> linkanswers::PicturesOf(const QCborMap& answer)
{
    QList<DicomFound> found;
    const QCborArray matches = answer.value(MatchesKey).toArray();
    for (const auto& each : matches) {
        const QCborArray match = each.toArray();
        const QByteArray uid = match.at(0).toByteArray();
        if (!uid.isEmpty())
            found.append({QString::fromLatin1(uid), match.at(1).toByteArray().trimmed().toInt()});
    }
    return found;
}

QList<DicomScheduled> linkanswers::ScheduledOf(const QCborMap& answer, const QString& patientId, const QString& ymd)
{
    QList<DicomScheduled> found;
    const QCborArray entries = answer.value(ScheduledKey).toArray();
    for (const auto& entry : entries) {
        if (const auto scheduled = serviceelements::ScheduledOf(entry.toArray(), patientId, ymd))
            found.append(*scheduled);
    }
    return found;
}

DicomCommitment linkanswers::ReportOf(const QCborMap& answer)
{
    DicomCommitment report;
    report.transaction = QString::fromLatin1(answer.value(TransactionKey).toByteArray());
    const QCborArray committed = answer.value(CommittedKey).toArray();
    for (const auto& each : committed)
        report.committed.append(ReferenceOf(each.toArray()));
    const QCborArray failed = answer.value(FailedKey).toArray();
    for (const auto& each : failed) {
        const QCborArray told = each.toArray();
        report.failed.append({ReferenceOf(told), static_cast<int>(IntegerOf(told.at(2), 0))});
    }
    return report;
}
