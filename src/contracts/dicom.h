#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QList>
#include <QString>
#include <QStringList>

#include <stop_token>

/// What tells a visit's study, and its patient, from every other one elsewhere. Once something has been given to others
/// under it, it stays, whatever the setup says then.
struct DicomIdentity
{
    QString institution; ///< Goes into the identifiers: two clinics' visits of one chart and day are two studies.
    QString uidRoot;     ///< The clinic's own root of identifiers; empty: `2.25`, which needs no registration.
    QString patientId;   ///< The chart, with the clinic's prefix where it has one.
    QString issuer;      ///< Of the patient's number; may be empty.

    bool operator==(const DicomIdentity&) const = default;
};

/// Character set of the texts in an object.
enum class DicomCharacters {
    Unicode, ///< `ISO_IR 192`
    Korean,  ///< `\ISO 2022 IR 149` with its escapes; an object with other letters goes in Unicode.
};

/// A picture as another system is to know it. Texts as the clinic's tables have them; the adapter makes them harmless
/// and cuts them to what the standard allows.
struct DicomPicture
{
    QString chart;
    QString patientName;
    QString birthDate; ///< `yyyymmdd`; empty when it isn't known.
    QString sex;       ///< "M" or "F"; empty when it isn't known.
    QString ymd;       ///< Date of the visit.
    QString section;
    QDateTime takenAt;   ///< Local time.
    QString doctor;      ///< Name; may be empty.
    QString institution; ///< Name of the clinic.
    DicomIdentity identity;
    DicomCharacters characters = DicomCharacters::Unicode;
    bool hasNameParts = false; ///< Korean names are told as family and given name.
    int number = 0;
};

/// A server that takes pictures.
struct DicomPeer
{
    QString host;
    int port = 104;
    QString calledAet;
    QString callingAet;
};

struct DicomOutcome
{
    enum Kind {
        Accepted,
        Refused,     ///< This object, the next time too.
        Passing,     ///< The server can't take it now, being full or at fault: it may pass.
        KindRefused, ///< The server takes no objects of this kind.
        PeerRefused, ///< The server wants nothing of this station.
        Away,        ///< Nobody answered, or something on this machine is in the way: it may pass.
        Cut,         ///< The connection broke, or fell silent, on this very object: it may pass.
    };

    Kind kind = Away;
    /// It may be accepted another time.
    bool MayPassLater() const { return kind == Passing || kind == Away || kind == Cut; }

    QString reason = {};     ///< For the operator, in Korean, one line; empty when accepted.
    int status = NoStatus;   ///< The server's own word for it.
    bool isOtherSet = false; ///< Accepted in Unicode, though another character set was wanted.

    static constexpr int NoStatus = -1;
};

/// An object that the server has.
struct DicomFound
{
    QString uid;
    int number = 0; ///< Of the instance in its series; 0 when the server doesn't tell.
};

/// A study that the server has.
struct DicomFoundStudy
{
    QString uid;
    QString patientId;
    QString patientName; ///< Without the separators of its parts.
};

/// Pictures as DICOM objects. Each call blocks, never throws but where it says so, ends within its own limit of time,
/// and at once, as `Away`, when a stop is asked for. While objects
/// are sent, others may be made on another thread; apart from that one thread uses it at a time.
class DicomKit
{
public:
    virtual ~DicomKit() = default;

    /// A folder for objects on their way, which only this user can enter; ends in a separator. It goes with this
    /// object, and what a killed process left there goes with the next one. Throws PlatformError.
    virtual QString WorkFolder() = 0;

    /// Makes an object file of a picture file's content, whose coded data are taken over as they are. Its path lies in
    /// the work folder. Refused: content that no viewer has to understand, such as another format than baseline JPEG.
    virtual DicomOutcome MakeObject(const QByteArray& content, const DicomPicture& picture, const QString& path,
                                    const std::stop_token& stop) = 0;
    /// Sends object files of the work folder in their order, and gives what became of each. Behind one that is away or
    /// cut the others are away.
    virtual QList<DicomOutcome> Send(const DicomPeer& peer, const QStringList& paths, const std::stop_token& stop) = 0;
    /// Asks the server whether it is there.
    virtual DicomOutcome Echo(const DicomPeer& peer, const std::stop_token& stop) = 0;
    /// Writes the directory `DICOMDIR` of a folder's objects, which lie in its folder `DICOM` under names of digits;
    /// takes the directory away when there are none.
    virtual DicomOutcome MakeDirectory(const QString& folder, const std::stop_token& stop) = 0;
};

/// Name under which `CreateObject` makes the kit.
inline constexpr char16_t DicomKitName[] = u"dcmtk";
