#include "sender/services/ServiceDesk.h"

#include "frame/guard.h"
#include "frame/journal.h"
#include "records/Statement.h"
#include "sender/pauses.h"

#include <QDateTime>

namespace {

constexpr int EndPatienceMs = 3000;

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
    return QDateTime::currentMSecsSinceEpoch() + pauses::Own(tries);
}

qint64 ServiceDesk::MuchLater()
{
    return QDateTime::currentMSecsSinceEpoch() + pauses::Long();
}

qint64 ServiceDesk::AgainAfter(const DicomOutcome& outcome, int tries)
{
    const bool isUnwanted = outcome.kind == DicomOutcome::PeerRefused || outcome.kind == DicomOutcome::KindRefused;
    return isUnwanted ? MuchLater() : Again(tries);
}
