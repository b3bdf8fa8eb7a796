#include "platform/dicom/link/commitment_report.h"

#include "platform/dicom/link/server_sets.h"

#include <dcmtk/dcmdata/dctk.h>

#include <memory>

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
    serversets::PutReport(*set, report);
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
