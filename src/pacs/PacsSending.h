#pragma once

#include "contracts/ClientSetup.h"
#include "frame/WorkThread.h"
#include "pacs/pacs_batch.h"
#include "pacs/PacsQueue.h"
#include "records/picture_facts.h"

#include <QObject>
#include <QTimer>

#include <stop_token>

/// Brings the pictures of visits to the clinic's server, in their order, one at a time or a few together, while the
/// screen goes on. It is there only where the setup names a server.
class PacsSending : public QObject
{
    Q_OBJECT

public:
    /// Null without a server in the setup. What an earlier run has left is sent from the next event on.
    static std::unique_ptr<PacsSending> ForSetup(const PacsSetupRecord& setup, const SaupRecords& places,
                                                 const LaunchedVisit& launched);

    PacsSending(const PacsSetupRecord& setup, const SaupRecords& places, const LaunchedVisit& launched);
    ~PacsSending() override;

    /// The operator has stored the visit, which has these pictures. `hasMore`: others of it are still to be filed.
    void VisitIsStored(const Visit& visit, const QList<int>& numbers, bool hasMore);
    /// A still's file and rows are safe.
    void StillIsSafe(const Visit& visit, int number);
    /// A picture has been marked up. One of a visit that is still to be stored waits for that, as the others do, unless
    /// it has been sent as it was.
    void PictureIsMarked(const Visit& visit, int number, bool isStillToBeStored);
    /// A picture is to be sent as it is now.
    void Send(const Visit& visit, int number) { Add(visit, {number}, true); }
    /// A picture of the visit, or all of them, have been deleted: what hasn't been sent isn't.
    void IsDeleted(const Visit& visit, std::optional<int> number);

    /// Those that were set aside are sent again, or forgotten.
    void RetryRefused();
    void DropRefused() { m_queue.DropRefused(); }

    int Waiting() const { return m_queue.Waiting(); }
    int Refused() const { return m_queue.Refused(); }
    /// Why the server took nothing when it was last tried; empty when it did.
    const QString& AwayReason() const { return m_away; }
    /// Ends what is under way within a short time; what waits is left to the next run.
    void End();

Q_SIGNALS:
    /// What the operator is to know: empty while nothing waits.
    void NoticeChanged(const QString& text);
    void Sent(const Visit& visit, int number);

private:
    void Add(const Visit& visit, const QList<int>& numbers, bool isChanged = false);
    /// Begins with the first that wait, unless some are under way or a pause goes on.
    void Step();
    void AskFacts(const QList<PacsQueue::Entry>& entries);
    void HandOver(const QList<pacs::Item>& items);
    void TakeResults(qsizetype first, const QList<pacs::Result>& results);
    /// The batch that is under way has ended. `fault`: it couldn't even begin.
    void EndBatch(const QString& fault);
    void TakeResult(const pacs::Item& item, const pacs::Result& result);
    void Pause(const QString& reason);
    void SetAway(const QString& reason);
    void TellNotice();

    const PacsSetupRecord m_setup;
    const SaupRecords m_places;
    const LaunchedVisit m_launched;
    const DicomPeer m_peer;
    WorkThread m_local;  ///< Writes the list.
    WorkThread m_worker; ///< Reads pictures, makes objects, sends.
    PacsQueue m_queue;
    QList<pacs::Item> m_underWay;
    QString m_batchAway;        ///< Why the rest of it couldn't be brought on; empty while it can.
    QList<Visit> m_storedEarly; ///< Stored while some of their stills were being filed.
    QTimer m_pause;
    int m_pauseMs = 0; ///< The last one's; 0 when the server has answered since.
    QString m_away;
    int m_sent = 0; ///< Since nothing waited.
    bool m_isBusy = false;
    bool m_hasEnded = false;
    std::stop_source m_stop;
    std::shared_ptr<std::unique_ptr<DicomKit>> m_kit; ///< The worker's.
};
