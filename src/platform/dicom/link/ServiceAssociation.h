#pragma once

#include "platform/dicom/link/Association.h"

class DcmDataset;

/// An association for one question to a server of the hospital that isn't about pictures.
class ServiceAssociation : public Association
{
public:
    /// Opens it, asks, and closes it. What the server has told beside its status goes into the map.
    LinkAnswer Ask(const QCborMap& request, QCborMap& map);

private:
    LinkAnswer AskScheduled(const QCborMap& request, QCborMap& map);
    /// Makes or changes a performed step.
    LinkAnswer TellStep(const QCborMap& request, bool isNew);
    LinkAnswer AskCommitment(const QCborMap& request, QCborMap& map);
    /// Reads the answer to a question that has one, and a report that comes before it.
    LinkAnswer ReadAnswer(DIC_US message, QCborMap& map);
    /// Waits for a report, which needn't come.
    void AwaitReport(int seconds, QCborMap& map);
    bool TakeReport(T_ASC_PresentationContextID context, const T_DIMSE_Message& told, QCborMap& map);

    T_ASC_PresentationContextID m_context = 0;
};
