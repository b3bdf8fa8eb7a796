#include "platform/dicom/link/Association.h"

#include "platform/dicom/link/PictureObject.h"

#include <dcmtk/dcmdata/dctk.h>
#include <dcmtk/dcmnet/dcmtrans.h>
#include <dcmtk/dcmnet/diutil.h>

#include <array>
#include <cstring>
#include <memory>

using namespace dicomlink;

namespace {

struct Context
{
    Association::Purpose purpose;
    const char* kind;
    std::array<const char*, 2> syntaxes;
    int syntaxCount;
};

const std::array Contexts{
    Context{Association::Purpose::Pictures, UID_VLEndoscopicImageStorage, {UID_JPEGProcess1TransferSyntax}, 1},
    Context{Association::Purpose::Pictures,
            UID_FINDStudyRootQueryRetrieveInformationModel,
            {UID_LittleEndianExplicitTransferSyntax, UID_LittleEndianImplicitTransferSyntax},
            2},
    Context{Association::Purpose::Worklist,
            UID_FINDModalityWorklistInformationModel,
            {UID_LittleEndianExplicitTransferSyntax, UID_LittleEndianImplicitTransferSyntax},
            2},
    Context{Association::Purpose::Steps,
            UID_ModalityPerformedProcedureStepSOPClass,
            {UID_LittleEndianExplicitTransferSyntax, UID_LittleEndianImplicitTransferSyntax},
            2},
    Context{Association::Purpose::Commitment,
            UID_StorageCommitmentPushModelSOPClass,
            {UID_LittleEndianExplicitTransferSyntax, UID_LittleEndianImplicitTransferSyntax},
            2},
    Context{Association::Purpose::Echo,
            UID_VerificationSOPClass,
            {UID_LittleEndianExplicitTransferSyntax, UID_LittleEndianImplicitTransferSyntax},
            2},
};

QByteArray Bounded(const char* text)
{
    return text == nullptr ? QByteArray() : QByteArray(text, static_cast<qsizetype>(qstrnlen(text, LongestText)));
}

QByteArray TextOf(DcmItem* item, const DcmTagKey& tag)
{
    const char* text = nullptr;
    if (item == nullptr || item->findAndGetString(tag, text).bad())
        return {};
    return Bounded(text).trimmed();
}

/// dcmtk cuts a longer name of a machine into memory that it hasn't.
bool IsHost(const QByteArray& host)
{
    constexpr qsizetype Longest = 100;
    return !host.isEmpty() && host.size() <= Longest && !host.contains(':');
}

void Copy(char* target, size_t size, const QByteArray& text)
{
    std::strncpy(target, text.constData(), size - 1);
    target[size - 1] = '\0';
}

bool AddContexts(T_ASC_Parameters& parameters, Association::Purpose purpose)
{
    T_ASC_PresentationContextID id = 1;
    for (const Context& context : Contexts) {
        if (context.purpose != purpose && context.purpose != Association::Purpose::Echo)
            continue;
        auto syntaxes = context.syntaxes;
        if (ASC_addPresentationContext(&parameters, id, context.kind, syntaxes.data(), context.syntaxCount).bad())
            return false;
        id = static_cast<T_ASC_PresentationContextID>(id + 2);
    }
    return true;
}

/// The question: keys that are to match, and those that are asked for.
void FillKeys(DcmDataset& keys, const QByteArray& study, const QByteArray& series)
{
    const bool isStudy = series.isEmpty();
    keys.putAndInsertString(DCM_QueryRetrieveLevel, isStudy ? "STUDY" : "IMAGE");
    keys.putAndInsertString(DCM_StudyInstanceUID, study.constData());
    if (isStudy) {
        keys.insertEmptyElement(DCM_PatientID);
        keys.insertEmptyElement(DCM_PatientName);
    } else {
        keys.putAndInsertString(DCM_SeriesInstanceUID, series.constData());
        keys.insertEmptyElement(DCM_SOPInstanceUID);
        keys.insertEmptyElement(DCM_InstanceNumber);
    }
}

QCborArray MatchOf(DcmDataset* found, bool isStudy)
{
    if (isStudy)
        return {TextOf(found, DCM_StudyInstanceUID), TextOf(found, DCM_PatientID), TextOf(found, DCM_PatientName),
                TextOf(found, DCM_SpecificCharacterSet)};
    return {TextOf(found, DCM_SOPInstanceUID), TextOf(found, DCM_InstanceNumber)};
}

} // namespace

Association::~Association()
{
    Close();
}

void Association::Close()
{
    if (m_association != nullptr) {
        if (HasEnded() || ASC_releaseAssociation(m_association).bad())
            ASC_abortAssociation(m_association);
        ASC_destroyAssociation(&m_association);
    }
    if (m_network != nullptr)
        ASC_dropNetwork(&m_network);
}

LinkAnswer Association::Drop(Fault fault, const OFCondition& condition)
{
    if (m_association != nullptr) {
        ASC_abortAssociation(m_association);
        ASC_destroyAssociation(&m_association);
    }
    LinkAnswer answer{fault, 0, Bounded(condition.text())};
    answer.isSilent = condition == DIMSE_NODATAAVAILABLE || answer.comment.toLower().contains("timeout");
    return answer;
}

LinkAnswer Association::Open(const QCborMap& request, Purpose purpose)
{
    Close();
    const QByteArray host = request.value(HostKey).toString().toLatin1();
    const int port = static_cast<int>(request.value(PortKey).toInteger());
    if (!IsHost(host))
        return {Fault::Unreachable, 0, "Host"};
    m_answerSeconds = static_cast<int>(request.value(AnswerSecondsKey).toInteger());
    dcmConnectionTimeout.set(static_cast<Sint32>(request.value(ConnectSecondsKey).toInteger()));
    dcmSocketSendTimeout.set(m_answerSeconds);
    dcmSocketReceiveTimeout.set(m_answerSeconds);
    const auto agreeSeconds = static_cast<int>(request.value(AgreeSecondsKey).toInteger());
    T_ASC_Parameters* parameters = nullptr;
    if (ASC_initializeNetwork(NET_REQUESTOR, 0, agreeSeconds, &m_network).bad() ||
        ASC_createAssociationParameters(&parameters, ASC_DEFAULTMAXPDU).bad())
        return {};
    const QByteArray place = host + ':' + QByteArray::number(port);
    ASC_setAPTitles(parameters, request.value(CallingKey).toByteArray().constData(),
                    request.value(CalledKey).toByteArray().constData(), nullptr);
    ASC_setPresentationAddresses(parameters, "localhost", place.constData());
    if (!AddContexts(*parameters, purpose)) {
        ASC_destroyAssociationParameters(&parameters);
        return {};
    }
    // From here on the association has the parameters, also behind a fault.
    const OFCondition asked = ASC_requestAssociation(m_network, parameters, &m_association);
    if (asked.good())
        return {Fault::None};
    if (asked != DUL_ASSOCIATIONREJECTED)
        return Drop(Fault::Unreachable, asked);
    T_ASC_RejectParameters why = {};
    ASC_getRejectParameters(parameters, &why);
    LinkAnswer answer = Drop(why.result == ASC_RESULT_REJECTEDTRANSIENT ? Fault::Busy : Fault::Rejected, asked);
    answer.status = static_cast<int>(why.reason);
    return answer;
}

LinkAnswer Association::Store(const QCborMap& request)
{
    DcmDataset object;
    if (!pictureobject::Fill(object, request.value(ElementsKey).toArray(), request.value(FrameKey).toByteArray()))
        return {};
    if (HasEnded())
        return Drop(Fault::Gone, DUL_NETWORKCLOSED);
    const T_ASC_PresentationContextID context =
        ASC_findAcceptedPresentationContextID(m_association, UID_VLEndoscopicImageStorage);
    if (context == 0)
        return {Fault::NoContext};
    T_DIMSE_C_StoreRQ store = {};
    store.MessageID = m_association->nextMsgID++;
    Copy(store.AffectedSOPClassUID, sizeof store.AffectedSOPClassUID, UID_VLEndoscopicImageStorage);
    Copy(store.AffectedSOPInstanceUID, sizeof store.AffectedSOPInstanceUID, TextOf(&object, DCM_SOPInstanceUID));
    store.DataSetType = DIMSE_DATASET_PRESENT;
    store.Priority = DIMSE_PRIORITY_MEDIUM;
    T_DIMSE_C_StoreRSP response = {};
    DcmDataset* told = nullptr;
    const OFCondition stored = DIMSE_storeUser(m_association, context, &store, nullptr, &object, nullptr, nullptr,
                                               DIMSE_NONBLOCKING, m_answerSeconds, &response, &told);
    const std::unique_ptr<DcmDataset> detail(told);
    if (stored.bad())
        return Drop(Fault::Broken, stored);
    return {Fault::None, response.DimseStatus, TextOf(detail.get(), DCM_ErrorComment)};
}

LinkAnswer Association::Find(const QCborMap& request)
{
    if (HasEnded())
        return Drop(Fault::Gone, DUL_NETWORKCLOSED);
    const T_ASC_PresentationContextID context =
        ASC_findAcceptedPresentationContextID(m_association, UID_FINDStudyRootQueryRetrieveInformationModel);
    if (context == 0)
        return {Fault::NoContext};
    const QByteArray series = request.value(SeriesKey).toByteArray();
    DcmDataset keys;
    FillKeys(keys, request.value(StudyKey).toByteArray(), series);
    T_DIMSE_Message question = {};
    question.CommandField = DIMSE_C_FIND_RQ;
    T_DIMSE_C_FindRQ& find = question.msg.CFindRQ;
    find.MessageID = m_association->nextMsgID++;
    Copy(find.AffectedSOPClassUID, sizeof find.AffectedSOPClassUID, UID_FINDStudyRootQueryRetrieveInformationModel);
    find.Priority = DIMSE_PRIORITY_MEDIUM;
    find.DataSetType = DIMSE_DATASET_PRESENT;
    const OFCondition asked =
        DIMSE_sendMessageUsingMemoryData(m_association, context, &question, nullptr, &keys, nullptr, nullptr);
    return asked.bad() ? Drop(Fault::Broken, asked) : ReadMatches(context, find.MessageID, series.isEmpty());
}

LinkAnswer Association::ReadMatches(T_ASC_PresentationContextID context, DIC_US message, bool isStudy)
{
    LinkAnswer answer{Fault::None};
    for (;;) {
        T_DIMSE_Message told = {};
        T_ASC_PresentationContextID id = 0;
        DcmDataset* detail = nullptr;
        const OFCondition heard =
            DIMSE_receiveCommand(m_association, DIMSE_NONBLOCKING, m_answerSeconds, &id, &told, &detail);
        const std::unique_ptr<DcmDataset> ownDetail(detail);
        if (heard.bad())
            return Drop(Fault::Broken, heard);
        const T_DIMSE_C_FindRSP& response = told.msg.CFindRSP;
        if (told.CommandField != DIMSE_C_FIND_RSP || id != context || response.MessageIDBeingRespondedTo != message)
            return Drop(Fault::Broken, DIMSE_BADMESSAGE);
        if (response.DataSetType != DIMSE_DATASET_NULL) {
            DcmDataset* found = nullptr;
            const OFCondition read = DIMSE_receiveDataSetInMemory(m_association, DIMSE_NONBLOCKING, m_answerSeconds,
                                                                  &id, &found, nullptr, nullptr);
            const std::unique_ptr<DcmDataset> ownFound(found);
            if (read.bad() || answer.matches.size() >= MostMatches)
                return Drop(Fault::Broken, read.bad() ? read : DIMSE_BADMESSAGE);
            answer.matches.append(MatchOf(found, isStudy));
        }
        if (!DICOM_PENDING_STATUS(response.DimseStatus)) {
            answer.status = response.DimseStatus;
            answer.comment = TextOf(ownDetail.get(), DCM_ErrorComment);
            return answer;
        }
    }
}

LinkAnswer Association::Echo()
{
    if (ASC_findAcceptedPresentationContextID(m_association, UID_VerificationSOPClass) == 0)
        return {Fault::NoContext};
    DIC_US status = 0;
    DcmDataset* told = nullptr;
    const OFCondition asked =
        DIMSE_echoUser(m_association, m_association->nextMsgID++, DIMSE_NONBLOCKING, m_answerSeconds, &status, &told);
    const std::unique_ptr<DcmDataset> detail(told);
    if (asked.bad())
        return Drop(Fault::Broken, asked);
    return {Fault::None, status, TextOf(detail.get(), DCM_ErrorComment)};
}
