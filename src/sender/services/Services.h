#pragma once

#include "contracts/ClientSetup.h"

#include <memory>

class CommitmentDesk;
class LocalDatabase;
class ReportDoor;
class StepDesk;
class WorklistDesk;

/// What the sender does for the hospital's other servers beside its pictures: worklist, performed procedure steps,
/// storage commitment, as far as the setup names them.
class Services
{
public:
    /// Null when it names none. Throws PlatformError.
    static std::unique_ptr<Services> ForSetup(const ClientSetupRecord& setup, const SaupRecords& places);

    Services(const ClientSetupRecord& setup, const SaupRecords& places);
    ~Services();
    Services(const Services&) = delete;
    Services& operator=(const Services&) = delete;

    /// Begins with what is due.
    void Look();
    /// Something is under way, or due within minutes.
    bool AreNeeded();

private:
    const ClientSetupRecord m_setup;
    const SaupRecords m_places;
    std::unique_ptr<LocalDatabase> m_queue;
    std::unique_ptr<WorklistDesk> m_worklist;
    std::unique_ptr<StepDesk> m_steps;
    std::unique_ptr<CommitmentDesk> m_commitment;
    std::unique_ptr<ReportDoor> m_door;
};
