#pragma once

#include "contracts/dicom.h"

/// DICOM by dcmtk's programs, each as a child process. What tells of a patient goes to them in files of a folder that
/// only this user can enter, never as an argument, which every user of the machine can read.
class DcmtkKit : public DicomKit
{
public:
    DcmtkKit() = default;
    ~DcmtkKit() override;
    DcmtkKit(const DcmtkKit&) = delete;
    DcmtkKit& operator=(const DcmtkKit&) = delete;

    QString WorkFolder() override;
    DicomOutcome MakeObject(const QByteArray& content, const DicomPicture& picture, const QString& path,
                            const std::stop_token& stop) override;
    QList<DicomOutcome> Send(const DicomPeer& peer, const QStringList& paths, const std::stop_token& stop) override;
    DicomOutcome Echo(const DicomPeer& peer, const std::stop_token& stop) override;
    DicomOutcome MakeDirectory(const QString& folder, const std::stop_token& stop) override;

private:
    QString m_folder; ///< Empty until it is needed.
};
