#include "pacs/PacsHandover.h"

#include "contracts/files.h"
#include "contracts/PlatformError.h"
#include "contracts/SenderProcess.h"
#include "filing/DeletionJob.h"
#include "filing/MovieJob.h"
#include "filing/PictureRecord.h"
#include "frame/components.h"
#include "frame/journal.h"
#include "frame/services.h"
#include "frame/waiting.h"
#include "identifiers/dicom_uids.h"
#include "pacs/pacs_setup.h"
#include "pacs/parts.h"

#include <QPointer>
#include <QUuid>

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

constexpr int LookMs = 1000;
/// A sender that was started is there within that time; the pauses grow.
constexpr int StartMs = 5000;
constexpr int MostDoublings = 6;
/// So long it is told that deleted pictures stay at the server.
constexpr int StayingMs = 30'000;
/// What the closing waits for a sender to go on.
constexpr int EndPatienceMs = 4000;

} // namespace

/// The journal's way into the queue, on its writing thread and over a connection of its own.
class PacsHandover::LineOutlet final : public PictureOutlet
{
public:
    LineOutlet(const LaunchedVisit& launched, const PacsSetupRecord& setup) : m_launched(launched), m_setup(setup) {}

    void HandOver(const PictureRecord& picture) override
    {
        PacsLine line = PacsLine::Of(PacsLine::Send, picture.visit, picture.number);
        line.id = picture.id;
        line.doctor = m_launched.DoctorOf(picture.visit);
        line.goes = m_setup.SendsEachStill || picture.origin == PictureOrigin::Restored;
        line.takenAt = picture.takenAt;
        QList<PacsLine> lines{line};
        const bool isBegun = !m_setup.Steps.host.isEmpty() && picture.origin != PictureOrigin::Restored &&
                             !Steps().contains(picture.visit);
        if (isBegun) {
            PacsLine begun = PacsLine::Of(PacsLine::Begun, picture.visit);
            begun.id = NewUid(m_setup.UidRoot);
            begun.doctor = line.doctor;
            begun.takenAt = QDateTime::currentDateTime();
            begun.text = Files().ProcessMark();
            lines.append(begun);
        }
        Add(lines);
        Remember(picture.visit);
        const std::lock_guard lock(m_mutex);
        if (isBegun)
            m_steps.append(picture.visit);
    }
    void HandOverMovie(const MovieJob& job, const QString& fileName) override
    {
        if (!m_setup.SendsMovies)
            return;
        PacsLine line = PacsLine::Of(PacsLine::Send, job.visit);
        line.part = parts::MovieOf(fileName);
        // The same each time that it is handed over, and unlike that of a later movie under the name.
        line.id = QUuid::createUuidV5(QUuid(), job.id + fileName).toString(QUuid::Id128);
        line.doctor = m_launched.DoctorOf(job.visit);
        line.goes = m_setup.SendsEachStill;
        line.takenAt = job.startedAt;
        Add({line});
        Remember(job.visit);
    }
    void Withdraw(const DeletionJob& job) override
    {
        QList<PacsLine> lines = LinesOf(PacsLine::Withdrawn, job);
        for (PacsLine& line : lines)
            line.goes = m_setup.Rejects;
        Add(lines);
    }
    void Restore(const DeletionJob& job) override { Add(LinesOf(PacsLine::Kept, job)); }

    /// Of which pictures have been handed over.
    QList<Visit> Visits() const
    {
        const std::lock_guard lock(m_mutex);
        return m_visits;
    }
    /// Those of them whose step has been begun.
    QList<Visit> Steps() const
    {
        const std::lock_guard lock(m_mutex);
        return m_steps;
    }

private:
    static QList<PacsLine> LinesOf(PacsLine::Kind kind, const DeletionJob& job)
    {
        QList<PacsLine> lines;
        if (job.isWhole)
            lines.append(PacsLine::Of(kind, job.visit));
        for (const DeletionJob::Item& item : job.items) {
            if (kind == PacsLine::Withdrawn || !item.isMoved)
                lines.append(PacsLine::Of(kind, job.visit, item.number));
        }
        for (PacsLine& line : lines)
            line.id = QUuid::createUuid().toString(QUuid::Id128);
        return lines;
    }

    void Remember(const Visit& visit)
    {
        const std::lock_guard lock(m_mutex);
        if (!m_visits.contains(visit))
            m_visits.append(visit);
    }

    void Add(const QList<PacsLine>& lines)
    {
        if (m_queue == nullptr)
            m_queue = std::make_unique<SenderQueue>();
        m_queue->Add(lines);
    }

    const LaunchedVisit m_launched;
    const PacsSetupRecord m_setup;
    std::unique_ptr<SenderQueue> m_queue;
    mutable std::mutex m_mutex;
    QList<Visit> m_visits;
    QList<Visit> m_steps;
};

std::unique_ptr<PacsHandover> PacsHandover::ForSetup(const ClientSetupRecord& setup, const SaupRecords& places,
                                                     const LaunchedVisit& launched)
{
    return setup.Pacs.Host.isEmpty() ? nullptr : std::make_unique<PacsHandover>(setup, places, launched);
}

PacsHandover::PacsHandover(const ClientSetupRecord& setup, const SaupRecords& places, const LaunchedVisit& launched)
    : m_setup(setup.Pacs), m_digest(SetupDigest(setup, places)), m_launched(launched),
      m_queue(std::make_shared<std::unique_ptr<SenderQueue>>()),
      m_outlet(std::make_shared<LineOutlet>(launched, setup.Pacs))
{
    connect(&m_look, &QTimer::timeout, this, &PacsHandover::Look);
    m_look.start(LookMs);
    // What an earlier run has left goes on its way at once; also its lists, which only the sender reads.
    StartSender(false);
    Look();
}

PacsHandover::~PacsHandover()
{
    if (!m_hasEnded)
        End();
}

std::shared_ptr<PictureOutlet> PacsHandover::Outlet() const
{
    return m_outlet;
}

void PacsHandover::VisitIsStored(const Visit& visit)
{
    PacsLine line = PacsLine::Of(PacsLine::Stored, visit);
    line.doctor = m_launched.DoctorOf(visit);
    Add(line);
}

void PacsHandover::PictureIsMarked(const Visit& visit, int number, bool isStillToBeStored)
{
    PacsLine line = PacsLine::Of(PacsLine::Changed, visit, number);
    line.id = QUuid::createUuid().toString(QUuid::Id128);
    line.doctor = m_launched.DoctorOf(visit);
    line.goes = m_setup.SendsEachStill || !isStillToBeStored;
    Add(line);
}

void PacsHandover::VisitIsShown(const Visit& visit)
{
    if (m_setup.Worklist.host.isEmpty() || (m_shown && *m_shown == visit))
        return;
    m_shown = visit;
    m_chosen.clear();
    TellWorklist(std::nullopt);
    Add(PacsLine::Of(PacsLine::Opened, visit));
}

void PacsHandover::Choose(const QString& key)
{
    if (!m_shown)
        return;
    m_chosen = key;
    TellWorklist(std::nullopt);
    PacsLine line = PacsLine::Of(PacsLine::Chosen, *m_shown);
    line.text = key;
    Add(line);
}

void PacsHandover::SendNow()
{
    Add({PacsLine::Retry});
    m_starts = 0;
    StartSender(false);
}

void PacsHandover::Add(const PacsLine& line)
{
    m_local.Post([queue = m_queue, line] {
        journal::NotingFaults([&] {
            if (*queue == nullptr)
                *queue = std::make_unique<SenderQueue>();
            (*queue)->Add({line});
        });
    });
    Look();
}

void PacsHandover::Look()
{
    if (std::exchange(m_isLooking, true))
        return;
    m_local.Post([queue = m_queue, self = QPointer(this), shown = m_shown] {
        SenderQueue::State state;
        std::optional<service_rows::Worklist> worklist;
        const bool isKnown = journal::NotingFaults([&] {
            if (*queue == nullptr)
                *queue = std::make_unique<SenderQueue>();
            state = (*queue)->Look();
            if (shown)
                worklist = (*queue)->WorklistOf(*shown);
        });
        PostToScreen([self, state, isKnown, shown, worklist] {
            if (!self)
                return;
            self->m_isLooking = false;
            if (isKnown)
                self->TakeState(state);
            // Another section may be shown by now.
            if (isKnown && shown && self->m_shown && *shown == *self->m_shown)
                self->TellWorklist(worklist);
        });
    });
}

void PacsHandover::TakeState(const SenderQueue::State& state)
{
    // One that had nothing to do has ended; what has come since is another start's.
    if (state.lines > m_state.lines || state.serviceLines > m_state.serviceLines) {
        m_starts = 0;
        m_started.invalidate();
    }
    // What had been deleted before this run was told then.
    if (m_isStateKnown && state.staying > m_state.staying) {
        m_newlyStaying = state.staying - m_state.staying;
        m_stayingSince.start();
    }
    m_isStateKnown = true;
    m_state = state;
    if (state.isSenderThere) {
        m_starts = 0;
        if (!state.setup.isEmpty() && state.setup != m_digest && !std::exchange(m_hasToldSetup, true))
            Add({PacsLine::Setup, m_digest});
    } else if (state.lines > 0 || state.movies > 0 || state.serviceLines > 0 ||
               (state.waiting > 0 && !state.NeedsSetup()) || state.due.Meet(service_rows::InSetup(m_setup))) {
        StartSender(m_starts > 0);
    }
    TellNotice(state);
}

void PacsHandover::StartSender(bool isAgain)
{
    if (m_started.isValid() && !m_started.hasExpired(StartMs << std::min(m_starts, MostDoublings)))
        return;
    m_started.start();
    ++m_starts;
    m_local.Post([isAgain] { journal::NotingFaults([&] { UseService<SenderProcess>().Start(isAgain); }); });
}

void PacsHandover::TellNotice(const SenderQueue::State& state)
{
    QStringList parts;
    if (state.waiting > 0)
        parts << u"PACS %1/%2"_s.arg(state.sent).arg(state.sent + state.waiting);
    if (state.setAside > 0)
        parts << u"PACS 거부 %1건"_s.arg(state.setAside);
    if (state.uncommitted > 0)
        parts << u"PACS 보관 확인 안 됨 %1건"_s.arg(state.uncommitted);
    if (state.waiting > 0 && !state.away.isEmpty())
        parts << state.away.section(u" ("_s, 0, 0); // The server's own words are the administrator's.
    if (m_stayingSince.isValid() && !m_stayingSince.hasExpired(StayingMs))
        parts << u"지운 그림 %1건이 PACS에는 남아 있습니다."_s.arg(m_newlyStaying);
    const QString notice = parts.join(u", "_s);
    const bool maySend = state.setAside > 0 || state.uncommitted > 0 || (state.waiting > 0 && !state.away.isEmpty());
    if (notice != std::exchange(m_notice, notice) || maySend != std::exchange(m_maySend, maySend))
        Q_EMIT NoticeChanged(notice, maySend, state.setAside + state.uncommitted > 0);
}

void PacsHandover::TellWorklist(const std::optional<service_rows::Worklist>& worklist)
{
    using service_rows::WorklistState;
    QList<service_rows::Offer> offers;
    QString text;
    if (worklist && worklist->state != WorklistState::Offered)
        m_chosen.clear();
    if (worklist && worklist->state == WorklistState::Offered && m_chosen.isEmpty()) {
        offers = worklist->offers;
        text = u"이 검사에 맞는 처방이 %1건입니다. 고르십시오."_s.arg(offers.size());
    } else if (worklist && !worklist->reason.isEmpty() &&
               (worklist->state == WorklistState::Asked || worklist->state == WorklistState::Away) &&
               !m_hasToldWorklist) {
        text = worklist->reason.section(u" ("_s, 0, 0); // The server's own words are the administrator's.
    }
    QStringList keys;
    for (const service_rows::Offer& offer : std::as_const(offers))
        keys << offer.key;
    if (text != std::exchange(m_worklistNotice, text) || keys != std::exchange(m_offered, keys))
        Q_EMIT WorklistChanged(text, offers);
}

void PacsHandover::DismissWorklist()
{
    m_hasToldWorklist = true;
    TellWorklist(std::nullopt);
}

QString PacsHandover::End()
{
    m_hasEnded = true;
    m_look.stop();
    if (m_setup.SendsAtClosing) {
        for (const Visit& visit : m_outlet->Visits())
            VisitIsStored(visit);
    }
    for (const Visit& visit : m_outlet->Steps()) {
        PacsLine closed = PacsLine::Of(PacsLine::Closed, visit);
        closed.takenAt = QDateTime::currentDateTime();
        closed.text = Files().ProcessMark();
        Add(closed);
    }
    const auto isInHand = [this] { return m_state.waiting == 0 || (m_state.isSenderThere && !m_state.NeedsSetup()); };
    const auto goesOn = [this, isInHand] { return !m_isLooking && isInHand(); };
    // One that was on its way knows nothing of what was told above, and may have seen a sender that has ended since.
    waiting::ServeFor(EndPatienceMs, [this] { return !m_isLooking; });
    Look();
    QTimer again;
    connect(&again, &QTimer::timeout, this, &PacsHandover::Look);
    again.start(LookMs / 4);
    waiting::ServeFor(EndPatienceMs, goesOn);
    again.stop();
    // Another station may have stored what is held here; the end of a step is told behind this one's.
    if ((m_state.held > 0 || !m_outlet->Steps().isEmpty()) && !m_state.isSenderThere) {
        m_started.invalidate();
        StartSender(false);
    }
    // What has been told is in the queue by then.
    m_local.AwaitIdle(LookMs);
    m_local.End(LookMs, [queue = m_queue] { queue->reset(); });
    if (isInHand())
        return {};
    QString text =
        u"PACS로 보낼 그림 %1장이 남아 있습니다.!!\r\n이 컴퓨터에 보관되어 있으며, 다음 실행시 보냅니다.!!"_s.arg(
            m_state.waiting);
    if (!m_state.away.isEmpty())
        text += u"\r\n%1"_s.arg(m_state.away);
    return text;
}
