#pragma once

#include "contracts/ClientSetup.h"
#include "contracts/dicom.h"
#include "frame/WorkThread.h"
#include "pacs/PacsLine.h"
#include "sender/Ledger.h"
#include "sender/MovieMaking.h"
#include "sender/sending.h"
#include "sender/visit_facts.h"

#include <QElapsedTimer>
#include <QHash>
#include <QObject>
#include <QTimer>

#include <deque>
#include <memory>
#include <stop_token>

class Services;

/// Brings the pictures of the queue to the clinic's server, in their order, over one connection at a time, and ends
/// when nothing waits. What can't go waits: a picture that the server refuses is set aside, one whose file is away
/// waits for itself, and a server that is away is asked again after growing pauses.
class Sender : public QObject
{
    Q_OBJECT

public:
    /// `setupDigest` is what the setup is known by.
    Sender(Ledger& ledger, const ClientSetupRecord& setup, const SaupRecords& places, const QString& setupDigest);
    ~Sender() override;

    /// Why it has ended.
    bool HasOtherSetup() const { return m_hasOtherSetup; }
    bool HasFailed() const { return m_hasFailed; }

Q_SIGNALS:
    /// Nothing is left to do, the setup is to be read anew, or the queue can't be written.
    void Ended();

private:
    /// An entry of the batch that is under way.
    struct Item
    {
        PacsEntry entry;
        Visit visit;
        VisitTold told;
        VisitFacts known = {};
        QStringList identities = {}; ///< Of the picture, as the table has them.
        PacsContent content = {};
    };
    using Items = QList<Item>;

    void Look();
    /// Begins with what waits, unless something is under way or a pause goes on.
    void Step();
    void TakeLines();
    bool AskNumbers();
    /// Whether other stations have stored visits whose pictures wait here for that: once.
    bool AskHeld();
    void TakeHeld(const Items& items);
    void AskFacts(const QList<PacsEntry>& entries);
    void TakeFacts(const Items& items);
    void Open();
    void TakeOpened(const DicomOutcome& outcome, const QHash<QString, DicomIdentity>& found);
    /// `found`: under which the server has visits of earlier releases.
    void KeepIdentities(const QHash<QString, DicomIdentity>& found);
    void ReadNext();
    void TakeContent(qsizetype at, const PacsContent& content);
    void SendNext();
    void Send(const Item& item);
    void TakeAnswer(const Item& item, const sending::Answer& answer);
    /// True when there is something to be sent; what becomes of it otherwise has been written down.
    bool TakeReading(const Item& item);
    void TakeSent(const Item& item, const sending::Answer& answer);
    /// What is to be rejected is still there, or what was deleted isn't found yet.
    void WaitForDeletion(const PacsEntry& entry);
    /// It isn't needed on this machine any more.
    void RemoveFiles(const PacsEntry& entry);
    /// Nothing tells whose it is.
    void WaitForSetup(const PacsEntry& entry);
    /// The file of one couldn't be read.
    void WaitForFile(const PacsEntry& entry, const QString& reason);
    void EndBatch();
    /// The server, or the way to it, is tried again after a while.
    void Pause(const QString& reason, bool isLong = false);
    void SetAway(const QString& reason);
    /// Does a step; one that the queue doesn't take ends the sender, and the next one goes on.
    void Guard(const std::function<void()>& step);
    void EndWhenIdle();
    void Quit();
    /// Does it on the link's thread, and goes on with what it gives on this one, unless the batch has ended.
    template <class Work, class Then>
    void OnLink(Work work, Then then);
    /// Asks the database on its own thread; a fault ends the batch, and is tried again after a pause.
    void Ask(const std::function<void()>& statements, const std::function<void()>& then);

    const ClientSetupRecord m_setup;
    const SaupRecords m_places;
    const QString m_digest;
    const DicomPeer m_peer;
    Ledger& m_ledger;
    WorkThread m_reader;                              ///< Reads pictures.
    WorkThread m_link;                                ///< Makes objects of them and sends these.
    std::shared_ptr<std::unique_ptr<DicomKit>> m_kit; ///< The link's.
    std::shared_ptr<const DicomKit> m_looker;         ///< The reader's: never connected.
    std::stop_source m_stop;
    std::unique_ptr<Services> m_services; ///< Null without the hospital's other servers.
    QTimer m_look;
    QTimer m_pause;
    int m_pauseMs = 0; ///< The last one's; 0 when the server has answered since.
    QString m_away;
    int m_sent = 0;
    QElapsedTimer m_idle;

    Items m_items;
    int m_batch = 0; ///< Number of the present or last batch.
    bool m_isBusy = false;
    int m_retries = 0;        ///< So often all was wanted at once.
    bool m_wantsHeld = true;  ///< Whether others have stored what is held is to be asked at once;
    bool m_mayBeHeld = false; ///< again before the end, as lines have come since.
    bool m_hasOtherSetup = false;
    bool m_hasFailed = false;
    qsizetype m_nextRead = 0;
    std::deque<qsizetype> m_ready; ///< Read, and not sent yet.
    bool m_isReading = false;      ///< Also for a batch that has ended.
    bool m_isSending = false;
    bool m_isSendingMovie = false; ///< Which takes its time.
    bool m_isEnding = false;       ///< Nothing more of the batch is to be begun.
    QElapsedTimer m_readingSince;
    QElapsedTimer m_linkSince;
    QElapsedTimer m_askingSince;             ///< Valid while the database is asked.
    std::shared_ptr<sending::Known> m_known; ///< The link's.
    MovieMaking m_movies;
};
