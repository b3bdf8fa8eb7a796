#pragma once

#include "contracts/dicom.h"

/// An entry of a hospital's worklist for one patient and day. Texts are plain, of one line, and no longer than the
/// standard allows.
struct DicomScheduled
{
    DicomOrder order;
    QString study;     ///< Identifier; empty when the server tells none that is one.
    QString modality;  ///< "ES"
    QString startsAt;  ///< `HHmm`; empty when it isn't told.
    QStringList codes; ///< Code values of the requested procedure and the scheduled protocol.
};

/// Objects of one series that a performed step has brought.
struct DicomPerformedSeries
{
    QString uid;
    bool arePictures = true; ///< Or other objects, such as reports.
    QList<DicomReference> objects;
};

/// What was done for a visit and section between two moments, as a hospital's server of performed procedure steps is
/// told of it.
struct DicomPerformedStep
{
    QString uid;
    QDateTime beganAt;                  ///< Local time.
    QDateTime endedAt;                  ///< Invalid while it goes on.
    bool wasTold = false;               ///< The server has been told of its end before, but hasn't answered.
    QList<DicomPerformedSeries> series; ///< Of one that has ended; none: it is discontinued.
};

/// A server's report of what it answers for.
struct DicomCommitment
{
    struct Failed
    {
        DicomReference object;
        int reason = 0; ///< The server's own number.
    };

    QString transaction; ///< Empty: there is no report.
    QList<DicomReference> committed;
    QList<Failed> failed;
};

enum class DicomService { Worklist, Steps, Commitment };

/// What a hospital's servers offer beside the storing of pictures. Each call blocks, never throws, ends within its own
/// limit of time and memory whatever a server sends, and at once, as `Away`, when a stop is asked for. Each has a
/// connection of its own. One thread uses it at a time.
class DicomServices
{
public:
    virtual ~DicomServices() = default;

    /// Whether the server is there and offers it.
    virtual DicomOutcome Reach(const DicomPeer& peer, DicomService service, const std::stop_token& stop) = 0;
    /// What is scheduled for that patient on that day. Entries of other patients and days, which a server may add, are
    /// left out.
    virtual DicomOutcome FindScheduled(const DicomPeer& peer, const QString& patientId, const QString& ymd,
                                       QList<DicomScheduled>& found, const std::stop_token& stop) = 0;
    /// Tells of a step in progress. `Accepted` also when the server knows it already.
    virtual DicomOutcome BeginStep(const DicomPeer& peer, const DicomPerformedStep& step, const DicomPicture& facts,
                                   const std::stop_token& stop) = 0;
    /// Tells that it is completed, or discontinued. `Accepted` also when the server knows that already.
    virtual DicomOutcome EndStep(const DicomPeer& peer, const DicomPerformedStep& step, const DicomPicture& facts,
                                 const std::stop_token& stop) = 0;
    /// Asks the server to answer for objects. A report that comes on the same connection a moment later is given;
    /// otherwise it comes to whoever listens.
    virtual DicomOutcome AskCommitment(const DicomPeer& peer, const QString& transaction,
                                       const QList<DicomReference>& objects, DicomCommitment& report,
                                       const std::stop_token& stop) = 0;

    /// Listens for reports from here on; with an authority to encrypted connections alone, which need a certificate of
    /// the station's own. False when another program of this machine has the port, or it can't be had.
    virtual bool Listen(int port, const DicomTls& tls, const std::stop_token& stop) = 0;
    /// Waits for the next report, for seconds; without one its transaction is empty. `isTaken`: what the server of the
    /// one before is told. False when nobody listens any more.
    virtual bool NextReport(bool isTaken, DicomCommitment& report, const std::stop_token& stop) = 0;
};

/// Name under which `CreateObject` makes them.
inline constexpr char16_t DicomServicesName[] = u"dcmtkServices";
