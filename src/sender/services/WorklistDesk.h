#pragma once

#include "pacs/service_rows.h"
#include "sender/services/ServiceDesk.h"

/// Asks the worklist what has been ordered for the visits that screens show, and keeps it.
class WorklistDesk : public ServiceDesk
{
    Q_OBJECT

public:
    using ServiceDesk::ServiceDesk;

protected:
    void Begin() override;

private:
    /// What the clinic's tables say of the visit.
    struct Known
    {
        bool hasOrder = false;
        DicomModality modality = DicomModality::Endoscopy;
    };

    void AskServer(const service_rows::Worklist& worklist, const Known& known);
    void TakeAnswer(service_rows::Worklist worklist, const Known& known, const DicomOutcome& outcome,
                    const QList<DicomScheduled>& found);
    void Keep(const service_rows::Worklist& worklist, const service_rows::Offer& offer);
    /// The database can't be asked.
    void PutOff(service_rows::Worklist worklist, const QString& reason);
};
