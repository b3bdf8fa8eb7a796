#include "platform/dicom/link/ServiceAssociation.h"

#include "platform/dicom/link/commitment_report.h"
#include "platform/dicom/link/link_texts.h"
#include "platform/dicom/link/PictureObject.h"
#include "platform/dicom/link/server_sets.h"

#include <dcmtk/dcmdata/dctk.h>
#include <dcmtk/dcmnet/diutil.h>

#include <memory>

using namespace dicomlink;
using linktexts::Copy;

namespace {

struct Offered
{
    Association::Purpose purpose;
    const char* kind;
};

Offered OfferedFor(Request request, Service service)
{
    const Offered worklist{Association::Purpose::Worklist, UID_FINDModalityWorklistInformationModel};
    const Offered steps{Association::Purpose::Steps, UID_ModalityPerformedProcedureStepSOPClass};
    const Offered commitment{Association::Purpose::Commitment, UID_StorageCommitmentPushModelSOPClass};
    if (request == Request::Reach)
        return service == Service::Worklist ? worklist : service == Service::Steps ? steps : commitment;
    return request == Request::Scheduled ? worklist : request == Request::Commit ? commitment : steps;
}

} // namespace

LinkAnswer ServiceAssociation::Ask(const QCborMap& request, QCborMap& map)
{
    const auto kind = static_cast<Request>(request.value(RequestKey).toInteger(-1));
    const Offered offered = OfferedFor(kind, static_cast<Service>(request.value(ServiceKey).toInteger()));
    if (LinkAnswer opened = Open(request, offered.purpose); opened.fault != Fault::None)
        return opened;
    m_context = ASC_findAcceptedPresentationContextID(m_association, offered.kind);
    LinkAnswer answer{Fault::NoContext};
    if (m_context == 0) {
        Close();
        return answer;
    }
    switch (kind) {
    case Request::Reach:
        // Who offers the service needn't offer this as well.
        answer = ASC_findAcceptedPresentationContextID(m_association, UID_VerificationSOPClass) == 0
                     ? LinkAnswer{Fault::None}
                     : Echo();
        break;
    case Request::Scheduled:
        answer = AskScheduled(request, map);
        break;
    case Request::Commit:
        answer = AskCommitment(request, map);
        break;
    default:
        answer = TellStep(request, kind == Request::Create);
        break;
    }
    Close();
    return answer;
}

LinkAnswer ServiceAssociation::AskScheduled(const QCborMap& request, QCborMap& map)
{
    DcmDataset keys;
    if (!pictureobject::PutElements(keys, request.value(ElementsKey).toArray()))
        return {};
    QCborArray entries;
    const auto take = [&entries](DcmDataset* entry) {
        if (entry == nullptr || entries.size() >= MostScheduled)
            return false;
        entries.append(serversets::ElementsOf(*entry));
        return true;
    };
    LinkAnswer answer =
        AskMatches({m_context, UID_FINDModalityWorklistInformationModel}, keys, take, serversets::CommentOf);
    if (answer.fault == Fault::None)
        map[ScheduledKey] = entries;
    return answer;
}

LinkAnswer ServiceAssociation::TellStep(const QCborMap& request, bool isNew)
{
    DcmDataset data;
    const QByteArray uid = request.value(UidKey).toByteArray();
    if (!pictureobject::PutElements(data, request.value(ElementsKey).toArray()))
        return {};
    T_DIMSE_Message message = {};
    DIC_US number = m_association->nextMsgID++;
    if (isNew) {
        message.CommandField = DIMSE_N_CREATE_RQ;
        T_DIMSE_N_CreateRQ& create = message.msg.NCreateRQ;
        create.MessageID = number;
        Copy(create.AffectedSOPClassUID, sizeof create.AffectedSOPClassUID, UID_ModalityPerformedProcedureStepSOPClass);
        Copy(create.AffectedSOPInstanceUID, sizeof create.AffectedSOPInstanceUID, uid);
        create.opts = O_NCREATE_AFFECTEDSOPINSTANCEUID;
        create.DataSetType = DIMSE_DATASET_PRESENT;
    } else {
        message.CommandField = DIMSE_N_SET_RQ;
        T_DIMSE_N_SetRQ& set = message.msg.NSetRQ;
        set.MessageID = number;
        Copy(set.RequestedSOPClassUID, sizeof set.RequestedSOPClassUID, UID_ModalityPerformedProcedureStepSOPClass);
        Copy(set.RequestedSOPInstanceUID, sizeof set.RequestedSOPInstanceUID, uid);
        set.DataSetType = DIMSE_DATASET_PRESENT;
    }
    const OFCondition asked =
        DIMSE_sendMessageUsingMemoryData(m_association, m_context, &message, nullptr, &data, nullptr, nullptr);
    QCborMap unused;
    return asked.bad() ? Drop(Fault::Broken, asked) : ReadAnswer(number, unused);
}

LinkAnswer ServiceAssociation::AskCommitment(const QCborMap& request, QCborMap& map)
{
    DcmDataset data;
    if (!pictureobject::PutElements(data, request.value(ElementsKey).toArray()))
        return {};
    T_DIMSE_Message message = {};
    message.CommandField = DIMSE_N_ACTION_RQ;
    T_DIMSE_N_ActionRQ& action = message.msg.NActionRQ;
    action.MessageID = m_association->nextMsgID++;
    Copy(action.RequestedSOPClassUID, sizeof action.RequestedSOPClassUID, UID_StorageCommitmentPushModelSOPClass);
    Copy(action.RequestedSOPInstanceUID, sizeof action.RequestedSOPInstanceUID,
         UID_StorageCommitmentPushModelSOPInstance);
    action.ActionTypeID = 1;
    action.DataSetType = DIMSE_DATASET_PRESENT;
    const OFCondition asked =
        DIMSE_sendMessageUsingMemoryData(m_association, m_context, &message, nullptr, &data, nullptr, nullptr);
    if (asked.bad())
        return Drop(Fault::Broken, asked);
    LinkAnswer answer = ReadAnswer(action.MessageID, map);
    if (answer.fault == Fault::None && answer.status == STATUS_Success && !map.contains(TransactionKey))
        AwaitReport(static_cast<int>(request.value(WaitSecondsKey).toInteger()), map);
    return answer;
}

LinkAnswer ServiceAssociation::ReadAnswer(DIC_US message, QCborMap& map)
{
    for (;;) {
        T_DIMSE_Message told = {};
        T_ASC_PresentationContextID id = 0;
        DcmDataset* detail = nullptr;
        const OFCondition heard =
            DIMSE_receiveCommand(m_association, DIMSE_NONBLOCKING, m_answerSeconds, &id, &told, &detail);
        const std::unique_ptr<DcmDataset> ownDetail(detail);
        if (heard.bad())
            return Drop(Fault::Broken, heard);
        if (told.CommandField == DIMSE_N_EVENT_REPORT_RQ && !map.contains(TransactionKey)) {
            if (!TakeReport(id, told, map))
                return Drop(Fault::Broken, DIMSE_BADMESSAGE);
            continue;
        }
        // The three begin alike in what they say, but not in their memory.
        LinkAnswer answer{Fault::None, 0, serversets::CommentOf(ownDetail.get())};
        T_DIMSE_DataSetType data = DIMSE_DATASET_NULL;
        DIC_US answered = 0;
        if (told.CommandField == DIMSE_N_CREATE_RSP) {
            const T_DIMSE_N_CreateRSP& response = told.msg.NCreateRSP;
            answered = response.MessageIDBeingRespondedTo;
            answer.status = response.DimseStatus;
            data = response.DataSetType;
        } else if (told.CommandField == DIMSE_N_SET_RSP) {
            const T_DIMSE_N_SetRSP& response = told.msg.NSetRSP;
            answered = response.MessageIDBeingRespondedTo;
            answer.status = response.DimseStatus;
            data = response.DataSetType;
        } else if (told.CommandField == DIMSE_N_ACTION_RSP) {
            const T_DIMSE_N_ActionRSP& response = told.msg.NActionRSP;
            answered = response.MessageIDBeingRespondedTo;
            answer.status = response.DimseStatus;
            data = response.DataSetType;
        } else {
            return Drop(Fault::Broken, DIMSE_BADMESSAGE);
        }
        if (answered != message)
            return Drop(Fault::Broken, DIMSE_BADMESSAGE);
        if (data != DIMSE_DATASET_NULL) {
            DcmDataset* more = nullptr;
            const OFCondition read = DIMSE_receiveDataSetInMemory(m_association, DIMSE_NONBLOCKING, m_answerSeconds,
                                                                  &id, &more, nullptr, nullptr);
            delete more;
            if (read.bad())
                return Drop(Fault::Broken, read);
        }
        return answer;
    }
}

bool ServiceAssociation::TakeReport(T_ASC_PresentationContextID context, const T_DIMSE_Message& told, QCborMap& map)
{
    // Should this process die before the report is kept, the question is asked again.
    return linkreport::Read(*m_association, context, told.msg.NEventReportRQ, m_answerSeconds, map).good() &&
           linkreport::Respond(*m_association, context, told.msg.NEventReportRQ, STATUS_Success).good();
}

void ServiceAssociation::AwaitReport(int seconds, QCborMap& map)
{
    T_DIMSE_Message told = {};
    T_ASC_PresentationContextID id = 0;
    DcmDataset* detail = nullptr;
    const OFCondition heard = DIMSE_receiveCommand(m_association, DIMSE_NONBLOCKING, seconds, &id, &told, &detail);
    delete detail;
    if (heard.good() && told.CommandField == DIMSE_N_EVENT_REPORT_RQ)
        TakeReport(id, told, map);
}
