#pragma once

#include "contracts/dicom.h"
#include "platform/dicom/LinkProcess.h"
#include "platform/dicom/peer_answers.h"

/// How long a server may keep the kit waiting, in seconds.
struct DicomPatience
{
    int connectSeconds = 10;
    int agreeSeconds = 15;  ///< For an association, once connected.
    int answerSeconds = 60; ///< For an answer, and of any silence of the network.
};

/// DICOM by dcmtk's library, which a process of its own holds, and its program dcmmkdir.
class DcmtkKit : public DicomKit
{
public:
    explicit DcmtkKit(const DicomPatience& patience = {}) : m_patience(patience) {}
    ~DcmtkKit() override;
    DcmtkKit(const DcmtkKit&) = delete;
    DcmtkKit& operator=(const DcmtkKit&) = delete;

    DicomOutcome Open(const DicomPeer& peer, const std::stop_token& stop) override;
    DicomOutcome Store(const QByteArray& content, const DicomPicture& picture, const std::stop_token& stop) override;
    DicomOutcome FindStudies(const QStringList& uids, QList<DicomFoundStudy>& found,
                             const std::stop_token& stop) override;
    DicomOutcome FindPictures(const QString& study, const QString& series, QList<DicomFound>& found,
                              const std::stop_token& stop) override;
    void Close() override;

    DicomOutcome Echo(const DicomPeer& peer, const std::stop_token& stop) override;

    DicomOutcome MakeObject(const QByteArray& content, const DicomPicture& picture, QByteArray& object,
                            const std::stop_token& stop) override;
    DicomOutcome MakeDirectory(const QString& folder, const std::stop_token& stop) override;

    void RemoveLeftObjects() override;

private:
    DicomOutcome AskOfPeer(const DicomPeer& peer, bool isEcho, const std::stop_token& stop);
    DicomOutcome Find(const QString& study, const QString& series, qint64 patienceMs, QCborMap& answer,
                      const std::stop_token& stop);

    DicomPatience m_patience;
    LinkProcess m_link;
    bool m_isOpen = false;
};
