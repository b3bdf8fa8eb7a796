#pragma once

#include "contracts/ClientSetup.h"
#include "contracts/dicom_services.h"
#include "contracts/LocalDatabase.h"
#include "frame/components.h"
#include "frame/WorkThread.h"

#include <QObject>
#include <QPointer>

#include <functional>
#include <memory>
#include <stop_token>
#include <type_traits>

/// Deals with one of the hospital's servers for the sender: one thing at a time, on a thread of its own, so that a slow
/// server holds up nothing else. Its tables in the queue say what is to be done; what the process dies in the middle of
/// is done again, or known to be done.
class ServiceDesk : public QObject
{
    Q_OBJECT

public:
    ServiceDesk(LocalDatabase& queue, const ClientSetupRecord& setup, const SaupRecords& places);
    ~ServiceDesk() override;

    /// Begins with what is due, unless something is under way.
    void Look();
    bool IsBusy() const { return m_isBusy; }
    /// The queue can't be written: nothing more is done.
    bool HasFailed() const { return m_hasFailed; }

protected:
    /// Begins with what is due: by one of the two calls below, or not at all.
    virtual void Begin() = 0;

    /// Asks the clinic's database; a fault goes to `otherwise` as a text. Whatever comes last ends what is under way.
    void Ask(const std::function<void()>& statements, const std::function<void()>& then,
             const std::function<void(const QString&)>& otherwise);
    /// Does it on the thread.
    template <class Work, class Then>
    void OnThread(Work work, Then then)
    {
        m_isBusy = true;
        m_thread.Post(
            [self = QPointer(this), work = std::move(work), then = std::move(then), stop = m_stop.get_token()] {
                const auto result = work(stop);
                PostToScreen([self, then, result] {
                    if (self && !self->m_stop.stop_requested())
                        self->Guard([&] { then(result); });
                });
            });
    }
    /// The same with the services.
    template <class Work, class Then>
    void OnLink(Work work, Then then)
    {
        const auto ask = [work = std::move(work)](const std::stop_token& stop) {
            const auto services = CreateObject<DicomServices>(QString::fromUtf16(DicomServicesName));
            return work(*services, stop);
        };
        OnThread(ask, std::move(then));
    }
    /// Nothing is under way any more.
    void Done() { m_isBusy = false; }

    LocalDatabase& Queue() { return m_queue; }
    const ClientSetupRecord& Setup() const { return m_setup; }
    const SaupRecords& Places() const { return m_places; }

    /// When what has failed so often is tried again, in milliseconds since 1970.
    static qint64 Again(int tries);
    /// The same for a server that wants nothing of this station.
    static qint64 MuchLater();
    /// Which of both.
    static qint64 AgainAfter(const DicomOutcome& outcome, int tries);

private:
    void Guard(const std::function<void()>& step);

    LocalDatabase& m_queue;
    const ClientSetupRecord& m_setup;
    const SaupRecords& m_places;
    WorkThread m_thread;
    std::stop_source m_stop;
    bool m_isBusy = false;
    bool m_hasFailed = false;
};
