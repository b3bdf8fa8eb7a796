#include "sender/services/ServiceDesk.h"

#include "frame/guard.h"
#include "frame/journal.h"
#include "records/Statement.h"

#include <QDateTime>

#include <algorithm>

namespace {

constexpr int EndPatienceMs = 3000;
constexpr qint64 FirstPauseMs = 4000;
constexpr qint64 LongestPauseMs = 5 * 60 * 1000;
constexpr qint64 LongPauseMs = 60 * 60 * 1000;
constexpr int MostDoublings = 8;

} // namespace

ServiceDesk::ServiceDesk(LocalDatabase& queue, const ClientSetupRecord& setup, const SaupRecords& places)
    : m_queue(queue), m_setup(setup), m_places(places)
{
}

ServiceDesk::~ServiceDesk()
{
    m_stop.request_stop();
    m_thread.End(EndPatienceMs);
}

void ServiceDesk::Look()
{
    if (!m_isBusy && !m_hasFailed)
        Guard([this] { Begin(); });
}

void ServiceDesk::Guard(const std::function<void()>& step)
{
    if (!journal::NotingFaults(step))
        m_hasFailed = true;
}

void ServiceDesk::Ask(const std::function<void()>& statements, const std::function<void()>& then,
                      const std::function<void(const QString&)>& otherwise)
{
    m_isBusy = true;
    QueueStatements(this, statements, [this, then, otherwise](const std::exception_ptr& fault) {
        Guard([&] {
            if (fault == nullptr)
                then();
            else
                otherwise(guard::TextOf(fault).simplified());
        });
    });
}

qint64 ServiceDesk::Again(int tries)
{
    const qint64 pauseMs = std::min(FirstPauseMs << std::min(tries, MostDoublings), LongestPauseMs);
    return QDateTime::currentMSecsSinceEpoch() + pauseMs;
}

qint64 ServiceDesk::MuchLater()
{
    return QDateTime::currentMSecsSinceEpoch() + LongPauseMs;
}

qint64 ServiceDesk::AgainAfter(const DicomOutcome& outcome, int tries)
{
    const bool isUnwanted = outcome.kind == DicomOutcome::PeerRefused || outcome.kind == DicomOutcome::KindRefused;
    return isUnwanted ? MuchLater() : Again(tries);
}
