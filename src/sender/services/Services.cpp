#include "sender/services/Services.h"

#include "contracts/LocalDatabase.h"
#include "frame/services.h"
#include "pacs/SenderQueue.h"
#include "pacs/service_rows.h"
#include "sender/pauses.h"
#include "sender/services/CommitmentDesk.h"
#include "sender/services/ReportDoor.h"
#include "sender/services/StepDesk.h"
#include "sender/services/WorklistDesk.h"

#include <QDateTime>

#include <algorithm>
#include <array>

namespace {

constexpr int SoonMs = 10 * 60 * 1000;

} // namespace

std::unique_ptr<Services> Services::ForSetup(const ClientSetupRecord& setup, const SaupRecords& places)
{
    return service_rows::InSetup(setup.Pacs) != service_rows::Kinds() ? std::make_unique<Services>(setup, places)
                                                                      : nullptr;
}

Services::Services(const ClientSetupRecord& setup, const SaupRecords& places)
    : m_setup(setup), m_places(places), m_queue(UseService<LocalDatabases>().Open(SenderQueue::Path()))
{
    const PacsSetupRecord& pacs = m_setup.Pacs;
    if (!pacs.Worklist.host.isEmpty())
        m_worklist = std::make_unique<WorklistDesk>(*m_queue, m_setup, m_places);
    if (!pacs.Steps.host.isEmpty())
        m_steps = std::make_unique<StepDesk>(*m_queue, m_setup, m_places);
    if (pacs.CommitPort > 0) {
        m_commitment = std::make_unique<CommitmentDesk>(*m_queue, m_setup, m_places);
        m_door = std::make_unique<ReportDoor>(pacs.CommitPort, pacs.Tls);
    }
}

Services::~Services() = default;

void Services::Look()
{
    for (ServiceDesk* desk : std::array<ServiceDesk*, 3>{m_worklist.get(), m_steps.get(), m_commitment.get()}) {
        if (desk != nullptr)
            desk->Look();
    }
}

bool Services::AreNeeded()
{
    const std::array<ServiceDesk*, 3> desks{m_worklist.get(), m_steps.get(), m_commitment.get()};
    // Without the queue nothing gets on.
    if (std::ranges::any_of(desks, [](ServiceDesk* desk) { return desk != nullptr && desk->HasFailed(); }))
        return false;
    if (m_commitment != nullptr && m_commitment->IsAwaiting())
        return true;
    const qint64 soon = QDateTime::currentMSecsSinceEpoch() + pauses::Of(SoonMs);
    return std::ranges::any_of(desks, [](ServiceDesk* desk) { return desk != nullptr && desk->IsBusy(); }) ||
           service_rows::DueBefore(*m_queue, soon).Meet(service_rows::InSetup(m_setup.Pacs));
}
