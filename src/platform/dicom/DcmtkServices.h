#pragma once

#include "contracts/dicom_services.h"
#include "platform/dicom/Dataset.h"
#include "platform/dicom/DcmtkKit.h"
#include "platform/dicom/link_messages.h"
#include "platform/dicom/LinkProcess.h"

/// The services by dcmtk's library, in a process of their own: a server that keeps it waiting holds up no picture.
class DcmtkServices : public DicomServices
{
public:
    explicit DcmtkServices(const DicomPatience& patience = {10, 15, 30}) : m_patience(patience) {}

    DicomOutcome Reach(const DicomPeer& peer, DicomService service, const std::stop_token& stop) override;
    DicomOutcome FindScheduled(const DicomPeer& peer, const QString& patientId, const QString& ymd,
                               QList<DicomScheduled>& found, const std::stop_token& stop) override;
    DicomOutcome BeginStep(const DicomPeer& peer, const DicomPerformedStep& step, const DicomPicture& facts,
                           const std::stop_token& stop) override;
    DicomOutcome EndStep(const DicomPeer& peer, const DicomPerformedStep& step, const DicomPicture& facts,
                         const std::stop_token& stop) override;
    DicomOutcome AskCommitment(const DicomPeer& peer, const QString& transaction, const QList<DicomReference>& objects,
                               DicomCommitment& report, const std::stop_token& stop) override;
    bool Listen(int port, const DicomTls& tls, const std::stop_token& stop) override;
    bool NextReport(bool isTaken, DicomCommitment& report, const std::stop_token& stop) override;

private:
    DicomOutcome Ask(const DicomPeer& peer, DicomService service, QCborMap request, QCborMap& answer, qint64 patienceMs,
                     const std::stop_token& stop);

    DicomPatience m_patience;
    LinkProcess m_link;
};
