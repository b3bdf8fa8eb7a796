#include "platform/dicom/link/Association.h"

#include "platform/dicom/link/Encryption.h"
#include "platform/dicom/link/link_texts.h"
#include "platform/dicom/link/PictureObject.h"
#include "platform/dicom/link/server_sets.h"

#include <dcmtk/dcmdata/dctk.h>
#include <dcmtk/dcmnet/dcmtrans.h>
#include <dcmtk/dcmnet/diutil.h>
#include <dcmtk/dcmtls/tlscond.h>

#include <array>
#include <memory>

using namespace dicomlink;
using linktexts::Bounded;
using linktexts::Copy;
using serversets::TextOf;

namespace {

constexpr const char* Jpeg = UID_JPEGProcess1TransferSyntax;
constexpr const char* Movie = UID_MPEG4HighProfileLevel4_1TransferSyntax;

struct Context
{
    Association::Purpose purpose;
    const char* kind;
    const char* coded; ///< The one transfer syntax; null for those without compression.
};

const std::array Contexts{
    Context{Association::Purpose::Objects, UID_VLEndoscopicImageStorage, Jpeg},
    Context{Association::Purpose::Objects, UID_VLEndoscopicImageStorage, nullptr},
    Context{Association::Purpose::Objects, UID_UltrasoundImageStorage, Jpeg},
    Context{Association::Purpose::Objects, UID_UltrasoundImageStorage, nullptr},
    Context{Association::Purpose::Objects, UID_VLMicroscopicImageStorage, Jpeg},
    Context{Association::Purpose::Objects, UID_VLMicroscopicImageStorage, nullptr},
    Context{Association::Purpose::Objects, UID_VLPhotographicImageStorage, Jpeg},
    Context{Association::Purpose::Objects, UID_VLPhotographicImageStorage, nullptr},
    Context{Association::Purpose::Objects, UID_EncapsulatedPDFStorage, nullptr},
    Context{Association::Purpose::Objects, UID_VideoEndoscopicImageStorage, Movie},
    Context{Association::Purpose::Objects, UID_KeyObjectSelectionDocumentStorage, nullptr},
    Context{Association::Purpose::Objects, UID_FINDStudyRootQueryRetrieveInformationModel, nullptr},
    Context{Association::Purpose::Worklist, UID_FINDModalityWorklistInformationModel, nullptr},
    Context{Association::Purpose::Steps, UID_ModalityPerformedProcedureStepSOPClass, nullptr},
    Context{Association::Purpose::Commitment, UID_StorageCommitmentPushModelSOPClass, nullptr},
    Context{Association::Purpose::Echo, UID_VerificationSOPClass, nullptr},
};

/// dcmtk cuts a longer name of a machine into memory that it hasn't.
bool IsHost(const QByteArray& host)
{
    constexpr qsizetype Longest = 100;
    return !host.isEmpty() && host.size() <= Longest && !host.contains(':');
}

/// Gives how many; 0 when that has failed. Their numbers are the odd ones.
int AddContexts(T_ASC_Parameters& parameters, Association::Purpose purpose)
{
    int count = 0;
    for (const Context& context : Contexts) {
        if (context.purpose != purpose && context.purpose != Association::Purpose::Echo)
            continue;
        std::array syntaxes{UID_LittleEndianExplicitTransferSyntax, UID_LittleEndianImplicitTransferSyntax};
        int syntaxCount = static_cast<int>(syntaxes.size());
        if (context.coded != nullptr) {
            syntaxes = {context.coded, context.coded};
            syntaxCount = 1;
        }
        const auto id = static_cast<T_ASC_PresentationContextID>(2 * count + 1);
        if (ASC_addPresentationContext(&parameters, id, context.kind, syntaxes.data(), syntaxCount).bad())
            return 0;
        ++count;
    }
    return count;
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

/// From its release 3.6.8 on the library wants the patience with the rest.
OFCondition NewParameters(T_ASC_Parameters*& parameters, Sint32 connectSeconds)
{
#if PACKAGE_VERSION_NUMBER >= 368
    return ASC_createAssociationParameters(&parameters, ASC_DEFAULTMAXPDU, connectSeconds);
#else
    dcmConnectionTimeout.set(connectSeconds);
    return ASC_createAssociationParameters(&parameters, ASC_DEFAULTMAXPDU);
#endif
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
    m_layer.reset();
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
    const auto connectSeconds = static_cast<Sint32>(request.value(ConnectSecondsKey).toInteger());
    dcmSocketSendTimeout.set(m_answerSeconds);
    dcmSocketReceiveTimeout.set(m_answerSeconds);
    const auto agreeSeconds = static_cast<int>(request.value(AgreeSecondsKey).toInteger());
    T_ASC_Parameters* parameters = nullptr;
    if (ASC_initializeNetwork(NET_REQUESTOR, 0, agreeSeconds, &m_network).bad() ||
        NewParameters(parameters, connectSeconds).bad())
        return {};
    const QByteArray place = host + ':' + QByteArray::number(port);
    ASC_setAPTitles(parameters, request.value(CallingKey).toByteArray().constData(),
                    request.value(CalledKey).toByteArray().constData(), nullptr);
    ASC_setPresentationAddresses(parameters, "localhost", place.constData());
    m_contexts = AddContexts(*parameters, purpose);
    if (m_contexts == 0) {
        ASC_destroyAssociationParameters(&parameters);
        return {};
    }
    const bool isEncrypted = encryption::IsWanted(request);
    if (isEncrypted) {
        QByteArray problem;
        m_layer = encryption::LayerOf(request, problem);
        if (m_layer == nullptr || ASC_setTransportLayer(m_network, m_layer.get(), 0).bad() ||
            ASC_setTransportLayerType(parameters, OFTrue).bad()) {
            ASC_destroyAssociationParameters(&parameters);
            return {Fault::NoKeys, 0, problem.right(LongestText)};
        }
    }
    return Ask(parameters, host, isEncrypted);
}

LinkAnswer Association::Ask(T_ASC_Parameters* parameters, const QByteArray& host, bool isEncrypted)
{
    // From here on the association has the parameters, also behind a fault.
    const OFCondition asked = ASC_requestAssociation(m_network, parameters, &m_association);
    if (asked.good() && isEncrypted && !encryption::IsOfHost(m_association, host)) {
        LinkAnswer answer = Drop(Fault::Untrusted, asked);
        answer.comment = "the certificate is of another host";
        return answer;
    }
    if (asked.good()) {
        LinkAnswer answer{Fault::None};
        answer.taken = Taken();
        return answer;
    }
    if (asked != DUL_ASSOCIATIONREJECTED) {
        // A server that doesn't take this station's certificate, or misses it, just goes; one that knows nothing of
        // encryption is silent.
        const bool isTls = asked.module() == OFM_dcmtls && asked != DCMTLS_EC_OpenSSLIOError;
        const bool hasGone = asked == DUL_NETWORKCLOSED || asked == DUL_PEERABORTEDASSOCIATION ||
                             (asked.module() == OFM_dcmnet && asked.code() == DULC_TCPIOERROR);
        const bool isUntrusted = isTls || hasGone;
        LinkAnswer answer = Drop(isEncrypted && isUntrusted ? Fault::Untrusted : Fault::Unreachable, asked);
        if (asked == DCMTLS_EC_OpenSSLIOError)
            answer.comment = "no answer in TLS 1.2 or later";
        return answer;
    }
    T_ASC_RejectParameters why = {};
    ASC_getRejectParameters(parameters, &why);
    LinkAnswer answer = Drop(why.result == ASC_RESULT_REJECTEDTRANSIENT ? Fault::Busy : Fault::Rejected, asked);
    answer.status = static_cast<int>(why.reason);
    return answer;
}

QCborArray Association::Taken() const
{
    QCborArray taken;
    for (int at = 0; at < m_contexts; ++at) {
        T_ASC_PresentationContext context = {};
        const auto id = static_cast<T_ASC_PresentationContextID>(2 * at + 1);
        if (ASC_findAcceptedPresentationContext(m_association->params, id, &context).good())
            taken.append(QCborArray{Bounded(context.abstractSyntax), Bounded(context.acceptedTransferSyntax)});
    }
    return taken;
}

T_ASC_PresentationContextID Association::ContextOf(const QByteArray& kind, Content content) const
{
    const bool isCoded = content == Content::Jpeg || content == Content::Movie;
    const QByteArray coded = content == Content::Movie ? Movie : Jpeg;
    for (int at = 0; at < m_contexts; ++at) {
        T_ASC_PresentationContext context = {};
        const auto id = static_cast<T_ASC_PresentationContextID>(2 * at + 1);
        if (ASC_findAcceptedPresentationContext(m_association->params, id, &context).bad() ||
            Bounded(context.abstractSyntax) != kind)
            continue;
        const QByteArray syntax = Bounded(context.acceptedTransferSyntax);
        const bool isPlain =
            syntax == UID_LittleEndianExplicitTransferSyntax || syntax == UID_LittleEndianImplicitTransferSyntax;
        if (isCoded ? syntax == coded : isPlain)
            return id;
    }
    return 0;
}

LinkAnswer Association::Store(const QCborMap& request)
{
    DcmDataset object;
    if (!pictureobject::Fill(object, request))
        return {};
    if (HasEnded())
        return Drop(Fault::Gone, DUL_NETWORKCLOSED);
    const QByteArray kind = TextOf(&object, DCM_SOPClassUID);
    const T_ASC_PresentationContextID context =
        ContextOf(kind, static_cast<Content>(request.value(ContentKey).toInteger()));
    if (context == 0)
        return {Fault::NoContext};
    T_DIMSE_C_StoreRQ store = {};
    store.MessageID = m_association->nextMsgID++;
    Copy(store.AffectedSOPClassUID, sizeof store.AffectedSOPClassUID, kind);
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
    QCborArray matches;
    const auto take = [&matches, isStudy = series.isEmpty()](DcmDataset* found) {
        if (found == nullptr || matches.size() >= MostMatches)
            return false;
        matches.append(serversets::MatchOf(*found, isStudy));
        return true;
    };
    const auto commentOf = [](DcmDataset* detail) { return TextOf(detail, DCM_ErrorComment); };
    LinkAnswer answer = AskMatches({context, UID_FINDStudyRootQueryRetrieveInformationModel}, keys, take, commentOf);
    if (answer.fault == Fault::None)
        answer.matches = matches;
    return answer;
}

LinkAnswer Association::AskMatches(const Questioned& questioned, DcmDataset& keys,
                                   const std::function<bool(DcmDataset*)>& take,
                                   const std::function<QByteArray(DcmDataset*)>& commentOf)
{
    const auto& [context, kind] = questioned;
    T_DIMSE_Message question = {};
    question.CommandField = DIMSE_C_FIND_RQ;
    T_DIMSE_C_FindRQ& find = question.msg.CFindRQ;
    find.MessageID = m_association->nextMsgID++;
    Copy(find.AffectedSOPClassUID, sizeof find.AffectedSOPClassUID, kind);
    find.Priority = DIMSE_PRIORITY_MEDIUM;
    find.DataSetType = DIMSE_DATASET_PRESENT;
    const OFCondition asked =
        DIMSE_sendMessageUsingMemoryData(m_association, context, &question, nullptr, &keys, nullptr, nullptr);
    if (asked.bad())
        return Drop(Fault::Broken, asked);
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
        if (told.CommandField != DIMSE_C_FIND_RSP || id != context ||
            response.MessageIDBeingRespondedTo != find.MessageID)
            return Drop(Fault::Broken, DIMSE_BADMESSAGE);
        if (response.DataSetType != DIMSE_DATASET_NULL) {
            DcmDataset* found = nullptr;
            const OFCondition read = DIMSE_receiveDataSetInMemory(m_association, DIMSE_NONBLOCKING, m_answerSeconds,
                                                                  &id, &found, nullptr, nullptr);
            const std::unique_ptr<DcmDataset> ownFound(found);
            if (read.bad() || !take(found))
                return Drop(Fault::Broken, read.bad() ? read : DIMSE_BADMESSAGE);
        }
        if (!DICOM_PENDING_STATUS(response.DimseStatus))
            return {Fault::None, response.DimseStatus, commentOf(ownDetail.get())};
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
