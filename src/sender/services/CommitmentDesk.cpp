#include "sender/services/CommitmentDesk.h"

#include "frame/journal.h"
#include "identifiers/dicom_uids.h"
#include "records/acts.h"
#include "sender/pauses.h"

#include <QDateTime>

using namespace Qt::StringLiterals;
using service_rows::Commitment;

namespace {

/// What is sent within that time is asked for together.
constexpr int GatherMs = 3000;
constexpr int MostAtOnce = 300;
/// What was sent before that isn't asked for when the key is new in the setup.
constexpr int DaysBack = 7;
constexpr qint64 AskAgainMs = 24 * 60 * 60 * 1000LL;
/// A report that hasn't come in that time comes to whoever listens then.
constexpr qint64 AwaitMs = 60 * 60 * 1000LL;

} // namespace

void CommitmentDesk::Begin()
{
    if (m_gathered.isValid() && !m_gathered.hasExpired(pauses::Of(GatherMs)))
        return;
    m_gathered.start();
    service_rows::GatherSent(Queue(), QDateTime::currentDateTime().addDays(-DaysBack).toString(Qt::ISODateWithMs));
    const QList<Commitment> due = service_rows::DueCommitments(Queue(), MostAtOnce);
    if (due.isEmpty())
        return;
    const QString transaction = NewUid(Setup().Pacs.UidRoot);
    service_rows::BeginTransaction(Queue(), due, transaction);
    QList<DicomReference> objects;
    for (const Commitment& each : due)
        objects.append(each.object);
    struct Answered
    {
        DicomOutcome outcome;
        DicomCommitment report;
    };
    const auto ask = [peer = Setup().Pacs.Server(), transaction, objects](DicomServices& services,
                                                                          const std::stop_token& stop) {
        Answered answered;
        answered.outcome = services.AskCommitment(peer, transaction, objects, answered.report, stop);
        return answered;
    };
    OnLink(ask, [this, transaction](const Answered& answered) {
        TakeAnswer(transaction, answered.outcome, answered.report);
    });
}

void CommitmentDesk::TakeAnswer(const QString& transaction, const DicomOutcome& outcome, const DicomCommitment& report)
{
    Done();
    if (outcome.kind == DicomOutcome::Accepted) {
        m_tries = 0;
        service_rows::TransactionIsAsked(Queue(), transaction, QDateTime::currentMSecsSinceEpoch() + AskAgainMs);
    } else {
        if (m_tries == 0)
            journal::NoteFault(u"PACS 보관 확인: %1"_s.arg(outcome.reason));
        service_rows::PutOff(Queue(), transaction, outcome.reason, AgainAfter(outcome, m_tries++));
    }
    if (!report.transaction.isEmpty())
        TakeReport(Queue(), report);
}

bool CommitmentDesk::TakeReport(LocalDatabase& queue, const DicomCommitment& report)
{
    const service_rows::Reported reported = service_rows::TakeReport(queue, report);
    for (const Commitment& each : reported.committed) {
        acts::Act act{acts::Kind::Committed, each.chart, each.ymd, each.etc, each.number};
        act.detail = each.object.uid;
        act.key = u"committed "_s + each.object.uid;
        acts::Record(act);
    }
    for (const Commitment& each : reported.failed)
        journal::NoteFault(u"PACS 보관 확인 안 됨, 차트 %1 캡쳐 %2번: %3"_s.arg(each.chart.trimmed())
                               .arg(each.number)
                               .arg(each.reason));
    return reported.isOurs;
}

bool CommitmentDesk::IsAwaiting()
{
    Look();
    return service_rows::AreAsked(Queue(), QDateTime::currentMSecsSinceEpoch() + AskAgainMs - AwaitMs);
}
