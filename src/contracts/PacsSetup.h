#pragma once

#include "contracts/dicom.h"

#include <QString>

#include <map>

/// The clinic's server for pictures, and what else of the hospital speaks DICOM. Each switch is off without its key.
struct PacsSetupRecord
{
    QString Host; ///< Empty: the clinic has none, and all that belongs to it stays away.
    int Port = 104;
    QString CalledAet;
    QString CallingAet;
    bool SendsEachStill = false; ///< As soon as it is safe; otherwise when the visit is stored.
    bool SendsAtClosing = false; ///< Visits that the screen was closed on without storing them. `AtClosing=1`
    QString Institution;         ///< Empty: the first place of business.
    QString UidRoot;             ///< Empty: identifiers that need no registration.
    QString PatientIdPrefix;     ///< Stands before the chart. `PatientIdPrefix=`
    DicomCharacters Characters =
        DicomCharacters::Unicode; ///< `CharacterSet=ISO_IR 192` (default) or `\ISO 2022 IR 149`
    bool HasNameParts = false;    ///< `NameParts=1`

    /// Kinds of the sections that the setup tells of: `Section.NAME=MODALITY,BODYPART,LATERALITY`, the last two may be
    /// left away. A section that isn't among them has the kind that its name tells; see `KindOfSection`.
    std::map<QString, DicomPictureKind> Kinds;
    QString BurnedIn;          ///< Of pictures that nobody has marked: "YES" or "NO"; empty: nothing is said of it.
    int CommitPort = 0;        ///< Where reports of storage commitment come in; 0: nothing is committed.
    bool SendsReports = false; ///< `Report=1`
    bool SendsMovies = false;  ///< `Movies=1`
    bool MovieSound = false;   ///< Movies go with their sound.
    bool Rejects = false;      ///< `Reject=1`: what is deleted after it was sent is rejected at the server.
    DicomTls Tls;              ///< `TlsCa`, `TlsCertificate`, `TlsKey`: of all connections.

    DicomPeer Worklist; ///< `[Worklist]`; no host: there is none.
    /// Sections that codes of requested procedures mean: `[Worklist] Code.CODE=SECTION`.
    std::map<QString, QString> WorklistCodes;
    DicomPeer Steps; ///< `[Mpps]`: takes the performed procedure steps; no host: there is none.

    bool operator==(const PacsSetupRecord&) const = default;

    /// The server for pictures.
    DicomPeer Server() const { return {Host, Port, CalledAet, CallingAet, Tls}; }
};
