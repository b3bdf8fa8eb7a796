#pragma once

#include "contracts/ClientSetup.h"
#include "contracts/dicom.h"

#include <QList>

struct Visit;

/// What the sender knows of a visit that it sends something of; to be asked inside work on the connection's thread.
struct VisitFacts
{
    DicomPicture facts = {};
    bool hasIdentity = false;
    /// Under one of these the visit may have been sent by an earlier release.
    QList<DicomIdentity> former = {};
};

/// What is known beside that.
struct VisitTold
{
    QString doctor;         ///< Code.
    QDateTime firstTakenAt; ///< Of the visit's first picture; invalid when the queue doesn't tell.
    int number = 0;         ///< Of a picture whose file tells instead; 0: none.
    bool mayHaveBeenSent = false;
    bool isNew = true; ///< It is about to be sent: what it is known as is kept. False: only what is kept counts.
};

/// Throws PlatformError.
VisitFacts FactsOf(const Visit& visit, const VisitTold& told, const PacsSetupRecord& setup, const SaupRecords& places);
/// For one with former identities: `identity` is the one under which the server has it, or the fresh one when it has
/// none. Throws PlatformError.
void KeepFound(VisitFacts& known, const Visit& visit, const VisitTold& told, bool wasSent,
               const PacsSetupRecord& setup);
