#pragma once

#include "contracts/dicom_services.h"
#include "contracts/PacsSetup.h"
#include "pacs/PacsLine.h"

#include <QList>

class LocalDatabase;

/// The tables of the sender's queue that tell how it stands with the hospital's other servers: questions to the
/// worklist, performed procedure steps, and storage commitment. The sender alone changes them, others look.
namespace service_rows {

/// An entry of the worklist that fits the visit and section.
struct Offer
{
    QString key;  ///< The same as long as the entry is.
    QString text; ///< What tells it from others, for the operator.
    DicomOrder order;
    QString study;
};

enum class WorklistState {
    Asked,   ///< The server is to be asked.
    Offered, ///< Several fit: the operator is to choose.
    Chosen,  ///< He has; it is to be kept.
    Taken,   ///< An entry is kept.
    Nothing, ///< None fits.
    Away,    ///< The server hasn't answered, and isn't asked again before the visit is opened again.
};

struct Worklist
{
    QString chart;
    QString ymd;
    QString etc;
    QString imageExt;
    WorklistState state = WorklistState::Asked;
    QString reason; ///< Why the server hasn't answered.
    int tries = 0;
    QList<Offer> offers;
    QString choice; ///< Key of the chosen one.

    Visit VisitBelow(const QString& captureRoot) const
    {
        return {chart, {}, ymd, etc, YearFolder(captureRoot, ymd), imageExt};
    }
};

enum class StepState {
    New,     ///< The server is to be told of it.
    Running, ///< It has been.
    Ended,   ///< It has been told of its end as well.
    Refused, ///< It has refused for good.
};

struct Step
{
    QString uid;
    QString chart;
    QString ymd;
    QString etc;
    QString imageExt;
    QString doctor;
    QString mark; ///< Of the process that began it.
    QDateTime beganAt;
    QDateTime closedAt; ///< Invalid while it goes on.
    StepState state = StepState::New;
    QString reason;
    int tries = 0;
    bool wasTold = false; ///< As `DicomPerformedStep::wasTold`.
    QStringList told;     ///< Identifiers of the objects that the server was told of.

    Visit VisitBelow(const QString& captureRoot) const
    {
        return {chart, {}, ymd, etc, YearFolder(captureRoot, ymd), imageExt};
    }
};

enum class CommitmentState {
    Waiting, ///< To be asked for.
    Asked,   ///< The report is awaited; without one it is asked again.
    Resent,  ///< The server doesn't answer for it, and it goes once more.
    Failed,  ///< It still doesn't.
};

struct Commitment
{
    DicomReference object;
    QString chart;
    QString ymd;
    QString etc;
    int number = 0;
    QString transaction;
    CommitmentState state = CommitmentState::Waiting;
    QString reason;
    bool wasResent = false; ///< It has gone a second time, or is to.
};

/// Makes those that aren't there. Throws PlatformError, as all that follow.
void MakeTables(LocalDatabase& queue);
/// What a line changes in them; nothing for a line of pictures.
void Take(LocalDatabase& queue, const PacsLine& line);

/// By a condition on the columns; none where the queue is of an earlier release.
QList<Worklist> Worklists(LocalDatabase& queue, const QString& condition);
QList<Step> Steps(LocalDatabase& queue, const QString& condition);
QList<Commitment> Commitments(LocalDatabase& queue, const QString& condition);

/// Those whose time has come.
QList<Worklist> DueWorklists(LocalDatabase& queue);
QList<Step> DueSteps(LocalDatabase& queue);
/// The most that are asked for at once.
QList<Commitment> DueCommitments(LocalDatabase& queue, int most);
/// Of the three kinds: worklist, steps and commitments.
struct Kinds
{
    bool worklist = false;
    bool steps = false;
    bool commitments = false;

    bool Meet(const Kinds& others) const
    {
        return (worklist && others.worklist) || (steps && others.steps) || (commitments && others.commitments);
    }
    bool operator==(const Kinds&) const = default;
};
/// Of which something is due before that time, in milliseconds since 1970.
Kinds DueBefore(LocalDatabase& queue, qint64 time);
/// The same, of those that the setup names a server for.
Kinds InSetup(const PacsSetupRecord& setup);

/// What has become of one that was asked about, or chosen; what the operator has chosen meanwhile stands above it.
void Answer(LocalDatabase& queue, const Worklist& worklist, qint64 notBefore = 0);
/// It stays what it is, and waits.
void PutOff(LocalDatabase& queue, const Worklist& worklist, qint64 notBefore);
/// What was chosen is offered no more.
void AskAnew(LocalDatabase& queue, const Worklist& worklist);

void Keep(LocalDatabase& queue, const Step& step, qint64 notBefore = 0);
/// Those that go on, as far as their processes have told.
QList<Step> OpenSteps(LocalDatabase& queue);
void Close(LocalDatabase& queue, const Step& step, const QDateTime& at);
/// What the server has of the visit, and what is still to go, but for what an earlier step has told of.
QList<PacsEntry> EntriesOf(LocalDatabase& queue, const Step& step);

/// What was sent from that time on (ISO 8601, local) is to be answered for, once.
void GatherSent(LocalDatabase& queue, const QString& since);
/// Some wait for a report, and are asked for again only behind that time.
bool AreAsked(LocalDatabase& queue, qint64 time);
/// The question stands in the queue before it is asked;
void BeginTransaction(LocalDatabase& queue, const QList<Commitment>& of, const QString& transaction);
/// the server has taken it, and is asked again then when no report comes;
void TransactionIsAsked(LocalDatabase& queue, const QString& transaction, qint64 askAgainAt);
/// or it hasn't.
void PutOff(LocalDatabase& queue, const QString& transaction, const QString& reason, qint64 notBefore);
/// What a report has changed.
struct Reported
{
    bool isOurs = false; ///< The transaction is of this queue.
    QList<Commitment> committed;
    QList<Commitment> failed;
};
/// Pictures that the server answers for are committed; others go again, once.
Reported TakeReport(LocalDatabase& queue, const DicomCommitment& report);
/// What a server's number for a failure means.
QString ReasonOf(int failure);

/// What is older than that day, and has come to its end, is forgotten.
void ForgetOld(LocalDatabase& queue, const QString& ymd);

} // namespace service_rows
