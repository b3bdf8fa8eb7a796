#pragma once

#include "contracts/ClientSetup.h"
#include "filing/PictureOutlet.h"
#include "frame/WorkThread.h"
#include "pacs/SenderQueue.h"
#include "records/picture_facts.h"

#include <QElapsedTimer>
#include <QObject>
#include <QTimer>

#include <memory>
#include <mutex>

/// Tells the sender which pictures go to the clinic's server, sees to it that one runs, and tells the operator how it
/// stands. It is there only where the setup names a server.
class PacsHandover : public QObject
{
    Q_OBJECT

public:
    /// Null without a server in the setup.
    static std::unique_ptr<PacsHandover> ForSetup(const ClientSetupRecord& setup, const SaupRecords& places,
                                                  const LaunchedVisit& launched);

    PacsHandover(const ClientSetupRecord& setup, const SaupRecords& places, const LaunchedVisit& launched);
    ~PacsHandover() override;

    /// Where the journal's pictures go.
    std::shared_ptr<PictureOutlet> Outlet() const;

    /// The operator has stored the visit: all that belongs to it goes, also what is still to come.
    void VisitIsStored(const Visit& visit);
    /// A picture has been marked up. One of a visit that is still to be stored waits for that, as the others do, unless
    /// it has been sent as it was.
    void PictureIsMarked(const Visit& visit, int number, bool isStillToBeStored);
    /// A screen shows the visit now: the hospital's worklist is asked what has been ordered.
    void VisitIsShown(const Visit& visit);
    /// The operator has chosen the entry of that key for the visit that is shown.
    void Choose(const QString& key);
    /// The operator has seen that the worklist doesn't answer: he isn't told again.
    void DismissWorklist();
    /// What was set aside goes again, and nothing pauses.
    void SendNow();

    /// The screen closes: visits of this run that nobody has stored go too where the setup says so. Gives what the
    /// operator is to be told: how many wait where no sender goes on with them; empty otherwise. Waits for seconds at
    /// most.
    QString End();

Q_SIGNALS:
    /// What the operator is to know: empty while nothing waits. `maySend`: to try at once would make sense.
    /// `isRefused`: the server has refused some.
    void NoticeChanged(const QString& text, bool maySend, bool isRefused);
    /// What the operator is to know of the worklist, empty without that, and what he may choose from.
    void WorklistChanged(const QString& text, const QList<service_rows::Offer>& offers);

private:
    class LineOutlet;

    void Add(const PacsLine& line);
    void Look();
    void TakeState(const SenderQueue::State& state);
    /// Starts one, unless that has just been done.
    void StartSender(bool isAgain);
    void TellNotice(const SenderQueue::State& state);
    void TellWorklist(const std::optional<service_rows::Worklist>& worklist);

    const PacsSetupRecord m_setup;
    const QString m_digest;
    const LaunchedVisit m_launched;
    WorkThread m_local;                                    ///< Looks at the queue, adds lines, starts the sender.
    std::shared_ptr<std::unique_ptr<SenderQueue>> m_queue; ///< That thread's.
    std::shared_ptr<LineOutlet> m_outlet;
    QTimer m_look;
    SenderQueue::State m_state;
    bool m_isStateKnown = false;
    int m_newlyStaying = 0;
    QElapsedTimer m_stayingSince; ///< Since when that is told.
    QElapsedTimer m_started;
    int m_starts = 0; ///< That have brought up no sender.
    bool m_hasToldSetup = false;
    bool m_isLooking = false;
    bool m_hasEnded = false;
    QString m_notice;
    bool m_maySend = false;
    std::optional<Visit> m_shown; ///< The visit that the worklist is asked for.
    QString m_worklistNotice;
    QStringList m_offered;          ///< Keys.
    QString m_chosen;               ///< Key of what has been chosen, until the sender knows it.
    bool m_hasToldWorklist = false; ///< That it doesn't answer.
};
