#include "sender/services/ReportDoor.h"

#include "contracts/dicom_services.h"
#include "contracts/LocalDatabase.h"
#include "frame/components.h"
#include "frame/journal.h"
#include "frame/services.h"
#include "pacs/SenderQueue.h"
#include "sender/pauses.h"
#include "sender/services/CommitmentDesk.h"

#include <chrono>
#include <condition_variable>
#include <mutex>

namespace {

constexpr int PauseMs = 20'000;
constexpr int EndPatienceMs = 3000;

void Wait(const std::stop_token& stop)
{
    std::mutex mutex;
    std::condition_variable_any wake;
    std::unique_lock lock(mutex);
    wake.wait_for(lock, stop, std::chrono::milliseconds(pauses::Of(PauseMs)), [] { return false; });
}

void Listen(int port, const DicomTls& tls, LocalDatabase& queue, const std::stop_token& stop)
{
    const auto services = CreateObject<DicomServices>(QString::fromUtf16(DicomServicesName));
    if (!services->Listen(port, tls, stop))
        return;
    DicomCommitment report;
    for (bool isTaken = true; services->NextReport(isTaken, report, stop);) {
        isTaken = true;
        // The server is told that it has come only once it stands in the queue.
        if (!report.transaction.isEmpty())
            isTaken = journal::NotingFaults([&] { isTaken = CommitmentDesk::TakeReport(queue, report); }) && isTaken;
    }
}

} // namespace

ReportDoor::ReportDoor(int port, const DicomTls& tls)
{
    m_thread.Post([port, tls, stop = m_stop.get_token()] {
        while (!stop.stop_requested()) {
            journal::NotingFaults([&] {
                const auto queue = UseService<LocalDatabases>().Open(SenderQueue::Path());
                Listen(port, tls, *queue, stop);
            });
            Wait(stop);
        }
    });
}

ReportDoor::~ReportDoor()
{
    m_stop.request_stop();
    m_thread.End(EndPatienceMs);
}
