#include "pacs/PacsSending.h"

#include "contracts/desktop.h"
#include "contracts/PlatformError.h"
#include "frame/components.h"
#include "frame/guard.h"
#include "frame/journal.h"
#include "records/picture_facts.h"
#include "records/Statement.h"
#include "records/study_identity.h"
#include "text/date_routines.h"
#include "text/text_routines.h"
#include "visit/Visit.h"

#include <QPointer>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

constexpr int BatchSize = 50;
constexpr int FirstPauseMs = 1000;
constexpr int LongestPauseMs = 5 * 60 * 1000;
/// A server that breaks the connection on one object so often won't ever take it, and the others wait behind it.
constexpr int MostCuts = 10;
constexpr int EndPatienceMs = 1500;

QString PictureText(const PacsQueue::Entry& entry)
{
    return u"캡쳐 %1번(%2, %3)"_s.arg(NumberText(entry.number), LayIntoMask(entry.visit.ymd, u"0000-00-00"),
                                      entry.visit.etc);
}

QString TodayText()
{
    return TextFromDate(UseService<Desktop>().Today());
}

} // namespace

std::unique_ptr<PacsSending> PacsSending::ForSetup(const PacsSetupRecord& setup, const SaupRecords& places,
                                                   const LaunchedVisit& launched)
{
    return setup.Host.isEmpty() ? nullptr : std::make_unique<PacsSending>(setup, places, launched);
}

PacsSending::PacsSending(const PacsSetupRecord& setup, const SaupRecords& places, const LaunchedVisit& launched)
    : m_setup(setup), m_places(places),
      m_launched(launched), m_peer{m_setup.Host, m_setup.Port, m_setup.CalledAet, m_setup.CallingAet},
      m_queue(m_local, TodayText()), m_kit(std::make_shared<std::unique_ptr<DicomKit>>())
{
    m_pause.setSingleShot(true);
    connect(&m_pause, &QTimer::timeout, this, &PacsSending::Step);
    if (m_queue.Waiting() > 0)
        journal::Note(Journal::Information, u"앞 실행이 남긴 PACS 대기 %1장을 이어받음"_s.arg(m_queue.Waiting()));
    QTimer::singleShot(0, this, [this] {
        TellNotice();
        Step();
    });
}

PacsSending::~PacsSending()
{
    End();
}

void PacsSending::End()
{
    if (std::exchange(m_hasEnded, true))
        return;
    m_pause.stop();
    m_stop.request_stop();
    m_worker.End(EndPatienceMs, [kit = m_kit] { kit->reset(); });
    m_local.End(EndPatienceMs);
    m_queue.End();
}

void PacsSending::VisitIsStored(const Visit& visit, const QList<int>& numbers, bool hasMore)
{
    m_storedEarly.removeOne(visit);
    if (hasMore)
        m_storedEarly.append(visit);
    Add(visit, numbers);
}

void PacsSending::StillIsSafe(const Visit& visit, int number)
{
    if (m_setup.SendsEachStill || m_storedEarly.contains(visit))
        Add(visit, {number});
}

void PacsSending::PictureIsMarked(const Visit& visit, int number, bool isStillToBeStored)
{
    const bool isStoredLater = isStillToBeStored && !m_setup.SendsEachStill && !m_queue.Knows(visit, number);
    if (!isStoredLater)
        Send(visit, number);
}

void PacsSending::IsDeleted(const Visit& visit, std::optional<int> number)
{
    const QList<qint64> underWay = m_queue.Forget(visit, number);
    for (const pacs::Item& item : std::as_const(m_underWay)) {
        if (underWay.contains(item.entry.id))
            *item.isDropped = true;
    }
    TellNotice();
}

void PacsSending::RetryRefused()
{
    m_queue.RetryRefused();
    TellNotice();
    Step();
}

void PacsSending::Add(const Visit& visit, const QList<int>& numbers, bool isChanged)
{
    if (m_hasEnded)
        return;
    m_queue.Add(visit, numbers, m_launched.DoctorOf(visit), isChanged);
    TellNotice();
    Step();
}

void PacsSending::Step()
{
    if (m_isBusy || m_hasEnded || m_pause.isActive())
        return;
    // A server that was away is tried with one.
    const QList<PacsQueue::Entry> entries = m_queue.Take(m_pauseMs > 0 ? 1 : BatchSize);
    if (entries.isEmpty())
        return;
    m_isBusy = true;
    AskFacts(entries);
}

void PacsSending::AskFacts(const QList<PacsQueue::Entry>& entries)
{
    const auto items = std::make_shared<QList<pacs::Item>>();
    for (const PacsQueue::Entry& entry : entries)
        items->append(pacs::Item{entry, {}});
    m_underWay = *items;
    const auto ask = [items, setup = m_setup, places = m_places] {
        for (pacs::Item& item : *items) {
            const Visit& visit = item.entry.visit;
            item.facts = PictureFacts(visit, item.entry.doctor, setup, places);
            item.facts.identity =
                NewIdentity(visit, setup, places).value_or(FormerIdentities(visit, setup, places).first());
        }
    };
    const auto answered = [this, items](const std::exception_ptr& fault) {
        if (m_hasEnded)
            return;
        if (fault == nullptr) {
            HandOver(*items);
            return;
        }
        m_isBusy = false;
        m_underWay.clear();
        m_queue.PutBack();
        Pause(guard::TextOf(fault));
    };
    QueueStatements(this, ask, answered);
}

void PacsSending::HandOver(const QList<pacs::Item>& items)
{
    const QStringList uids = m_queue.SentUids();
    const auto work = [self = QPointer(this), items = QList(items), kit = m_kit, peer = m_peer,
                       sent = QSet(uids.begin(), uids.end()), stop = m_stop.get_token()] {
        QString fault;
        try {
            if (*kit == nullptr) {
                *kit = CreateObject<DicomKit>(QString::fromUtf16(DicomKitName));
                (*kit)->RemoveLeftObjects();
            }
            pacs::SendBatch(**kit, peer, items, sent, stop,
                            [&self](qsizetype first, const QList<pacs::Result>& results) {
                                PostToScreen([self, first, results] {
                                    if (self && !self->m_hasEnded)
                                        self->TakeResults(first, results);
                                });
                            });
        } catch (const PlatformError& error) {
            fault = error.Text();
        }
        PostToScreen([self, fault] {
            if (self && !self->m_hasEnded)
                self->EndBatch(fault);
        });
    };
    m_worker.Post(work);
}

void PacsSending::TakeResults(qsizetype first, const QList<pacs::Result>& results)
{
    bool isAnswered = false;
    for (qsizetype at = 0; at < results.size(); ++at) {
        const pacs::Result& result = results[at];
        TakeResult(m_underWay[first + at], result);
        isAnswered |= result.isAnswered;
        if (pacs::MayPassLater(result.outcome) && !result.isGone && m_batchAway.isEmpty())
            m_batchAway = result.outcome.reason.isEmpty() ? u"까닭을 알 수 없습니다.!!"_s : result.outcome.reason;
    }
    if (isAnswered) {
        m_pauseMs = 0;
        SetAway({});
    }
    m_queue.Store();
    TellNotice();
}

void PacsSending::EndBatch(const QString& fault)
{
    const QString away = m_batchAway.isEmpty() ? fault : m_batchAway;
    m_batchAway.clear();
    m_underWay.clear();
    m_queue.PutBack();
    m_isBusy = false;
    if (!away.isEmpty())
        Pause(away);
    m_queue.Store();
    TellNotice();
    Step();
}

void PacsSending::TakeResult(const pacs::Item& item, const pacs::Result& result)
{
    const PacsQueue::Entry& entry = item.entry;
    QString refusal;
    if (result.isGone) {
        m_queue.Remove(entry);
    } else if (result.outcome.kind == DicomOutcome::Accepted) {
        m_queue.Sent(entry, result.uid);
        ++m_sent;
        Q_EMIT Sent(entry.visit, entry.number);
    } else if (result.outcome.kind == DicomOutcome::Refused) {
        refusal = result.outcome.reason;
    } else if (result.outcome.kind == DicomOutcome::Cut && m_queue.CountCut(entry) >= MostCuts) {
        refusal = u"보내는 중에 연결이 %1번 끊겼습니다.!!"_s.arg(MostCuts);
    }
    if (refusal.isEmpty())
        return;
    m_queue.Refuse(entry, refusal);
    journal::NoteFault(u"PACS 거부, %1: %2"_s.arg(PictureText(entry), refusal));
}

void PacsSending::Pause(const QString& reason)
{
    SetAway(reason);
    m_pauseMs = m_pauseMs == 0 ? FirstPauseMs : std::min(m_pauseMs * 2, LongestPauseMs);
    m_pause.start(m_pauseMs);
}

void PacsSending::SetAway(const QString& reason)
{
    if (reason == std::exchange(m_away, reason))
        return;
    m_queue.setAway(reason);
    if (reason.isEmpty())
        journal::Note(Journal::Information, u"PACS에 다시 보냄, 남은 대기 %1장"_s.arg(m_queue.Waiting()));
    else
        journal::NoteFault(u"PACS에 보내지 못함, 대기 %1장: %2"_s.arg(m_queue.Waiting()).arg(reason));
}

void PacsSending::TellNotice()
{
    const int waiting = m_queue.Waiting();
    QStringList parts;
    if (waiting > 0)
        parts << u"PACS %1/%2"_s.arg(m_sent).arg(m_sent + waiting);
    else
        m_sent = 0;
    if (m_queue.Refused() > 0)
        parts << u"PACS 거부 %1건"_s.arg(m_queue.Refused());
    Q_EMIT NoticeChanged(parts.join(u", "_s));
}
