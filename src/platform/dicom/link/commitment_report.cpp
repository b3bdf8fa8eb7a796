#include "platform/dicom/link/commitment_report.h"

#include "platform/dicom/link/link_texts.h"
#include "platform/dicom/link_messages.h"

#include <dcmtk/dcmdata/dctk.h>

#include <memory>

using namespace dicomlink;

namespace {

constexpr int DeepestItem = 3;

QByteArray TextOf(DcmItem& item, const DcmTagKey& tag)
{
    OFString text;
    if (item.findAndGetOFStringArray(tag, text).bad())
        return {};
    return linktexts::Bounded(text.c_str()).trimmed();
}

void AddReferences(DcmItem& set, const DcmTagKey& sequence, bool areFailed, QCborMap& report)
{
    QCborArray references;
    for (long at = 0; at < MostReported; ++at) {
        DcmItem* item = nullptr;
        if (set.findAndGetSequenceItem(sequence, item, at).bad() || item == nullptr)
            break;
        QCborArray reference{TextOf(*item, DCM_ReferencedSOPClassUID), TextOf(*item, DCM_ReferencedSOPInstanceUID)};
        Uint16 reason = 0;
        if (areFailed && item->findAndGetUint16(DCM_FailureReason, reason).good())
            reference.append(int(reason));
        references.append(reference);
    }
    report[areFailed ? FailedKey : CommittedKey] = references;
}

QCborArray ElementsWithin(DcmItem& item, int depth, int& left)
{
    QCborArray elements;
    for (unsigned long at = 0; at < item.card() && left > 0; ++at) {
        DcmElement* element = item.getElement(at);
        if (element == nullptr)
            continue;
        --left;
        const DcmTag tag = element->getTag();
        const qint64 number = qint64(tag.getGroup()) << 16 | tag.getElement();
        QCborArray items;
        QByteArray value;
        if (auto* sequence = dynamic_cast<DcmSequenceOfItems*>(element); sequence != nullptr) {
            for (unsigned long each = 0; depth < DeepestItem && each < sequence->card() && left > 0; ++each) {
                --left;
                items.append(ElementsWithin(*sequence->getItem(each), depth + 1, left));
            }
        } else {
            value = TextOf(item, tag.getXTag());
        }
        elements.append(QCborArray{number, QByteArray(DcmVR(element->getVR()).getVRName()), value, items});
    }
    return elements;
}

} // namespace

OFCondition linkreport::Read(T_ASC_Association& association, T_ASC_PresentationContextID context,
                             const T_DIMSE_N_EventReportRQ& told, int seconds, QCborMap& report)
{
    if (told.DataSetType == DIMSE_DATASET_NULL)
        return DIMSE_BADMESSAGE;
    DcmDataset* read = nullptr;
    T_ASC_PresentationContextID id = context;
    const OFCondition heard =
        DIMSE_receiveDataSetInMemory(&association, DIMSE_NONBLOCKING, seconds, &id, &read, nullptr, nullptr);
    const std::unique_ptr<DcmDataset> set(read);
    if (heard.bad() || set == nullptr)
        return heard.bad() ? heard : DIMSE_BADMESSAGE;
    report[TransactionKey] = TextOf(*set, DCM_TransactionUID);
    AddReferences(*set, DCM_ReferencedSOPSequence, false, report);
    AddReferences(*set, DCM_FailedSOPSequence, true, report);
    return heard;
}

OFCondition linkreport::Respond(T_ASC_Association& association, T_ASC_PresentationContextID context,
                                const T_DIMSE_N_EventReportRQ& told, int status)
{
    T_DIMSE_Message message = {};
    message.CommandField = DIMSE_N_EVENT_REPORT_RSP;
    T_DIMSE_N_EventReportRSP& response = message.msg.NEventReportRSP;
    response.MessageIDBeingRespondedTo = told.MessageID;
    static_assert(sizeof response.AffectedSOPClassUID == sizeof told.AffectedSOPClassUID);
    memcpy(response.AffectedSOPClassUID, told.AffectedSOPClassUID, sizeof told.AffectedSOPClassUID);
    memcpy(response.AffectedSOPInstanceUID, told.AffectedSOPInstanceUID, sizeof told.AffectedSOPInstanceUID);
    response.EventTypeID = told.EventTypeID;
    response.DimseStatus = static_cast<DIC_US>(status);
    response.DataSetType = DIMSE_DATASET_NULL;
    response.opts =
        O_NEVENTREPORT_AFFECTEDSOPCLASSUID | O_NEVENTREPORT_AFFECTEDSOPINSTANCEUID | O_NEVENTREPORT_EVENTTYPEID;
    return DIMSE_sendMessageUsingMemoryData(&association, context, &message, nullptr, nullptr, nullptr, nullptr);
}

QCborArray linkreport::ElementsOf(DcmItem& item)
{
    int left = MostElements;
    return ElementsWithin(item, 0, left);
}
