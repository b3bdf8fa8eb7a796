#pragma once

#include "platform/dicom/link_messages.h"

#include <dcmtk/config/osconfig.h>
#include <dcmtk/dcmnet/dcmlayer.h>
#include <dcmtk/dcmnet/dimse.h>

#include <QByteArray>
#include <QCborArray>
#include <QCborMap>

#include <functional>
#include <memory>

/// What became of a request, as an answer tells it.
struct LinkAnswer
{
    dicomlink::Fault fault = dicomlink::Fault::Invalid;
    int status = 0;
    QByteArray comment = {}; ///< Bounded.
    QCborArray matches = {};
    bool isSilent = false; ///< The fault is a silence.
    QCborArray taken = {};
};

/// An association with a server. Each call ends within the patience that it was opened with; behind a fault of the
/// connection there is none any more.
class Association
{
public:
    enum class Purpose { Objects, Echo, Worklist, Steps, Commitment };

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
    /// What the server has agreed to, as an answer tells it.
    QCborArray Taken() const;
    /// Of the context for such a content; 0 where the server has taken none.
    T_ASC_PresentationContextID ContextOf(const QByteArray& kind, dicomlink::Content content) const;
    /// Whom a C-FIND asks: a context that the server has taken, and its class.
    struct Questioned
    {
        T_ASC_PresentationContextID context;
        const char* kind;
    };
    /// Asks, and reads the answers up to the last one: `take` gets each, and is false for one too many or of no use;
    /// `commentOf` tells what the server says of its status.
    LinkAnswer AskMatches(const Questioned& questioned, DcmDataset& keys, const std::function<bool(DcmDataset*)>& take,
                          const std::function<QByteArray(DcmDataset*)>& commentOf);

    /// Connects, and agrees; what was asked for is dropped behind a fault.
    LinkAnswer Ask(T_ASC_Parameters* parameters, const QByteArray& host, bool isEncrypted);

    std::unique_ptr<DcmTransportLayer> m_layer; ///< Of an encrypted connection; outlives it.
    T_ASC_Network* m_network = nullptr;
    T_ASC_Association* m_association = nullptr;
    int m_answerSeconds = 0;
    int m_contexts = 0; ///< That have been proposed.
};
