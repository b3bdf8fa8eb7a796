#pragma once

#include "platform/dicom/link_messages.h"

#include <dcmtk/config/osconfig.h>
#include <dcmtk/dcmnet/dimse.h>

#include <QByteArray>
#include <QCborArray>
#include <QCborMap>

/// What became of a request, as an answer tells it.
struct LinkAnswer
{
    dicomlink::Fault fault = dicomlink::Fault::Invalid;
    int status = 0;
    QByteArray comment = {}; ///< Bounded.
    QCborArray matches = {};
    bool isSilent = false; ///< The fault is a silence.
};

/// An association with a server. Each call ends within the patience that it was opened with; behind a fault of the
/// connection there is none any more.
class Association
{
public:
    enum class Purpose { Pictures, Echo, Worklist, Steps, Commitment };

    Association() = default;
    ~Association();
    Association(const Association&) = delete;
    Association& operator=(const Association&) = delete;

    LinkAnswer Open(const QCborMap& request, Purpose purpose);
    LinkAnswer Store(const QCborMap& request);
    LinkAnswer Find(const QCborMap& request);
    LinkAnswer Echo();
    /// Tells the server; nothing happens without an association.
    void Close();

protected:
    /// The connection's fault, behind which it is dropped.
    LinkAnswer Drop(dicomlink::Fault fault, const OFCondition& condition);
    /// What the server said unasked: it is about to leave, or has left.
    bool HasEnded() const { return m_association == nullptr || ASC_dataWaiting(m_association, 0); }
    /// Reads the answers to a question up to the last one.
    LinkAnswer ReadMatches(T_ASC_PresentationContextID context, DIC_US message, bool isStudy);

    T_ASC_Network* m_network = nullptr;
    T_ASC_Association* m_association = nullptr;
    int m_answerSeconds = 0;
};
