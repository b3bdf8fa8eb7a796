#include "sender/Sender.h"

#include "contracts/dicom.h"
#include "frame/components.h"
#include "frame/guard.h"
#include "frame/journal.h"
#include "pacs/handed_files.h"
#include "pacs/queue_rows.h"
#include "pacs/SenderQueue.h"
#include "records/capture_index.h"
#include "records/Statement.h"
#include "sender/pauses.h"
#include "sender/services/Services.h"

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

constexpr int LookMs = 500;
constexpr int BatchSize = 50;
constexpr int FirstPauseMs = 1000;
/// What takes longer is told.
constexpr int SilenceMs = 20'000;
/// A new visit's first picture comes within that time.
constexpr int IdleMs = 5000;
constexpr int EndPatienceMs = 3000;

const QString Silent = u"PACS 서버가 응답하지 않습니다.!!"_s;

} // namespace

Sender::Sender(Ledger& ledger, const ClientSetupRecord& setup, const SaupRecords& places, const QString& setupDigest)
    : m_setup(setup), m_places(places), m_digest(setupDigest), m_peer(setup.Pacs.Server()), m_ledger(ledger),
      m_kit(std::make_shared<std::unique_ptr<DicomKit>>()),
      m_looker(CreateObject<DicomKit>(QString::fromUtf16(DicomKitName))), m_known(std::make_shared<sending::Known>()),
      m_movies(ledger, m_setup)
{
    m_ledger.Tell(QString::fromUtf16(queue_rows::SetupDigest), m_digest);
    m_ledger.Tell(QString::fromUtf16(queue_rows::AwayReason), {});
    m_ledger.Tell(QString::fromUtf16(queue_rows::SentNow), u"0"_s);
    m_ledger.ForgetOld(QDate::currentDate());
    m_services = Services::ForSetup(m_setup, m_places);
    m_reader.Post([ids = m_ledger.NeededFiles()] { handed_files::RemoveAllBut(ids); });
    m_pause.setSingleShot(true);
    connect(&m_pause, &QTimer::timeout, this, [this] { Guard([this] { Step(); }); });
    const auto look = [this] { Guard([this] { Look(); }); };
    connect(&m_look, &QTimer::timeout, this, look);
    m_look.start(pauses::Of(LookMs));
    QTimer::singleShot(0, this, look);
    m_idle.start();
}

Sender::~Sender()
{
    m_stop.request_stop();
    m_movies.End();
    m_link.End(EndPatienceMs, [kit = m_kit] { kit->reset(); });
    m_reader.End(EndPatienceMs);
    journal::NotingFaults([this] { m_ledger.PutBack(true); });
}

void Sender::Guard(const std::function<void()>& step)
{
    if (!m_hasFailed && !journal::NotingFaults(step)) {
        m_hasFailed = true;
        Quit();
    }
}

void Sender::Look()
{
    TakeLines();
    if (m_isReading && m_readingSince.hasExpired(pauses::Of(SilenceMs))) {
        const QString reason = u"캡쳐 폴더의 공유가 응답하지 않습니다.!!"_s;
        SetAway(reason);
        m_isEnding = true;
        if (m_isBusy && !m_isSending)
            EndBatch();
    } else if (m_isBusy && m_isSending && !m_isSendingMovie && m_linkSince.hasExpired(pauses::Of(SilenceMs))) {
        SetAway(Silent);
    } else if (m_askingSince.isValid() && m_askingSince.hasExpired(pauses::Of(SilenceMs))) {
        SetAway(u"데이터베이스가 응답하지 않습니다.!!"_s);
    }
    if (m_services)
        m_services->Look();
    if (!m_stop.stop_requested())
        m_movies.Look();
    Step();
}

void Sender::TakeLines()
{
    const Ledger::Orders orders = m_ledger.TakeLines({m_setup.Pacs.SendsEachStill, m_setup.Pacs.Rejects});
    m_mayBeHeld = m_mayBeHeld || orders.areAny;
    if (orders.isRetry) {
        m_pause.stop();
        m_pauseMs = 0;
        // What is under way began before that, and another connection may fare better.
        ++m_retries;
        m_isEnding = m_isEnding || (m_isBusy && m_nextRead > 0);
    }
    if (!orders.setup.isEmpty() && orders.setup != m_digest) {
        journal::Note(Journal::Information, u"설정이 바뀌어 다시 시작함"_s);
        m_hasOtherSetup = true;
        Quit();
    }
}

void Sender::Step()
{
    if (m_isBusy || m_isReading || m_pause.isActive() || m_stop.stop_requested() || AskNumbers())
        return;
    // A server that was away is tried with one.
    const QList<PacsEntry> entries = m_ledger.Due(m_pauseMs > 0 ? 1 : BatchSize);
    if (entries.isEmpty()) {
        if (!m_wantsHeld || !AskHeld())
            EndWhenIdle();
        return;
    }
    m_idle.restart();
    m_isBusy = true;
    m_isEnding = false;
    m_nextRead = 0;
    ++m_batch;
    AskFacts(entries);
}

bool Sender::AskNumbers()
{
    const QList<Ledger::VisitToAsk> visits = m_ledger.VisitsToAsk();
    if (visits.isEmpty())
        return false;
    const auto numbers = std::make_shared<QList<QList<int>>>();
    const auto ask = [visits, numbers, root = m_setup.CaptureRoot] {
        for (const Ledger::VisitToAsk& visit : visits)
            numbers->append(
                StoredNumbers({visit.chart, {}, visit.ymd, visit.etc, YearFolder(root, visit.ymd), visit.imageExt},
                              NumberOrder::Ascending));
    };
    m_isBusy = true;
    ++m_batch;
    Ask(ask, [this, visits, numbers] {
        for (qsizetype at = 0; at < visits.size(); ++at)
            m_ledger.TakeNumbers(visits[at], numbers->at(at));
        m_isBusy = false;
        Step();
    });
    return true;
}

void Sender::Ask(const std::function<void()>& statements, const std::function<void()>& then)
{
    m_askingSince.start();
    QueueStatements(this, statements, [this, then, batch = m_batch](const std::exception_ptr& fault) {
        m_askingSince.invalidate();
        if (batch != m_batch)
            return;
        Guard([&] {
            if (fault == nullptr) {
                then();
                return;
            }
            Pause(guard::TextOf(fault).simplified());
            EndBatch();
        });
    });
}

void Sender::Pause(const QString& reason, bool isLong)
{
    SetAway(reason.isEmpty() ? u"까닭을 알 수 없습니다.!!"_s : reason);
    m_pauseMs = m_pauseMs == 0 ? FirstPauseMs : std::min(m_pauseMs * 2, pauses::LongestMs);
    m_pause.start(isLong ? pauses::Long() : pauses::Of(m_pauseMs));
}

void Sender::SetAway(const QString& reason)
{
    if (reason == std::exchange(m_away, reason))
        return;
    m_ledger.Tell(QString::fromUtf16(queue_rows::AwayReason), reason);
    const int waiting = m_ledger.Waiting();
    if (reason.isEmpty())
        journal::Note(Journal::Information, u"PACS에 다시 보냄, 남은 대기 %1장"_s.arg(waiting));
    else
        journal::NoteFault(u"PACS에 보내지 못함, 대기 %1장: %2"_s.arg(waiting).arg(reason));
}

void Sender::EndWhenIdle()
{
    if (m_ledger.WaitingBut(QString::fromUtf16(NoIdentityText)) > 0) {
        m_idle.restart();
        if (m_away.isEmpty())
            SetAway(m_ledger.FirstReason());
        return;
    }
    if (m_ledger.Waiting() == 0) {
        SetAway({});
        if (std::exchange(m_sent, 0) > 0)
            m_ledger.Tell(QString::fromUtf16(queue_rows::SentNow), u"0"_s);
    }
    if (!m_idle.hasExpired(pauses::Of(IdleMs)) || (m_services && m_services->AreNeeded()))
        return;
    if (!m_mayBeHeld || !AskHeld())
        Quit();
}

void Sender::Quit()
{
    m_look.stop();
    m_stop.request_stop();
    Q_EMIT Ended();
}
