#include "platform/dicom/link/ReportListener.h"

#include "platform/dicom/link/commitment_report.h"
#include "platform/dicom/link/Encryption.h"

#include <dcmtk/dcmdata/dctk.h>
#include <dcmtk/dcmnet/dcmtrans.h>
#include <dcmtk/dcmnet/diutil.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <utility>

using namespace dicomlink;

namespace {

/// A server may keep its connection for so long, and be silent for so long.
constexpr qint64 AssociationMs = 60'000;
constexpr int SilenceSeconds = 10;

/// Takes what is proposed of the two services, in whichever role: a server that reports is what it was asked as.
bool AcceptContexts(T_ASC_Parameters& parameters)
{
    bool isAny = false;
    const int count = ASC_countPresentationContexts(&parameters);
    for (int at = 0; at < count; ++at) {
        T_ASC_PresentationContext context = {};
        if (ASC_getPresentationContext(&parameters, at, &context).bad())
            return false;
        const bool isOurs = std::strcmp(context.abstractSyntax, UID_StorageCommitmentPushModelSOPClass) == 0 ||
                            std::strcmp(context.abstractSyntax, UID_VerificationSOPClass) == 0;
        const char* chosen = nullptr;
        for (int each = 0; isOurs && each < context.transferSyntaxCount && chosen == nullptr; ++each) {
            const char* syntax = context.proposedTransferSyntaxes[each];
            if (std::strcmp(syntax, UID_LittleEndianExplicitTransferSyntax) == 0 ||
                std::strcmp(syntax, UID_LittleEndianImplicitTransferSyntax) == 0)
                chosen = syntax;
        }
        if (chosen == nullptr)
            ASC_refusePresentationContext(&parameters, context.presentationContextID,
                                          isOurs ? ASC_P_TRANSFERSYNTAXESNOTSUPPORTED
                                                 : ASC_P_ABSTRACTSYNTAXNOTSUPPORTED);
        else if (ASC_acceptPresentationContext(&parameters, context.presentationContextID, chosen, context.proposedRole)
                     .good())
            isAny = true;
    }
    return isAny;
}

} // namespace

ReportListener::~ReportListener()
{
    Drop();
    if (m_network != nullptr)
        ASC_dropNetwork(&m_network);
}

void ReportListener::Drop()
{
    m_isAwaited = false;
    if (m_association == nullptr)
        return;
    ASC_abortAssociation(m_association);
    ASC_dropAssociation(m_association);
    ASC_destroyAssociation(&m_association);
}

LinkAnswer ReportListener::Listen(const QCborMap& request)
{
    if (m_network != nullptr)
        return {Fault::None};
    // No name of whoever comes is looked up: that may take its time.
    dcmDisableGethostbyaddr.set(OFTrue);
    dcmSocketSendTimeout.set(SilenceSeconds);
    dcmSocketReceiveTimeout.set(SilenceSeconds);
    const int port = static_cast<int>(request.value(PortKey).toInteger());
    const OFCondition opened = ASC_initializeNetwork(NET_ACCEPTOR, port, SilenceSeconds, &m_network);
    if (opened.bad()) {
        m_network = nullptr;
        return {Fault::Unreachable, 0, QByteArray(opened.text()).left(LongestText)};
    }
    QByteArray problem;
    if (encryption::IsWanted(request))
        m_layer = encryption::LayerOf(request, problem, NET_ACCEPTOR);
    if (encryption::IsWanted(request) &&
        (m_layer == nullptr || ASC_setTransportLayer(m_network, m_layer.get(), 0).bad())) {
        ASC_dropNetwork(&m_network);
        return {Fault::NoKeys, 0, problem.left(LongestText)};
    }
    return {Fault::None};
}

LinkAnswer ReportListener::Next(const QCborMap& request, QCborMap& map)
{
    if (m_network == nullptr)
        return {Fault::Unreachable};
    if (std::exchange(m_isAwaited, false) &&
        linkreport::Respond(*m_association, m_context, m_told, static_cast<int>(request.value(StatusKey).toInteger()))
            .bad())
        Drop();
    const QDeadlineTimer ends(request.value(WaitSecondsKey).toInteger() * 1000);
    while (!ends.hasExpired()) {
        const int seconds = static_cast<int>(std::clamp<qint64>(ends.remainingTime() / 1000, 1, SilenceSeconds));
        if (m_association == nullptr)
            Accept(seconds);
        else if (Serve(seconds, map))
            break;
    }
    return {Fault::None};
}

void ReportListener::Accept(int seconds)
{
    const OFCondition came = ASC_receiveAssociation(m_network, &m_association, ASC_DEFAULTMAXPDU, nullptr, nullptr,
                                                    m_layer != nullptr, DUL_NOBLOCK, seconds);
    m_associationEnds.setRemainingTime(AssociationMs);
    if (came.good() && AcceptContexts(*m_association->params) && ASC_acknowledgeAssociation(m_association).good())
        return;
    if (came.good()) {
        const T_ASC_RejectParameters why = {ASC_RESULT_REJECTEDPERMANENT, ASC_SOURCE_SERVICEUSER,
                                            ASC_REASON_SU_NOREASON};
        ASC_rejectAssociation(m_association, &why);
    }
    if (m_association != nullptr) {
        ASC_dropAssociation(m_association);
        ASC_destroyAssociation(&m_association);
    }
}

bool ReportListener::Serve(int seconds, QCborMap& map)
{
    T_DIMSE_Message told = {};
    DcmDataset* detail = nullptr;
    const OFCondition heard =
        DIMSE_receiveCommand(m_association, DIMSE_NONBLOCKING, seconds, &m_context, &told, &detail);
    delete detail;
    if (heard == DUL_PEERREQUESTEDRELEASE) {
        ASC_acknowledgeRelease(m_association);
        ASC_dropSCPAssociation(m_association, 1);
        ASC_destroyAssociation(&m_association);
        return false;
    }
    if (heard == DIMSE_NODATAAVAILABLE && !m_associationEnds.hasExpired())
        return false;
    bool isServed = false;
    if (heard.good() && told.CommandField == DIMSE_N_EVENT_REPORT_RQ && !m_associationEnds.hasExpired()) {
        m_told = told.msg.NEventReportRQ;
        isServed = m_isAwaited = linkreport::Read(*m_association, m_context, m_told, SilenceSeconds, map).good();
    } else if (heard.good() && told.CommandField == DIMSE_C_ECHO_RQ) {
        isServed = DIMSE_sendEchoResponse(m_association, m_context, &told.msg.CEchoRQ, STATUS_Success, nullptr).good();
    }
    if (!isServed)
        Drop();
    return m_isAwaited;
}
