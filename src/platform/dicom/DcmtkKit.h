#pragma once

#include "contracts/dicom.h"
#include "platform/dicom/link_answers.h"
#include "platform/dicom/link_outcomes.h"
#include "platform/dicom/LinkProcess.h"
#include "platform/dicom/peer_answers.h"
#include "platform/dicom/visit_elements.h"

struct WholePicture;

/// DICOM by dcmtk's library, which a process of its own holds, and its program dcmmkdir.
class DcmtkKit : public DicomKit
{
public:
    explicit DcmtkKit(const DicomPatience& patience = {}) : m_patience(patience) {}
    ~DcmtkKit() override;
    DcmtkKit(const DcmtkKit&) = delete;
    DcmtkKit& operator=(const DcmtkKit&) = delete;

    DicomOutcome Open(const DicomPeer& peer, const std::stop_token& stop) override;
    using DicomKit::Store;
    DicomOutcome Store(const QByteArray& content, const DicomPicture& picture,
                       const std::shared_ptr<const DicomLook>& look, const std::stop_token& stop) override;
    std::shared_ptr<const DicomLook> Look(const QByteArray& content, const std::stop_token& stop) const override;
    DicomOutcome StoreReport(const QByteArray& pdf, const DicomReport& report, const DicomPicture& facts,
                             const std::stop_token& stop) override;
    DicomOutcome StoreMovie(const QString& path, const DicomMovie& movie, const DicomPicture& facts,
                            const std::stop_token& stop) override;
    DicomOutcome StoreRejection(const QList<DicomReference>& rejected, const QDateTime& at, const DicomPicture& facts,
                                const std::stop_token& stop) override;
    DicomOutcome FindStudies(const QStringList& uids, QList<DicomFoundStudy>& found,
                             const std::stop_token& stop) override;
    DicomOutcome FindPictures(const QString& study, const QString& series, QList<DicomFound>& found,
                              const std::stop_token& stop) override;
    void Close() override;

    DicomOutcome Echo(const DicomPeer& peer, const std::stop_token& stop) override;

    DicomOutcome Abilities(const DicomPeer& peer, DicomAbilities& abilities, const std::stop_token& stop) override;

    DicomOutcome MakeObject(const QByteArray& content, const DicomPicture& picture, Coding coding, QByteArray& object,
                            const std::stop_token& stop) override;
    DicomOutcome MakeDirectory(const QString& folder, const DicomDisc& disc, const std::stop_token& stop) override;

    void RemoveLeftObjects() override;

private:
    /// What may go to a server as one object.
    struct Parcel
    {
        DicomReference self;
        ObjectElements made = {};
        dicomlink::Content content = dicomlink::Content::Nothing;
        QByteArray bytes = {}; ///< Of the content,
        QString path = {};     ///< or the file that holds them.
        qint64 size = 0;
        peeranswers::Asked asked = peeranswers::Asked::Store;
    };

    using Taken = linkanswers::Taken;

    DicomOutcome AskOfPeer(dicomlink::Request request, const DicomPeer& peer, Taken& taken,
                           const std::stop_token& stop);
    DicomOutcome Find(const QString& study, const QString& series, qint64 patienceMs, QCborMap& answer,
                      const std::stop_token& stop);
    /// Of a picture, whose content has this frame. Accepted when an object can come of it.
    static DicomOutcome PackPicture(const QByteArray& content, const WholePicture& whole, const DicomPicture& picture,
                                    Coding coding, Parcel& parcel);
    static QCborMap RequestOfParcel(dicomlink::Request request, const Parcel& parcel);
    /// Sends what the server has agreed to take.
    DicomOutcome Send(const Parcel& parcel, const std::stop_token& stop);
    static bool Takes(const Taken& taken, const QString& classUid, dicomlink::Content content);

    DicomPatience m_patience;
    LinkProcess m_link;
    bool m_isOpen = false;
    Taken m_taken; ///< By the server of the open connection.
};
