#pragma once

#include "platform/dicom/link/Association.h"

#include <QDeadlineTimer>

/// Where servers bring their reports of storage commitment, one association at a time, each for a bounded time. It
/// takes those and C-ECHO, and nothing else.
class ReportListener
{
public:
    ReportListener() = default;
    ~ReportListener();
    ReportListener(const ReportListener&) = delete;
    ReportListener& operator=(const ReportListener&) = delete;

    /// `Unreachable` when another program has the port.
    LinkAnswer Listen(const QCborMap& request);
    /// Answers the last report, and waits for the next one; without one in that time the map stays as it is.
    LinkAnswer Next(const QCborMap& request, QCborMap& map);

private:
    void Accept(int seconds);
    /// True with a report.
    bool Serve(int seconds, QCborMap& map);
    void Drop();

    std::unique_ptr<DcmTransportLayer> m_layer; ///< Of encrypted connections; outlives them.
    T_ASC_Network* m_network = nullptr;
    T_ASC_Association* m_association = nullptr;
    QDeadlineTimer m_associationEnds;
    bool m_isAwaited = false; ///< A report that hasn't been answered: m_told on m_context.
    T_DIMSE_N_EventReportRQ m_told = {};
    T_ASC_PresentationContextID m_context = 0;
};
