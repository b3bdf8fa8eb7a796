#include "sender/services/StepDesk.h"

#include "contracts/files.h"
#include "filing/originals.h"
#include "frame/journal.h"
#include "frame/services.h"
#include "identifiers/dicom_uids.h"
#include "pacs/parts.h"
#include "pacs/queue_rows.h"
#include "pacs/SenderQueue.h"
#include "records/acts.h"
#include "records/kept_study.h"
#include "records/picture_facts.h"
#include "records/study_identity.h"
#include "sender/pauses.h"
#include "sender/services/step_objects.h"

#include <algorithm>

using namespace Qt::StringLiterals;
using service_rows::Step;
using service_rows::StepState;

namespace {

constexpr int LookMs = 5000;
constexpr int SoonMs = 1000;
/// An order that comes later than that isn't waited for, nor the operator's choice.
constexpr qint64 WorklistMs = 20'000;
constexpr qint64 ChoiceMs = 120'000;
/// Nor an identity that only pictures find.
constexpr qint64 IdentityMs = 600'000;
/// What hasn't gone that long behind the end is told of by what it will be.
constexpr qint64 PicturesMs = 60'000;
/// A server at fault so often refuses this one.
constexpr int MostPassing = 20;

bool IsWithin(const QDateTime& since, qint64 ms)
{
    const qint64 age = since.msecsTo(QDateTime::currentDateTime());
    return age >= 0 && age < ms;
}

void RecordTold(const Step& step, const QString& word)
{
    acts::Act act{acts::Kind::StepSent, step.chart, step.ymd, step.etc};
    act.detail = word + u' ' + step.uid;
    act.key = act.detail;
    acts::Record(act);
}

} // namespace

void StepDesk::Begin()
{
    if (!m_looked.isValid() || m_looked.hasExpired(pauses::Of(LookMs)))
        CloseLeft();
    const QList<Step> due = service_rows::DueSteps(Queue());
    for (const Step& step : due) {
        if (step.state == StepState::New ? AwaitsWorklist(step) : AwaitsPictures(step)) {
            service_rows::Keep(Queue(), step, QDateTime::currentMSecsSinceEpoch() + pauses::Of(SoonMs));
            continue;
        }
        AskFacts(step);
        return;
    }
}

void StepDesk::CloseLeft()
{
    m_looked.start();
    for (const Step& step : service_rows::OpenSteps(Queue())) {
        if (Files().HolderOf(step.mark) == Holder::Dead)
            service_rows::Close(Queue(), step, QDateTime::currentDateTime());
    }
}

bool StepDesk::AwaitsWorklist(const Step& step)
{
    if (Setup().Pacs.Worklist.host.isEmpty() || step.closedAt.isValid())
        return false;
    const auto found = service_rows::Worklists(Queue(), queue_rows::Same(step.chart, step.ymd, step.etc, 0));
    if (found.isEmpty())
        return false;
    using service_rows::WorklistState;
    const WorklistState state = found.first().state;
    return (state == WorklistState::Asked && IsWithin(step.beganAt, WorklistMs)) ||
           ((state == WorklistState::Offered || state == WorklistState::Chosen) && IsWithin(step.beganAt, ChoiceMs));
}

bool StepDesk::AwaitsPictures(const Step& step)
{
    const auto isOnItsWay = [](const PacsEntry& entry) {
        return entry.state == PacsState::Waiting || entry.state == PacsState::UnderWay;
    };
    return IsWithin(step.closedAt, PicturesMs) &&
           std::ranges::any_of(service_rows::EntriesOf(Queue(), step), isOnItsWay);
}

void StepDesk::AskFacts(const Step& step)
{
    struct Facts
    {
        DicomPicture picture;
        bool hasIdentity = false;
        bool isToWait = false;
        QHash<int, QStringList> identities; ///< Of pictures that haven't gone, by number.
    };
    // The pictures' way finds out what the server knows it under.
    const bool isToWait =
        IsWithin(step.beganAt, IdentityMs) && queue_rows::MayHaveBeenSent(Queue(), step.chart, step.ymd, step.etc);
    QList<int> toGo;
    for (const PacsEntry& entry : service_rows::EntriesOf(Queue(), step)) {
        if (step.state != StepState::New && !IsAtServer(entry) && parts::IsOfPicture(entry.part))
            toGo.append(entry.number);
    }
    const auto facts = std::make_shared<Facts>();
    const auto ask = [facts, isToWait, toGo, step, visit = step.VisitBelow(Setup().CaptureRoot), pacs = Setup().Pacs,
                      places = Places()] {
        facts->picture = PictureFacts(visit, step.doctor, pacs, places);
        std::optional<DicomIdentity> identity = KeptIdentity(visit);
        facts->isToWait = !identity && isToWait;
        if (facts->isToWait)
            return;
        const bool wasKept = identity.has_value();
        if (!wasKept)
            identity = NewIdentity(visit, pacs, places);
        if (!identity)
            return;
        // From here on others know it. First what it is, so that nobody takes it for an earlier release's.
        facts->picture.study = StudyToSend(visit, wasKept, step.beganAt.toString(u"HHmmss"_s), pacs);
        if (!wasKept)
            identity = KeepIdentity(visit, *identity);
        for (const int number : toGo)
            facts->identities[number] = originals::KnownIdentities(visit, number);
        facts->hasIdentity = true;
        facts->picture.identity = *identity;
    };
    const auto goOn = [this, step, facts] {
        if (facts->isToWait) {
            service_rows::Keep(Queue(), step, QDateTime::currentMSecsSinceEpoch() + pauses::Of(2 * SoonMs));
            Done();
        } else if (!facts->hasIdentity) {
            Step waiting = step;
            waiting.reason = QString::fromUtf16(NoIdentityText);
            service_rows::Keep(Queue(), waiting, MuchLater());
            Done();
        } else if (step.state == StepState::New) {
            TellBegin(step, facts->picture);
        } else {
            ReadObjects(step, facts->picture, facts->identities);
        }
    };
    Ask(ask, goOn, [this, step](const QString& fault) {
        Step waiting = step;
        waiting.reason = fault;
        service_rows::Keep(Queue(), waiting, Again(++waiting.tries));
        Done();
    });
}

void StepDesk::TellBegin(const Step& step, const DicomPicture& facts)
{
    const auto tell = [peer = Setup().Pacs.Steps, step, facts](DicomServices& services, const std::stop_token& stop) {
        return services.BeginStep(peer, {step.uid, step.beganAt, {}, false, {}}, facts, stop);
    };
    OnLink(tell, [this, step](const DicomOutcome& outcome) { TakeAnswer(step, outcome, StepState::Running, {}); });
}

void StepDesk::ReadObjects(const Step& step, const DicomPicture& facts, const QHash<int, QStringList>& identities)
{
    const QList<PacsEntry> entries = service_rows::EntriesOf(Queue(), step);
    const auto read = [entries, facts, identities, root = Setup().CaptureRoot](const std::stop_token& stop) {
        return SeriesOf(entries, facts, root, identities, stop);
    };
    OnThread(read, [this, step, facts](const QList<DicomPerformedSeries>& series) { TellEnd(step, facts, series); });
}

void StepDesk::TellEnd(Step step, const DicomPicture& facts, const QList<DicomPerformedSeries>& series)
{
    QStringList told;
    for (const DicomPerformedSeries& each : series) {
        for (const DicomReference& object : each.objects)
            told << object.uid;
    }
    const DicomPerformedStep performed{step.uid, step.beganAt, step.closedAt, step.wasTold, series};
    // From here on the server may know it, whatever becomes of this process.
    step.wasTold = true;
    service_rows::Keep(Queue(), step);
    const auto tell = [peer = Setup().Pacs.Steps, performed, facts](DicomServices& services,
                                                                    const std::stop_token& stop) {
        return services.EndStep(peer, performed, facts, stop);
    };
    OnLink(tell,
           [this, step, told](const DicomOutcome& outcome) { TakeAnswer(step, outcome, StepState::Ended, told); });
}

void StepDesk::TakeAnswer(Step step, const DicomOutcome& outcome, StepState next, const QStringList& told)
{
    Done();
    if (outcome.kind == DicomOutcome::Accepted) {
        RecordTold(step, next == StepState::Running ? u"begun"_s : told.isEmpty() ? u"discontinued"_s : u"completed"_s);
        step.state = next;
        step.reason.clear();
        step.tries = 0;
        step.told = told;
        service_rows::Keep(Queue(), step);
        return;
    }
    if (step.reason != outcome.reason)
        journal::NoteFault(u"검사 진행(MPPS), 차트 %1: %2"_s.arg(step.chart.trimmed(), outcome.reason));
    step.reason = outcome.reason;
    ++step.tries;
    // An answer means that the server knows no end of it.
    if (next == StepState::Ended && outcome.status != DicomOutcome::NoStatus)
        step.wasTold = false;
    if (outcome.kind == DicomOutcome::Refused || (outcome.kind == DicomOutcome::Passing && step.tries >= MostPassing))
        step.state = StepState::Refused;
    service_rows::Keep(Queue(), step, AgainAfter(outcome, step.tries));
}
