#pragma once

#include "pacs/service_rows.h"
#include "sender/services/ServiceDesk.h"

#include <QElapsedTimer>
#include <QHash>

/// Tells the server of performed procedure steps what is begun and what has been done: each once, in their order.
class StepDesk : public ServiceDesk
{
    Q_OBJECT

public:
    using ServiceDesk::ServiceDesk;

protected:
    void Begin() override;

private:
    /// A station that was killed tells no end.
    void CloseLeft();
    bool AwaitsWorklist(const service_rows::Step& step);
    /// Pictures of one that has been closed are on their way.
    bool AwaitsPictures(const service_rows::Step& step);
    void AskFacts(const service_rows::Step& step);
    void TellBegin(const service_rows::Step& step, const DicomPicture& facts);
    void ReadObjects(const service_rows::Step& step, const DicomPicture& facts,
                     const QHash<int, QStringList>& identities);
    void TellEnd(service_rows::Step step, const DicomPicture& facts, const QList<DicomPerformedSeries>& series);
    void TakeAnswer(service_rows::Step step, const DicomOutcome& outcome, service_rows::StepState next,
                    const QStringList& told);

    QElapsedTimer m_looked;
};
