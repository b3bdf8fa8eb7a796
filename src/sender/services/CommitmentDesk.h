#pragma once

#include "pacs/service_rows.h"
#include "sender/services/ServiceDesk.h"

#include <QElapsedTimer>

/// Asks the server for pictures to answer for what it has been sent.
class CommitmentDesk : public ServiceDesk
{
    Q_OBJECT

public:
    using ServiceDesk::ServiceDesk;

    /// A report for one of the queue's questions. False for anybody else's. Any thread, each with its own connection.
    static bool TakeReport(LocalDatabase& queue, const DicomCommitment& report);
    /// What has just been sent is still to be gathered, or a report may come.
    bool IsAwaiting();

protected:
    void Begin() override;

private:
    void TakeAnswer(const QString& transaction, const DicomOutcome& outcome, const DicomCommitment& report);

    QElapsedTimer m_gathered;
    int m_tries = 0;
};
