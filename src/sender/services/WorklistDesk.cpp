#include "sender/services/WorklistDesk.h"

#include "frame/journal.h"
#include "pacs/queue_rows.h"
#include "records/acts.h"
#include "records/kept_study.h"
#include "records/study_identity.h"
#include "sender/services/worklist_choice.h"

#include <algorithm>

using namespace Qt::StringLiterals;
using service_rows::Worklist;
using service_rows::WorklistState;

namespace {

/// Then nobody answers before the visit is opened again.
constexpr int MostTries = 10;

void RecordTaken(const Worklist& worklist, const DicomOrder& order)
{
    acts::Act act{acts::Kind::OrderTaken, worklist.chart, worklist.ymd, worklist.etc};
    act.detail = order.accession.isEmpty() ? order.procedureId : order.accession;
    act.key = QStringList{worklist.chart, worklist.ymd, worklist.etc, act.detail, order.stepId}.join(u'/');
    acts::Record(act);
}

} // namespace

void WorklistDesk::Begin()
{
    const QList<Worklist> due = service_rows::DueWorklists(Queue());
    if (due.isEmpty())
        return;
    const Worklist& worklist = due.first();
    const auto chosen = std::ranges::find(worklist.offers, worklist.choice, &service_rows::Offer::key);
    if (worklist.state == WorklistState::Chosen && chosen != worklist.offers.end()) {
        Keep(worklist, *chosen);
        return;
    }
    if (worklist.state == WorklistState::Chosen) {
        // The server's answer has become another one meanwhile.
        service_rows::AskAnew(Queue(), worklist);
        return;
    }
    const auto known = std::make_shared<Known>();
    const auto ask = [known, visit = worklist.VisitBelow(Setup().CaptureRoot), pacs = Setup().Pacs] {
        const DicomStudy study = KeptStudy(visit, pacs);
        *known = {study.order != DicomOrder(), study.kind.modality};
    };
    Ask(
        ask, [this, worklist, known] { AskServer(worklist, *known); },
        [this, worklist](const QString& fault) { PutOff(worklist, fault); });
}

void WorklistDesk::AskServer(const Worklist& worklist, const Known& known)
{
    if (known.hasOrder) {
        // Another station has taken it.
        Worklist taken = worklist;
        taken.state = WorklistState::Taken;
        taken.reason.clear();
        service_rows::Answer(Queue(), taken);
        Done();
        return;
    }
    struct Found
    {
        DicomOutcome outcome;
        QList<DicomScheduled> entries;
    };
    const auto find = [peer = Setup().Pacs.Worklist, worklist,
                       patientId = Setup().Pacs.PatientIdPrefix +
                                   worklist.chart.trimmed()](DicomServices& services, const std::stop_token& stop) {
        Found found;
        found.outcome = services.FindScheduled(peer, patientId, worklist.ymd, found.entries, stop);
        return found;
    };
    OnLink(find,
           [this, worklist, known](const Found& found) { TakeAnswer(worklist, known, found.outcome, found.entries); });
}

void WorklistDesk::TakeAnswer(Worklist worklist, const Known& known, const DicomOutcome& outcome,
                              const QList<DicomScheduled>& found)
{
    if (outcome.kind != DicomOutcome::Accepted) {
        if (worklist.reason != outcome.reason)
            journal::NoteFault(u"워크리스트, 차트 %1: %2"_s.arg(worklist.chart.trimmed(), outcome.reason));
        worklist.reason = outcome.reason;
        const bool isLast = ++worklist.tries >= MostTries || outcome.kind == DicomOutcome::Refused ||
                            outcome.kind == DicomOutcome::KindRefused || outcome.kind == DicomOutcome::PeerRefused;
        worklist.state = isLast ? WorklistState::Away : WorklistState::Asked;
        service_rows::Answer(Queue(), worklist, Again(worklist.tries));
        Done();
        return;
    }
    worklist.reason.clear();
    worklist.offers = FittingOffers(found, worklist.etc, known.modality, Setup().Pacs);
    if (worklist.offers.size() == 1) {
        Keep(worklist, worklist.offers.first());
        return;
    }
    worklist.state = worklist.offers.isEmpty() ? WorklistState::Nothing : WorklistState::Offered;
    service_rows::Answer(Queue(), worklist);
    Done();
}

void WorklistDesk::Keep(const Worklist& worklist, const service_rows::Offer& offer)
{
    const bool isChosen = worklist.state == WorklistState::Chosen;
    const auto isKept = std::make_shared<bool>(false);
    const bool isNew = !queue_rows::MayHaveBeenSent(Queue(), worklist.chart, worklist.ymd, worklist.etc);
    const auto keep = [isKept, isChosen, isNew, offer, visit = worklist.VisitBelow(Setup().CaptureRoot),
                       pacs = Setup().Pacs, places = Places()] {
        // Another station may have been a moment quicker; what the operator says stands above it.
        if (!isChosen && KeptStudy(visit, pacs).order != DicomOrder())
            return;
        // What an earlier release has sent stays what it was.
        const bool wasSent = KeptIdentity(visit).has_value();
        if (wasSent)
            StudyToSend(visit, true, {}, pacs);
        KeepOrder(visit, offer.order, pacs);
        *isKept = true;
        // Nothing has been given to others: it becomes part of the hospital's own study.
        std::optional<DicomIdentity> identity = NewIdentity(visit, pacs, places);
        if (!isNew || offer.study.isEmpty() || !identity || wasSent)
            return;
        identity->study = offer.study;
        KeepIdentity(visit, *identity);
    };
    const auto done = [this, worklist, offer, isKept] {
        if (*isKept)
            RecordTaken(worklist, offer.order);
        Worklist taken = worklist;
        taken.state = WorklistState::Taken;
        taken.reason.clear();
        service_rows::Answer(Queue(), taken);
        Done();
    };
    Ask(keep, done, [this, worklist](const QString& fault) { PutOff(worklist, fault); });
}

void WorklistDesk::PutOff(Worklist worklist, const QString& reason)
{
    journal::NoteFault(reason);
    service_rows::PutOff(Queue(), worklist, Again(++worklist.tries));
    Done();
}
